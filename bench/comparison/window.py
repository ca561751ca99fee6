"""Windows against a plain loop with the C library's cos (std::cyl_bessel_i for Kaiser), and
against the library's own Mul on the same length, at n = 4 Ki.

Per member: our ns/element at the natural level, the loop's, the loop's time / ours (above 1 we
are faster), and our time / our Mul's, which the targets bound: a window made on the fly against
one applied from a stored table."""

import re
import sys

from .common import compare_at_one_size, markdown_table, median_ns, repetitions

BINARIES = ("zal_bench_window",)
NAME = re.compile(r"^(?P<type>f32|f64)\.(?P<member>\w+)/(?P<contender>\w+)/n:(?P<n>\d+)$")
SIZE = 4096
MEMBER_ORDER = ("Bartlett", "Hann", "Hamming", "Blackman", "Kaiser")
# Our time over Mul's at most this.
TARGETS = {"Bartlett": 2.0, "Hann": 2.0, "Hamming": 2.0, "Blackman": 2.0, "Kaiser": 4.0}


def times(report):
    """ns/element per type, member and contender, at SIZE."""
    table = {}
    for name, run in repetitions(report).items():
        match = NAME.match(name)
        if match and int(match["n"]) == SIZE:
            type_table = table.setdefault(match["type"], {})
            type_table.setdefault(match["member"], {})[match["contender"]] = median_ns(run) / SIZE
    return table


def rows(table):
    result = []
    for type_ in sorted(table):
        members = table[type_]
        mul = members.get("Mul", {}).get("ours")
        for member in MEMBER_ORDER:
            contenders = members.get(member, {})
            if "ours" not in contenders:
                continue
            ours = contenders["ours"]
            loop = contenders.get("loop")
            result.append({"member": f"{type_} {member}", "ours": ours, "loop": loop, "mul": mul,
                           "loop_ratio": loop / ours if loop else None,
                           "of_mul": ours / mul if mul else None})
    return result


def check_targets(table):
    checks = []
    for member, bound in TARGETS.items():
        measured = [r for r in rows(table) if r["member"].split()[1] == member and r["of_mul"]]
        if not measured:
            continue
        misses = [f"{r['member']}: {r['of_mul']:.1f}x Mul" for r in measured
                  if r["of_mul"] > bound]
        checks.append({"target": f"{member} within {bound:g}x the time of Mul",
                       "met": not misses, "misses": misses})
    return checks


def markdown(context, table):
    lines = [f"n = 4 Ki, natural level, one core, medians of {context['repetitions']} runs; "
             "ns/element; loop ratio = the plain loop's time / ours (> 1: we are faster); "
             "x Mul = our time / the time of our Mul on the same length.", ""]
    body = []
    for r in rows(table):
        body.append([r["member"], f"{r['ours']:.3f}",
                     f"{r['loop']:.3f}" if r["loop"] else "",
                     f"{r['mul']:.3f}" if r["mul"] else "",
                     f"{r['loop_ratio']:.1f}" if r["loop_ratio"] else "",
                     f"{r['of_mul']:.1f}" if r["of_mul"] else ""])
    lines += markdown_table(["Member", "ours", "loop", "Mul", "loop ratio", "x Mul"], "lrrrrr",
                            body)
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    return compare_at_one_size(run, options, sys.modules[__name__])
