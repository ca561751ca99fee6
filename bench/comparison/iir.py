"""Recursive filters against plain per-sample transposed-direct-form-II loops built -O3
-march=native (fused multiply-adds allowed), on 1 Ki-sample blocks of one stream: biquad cascades
of 1, 4 and 8 sections and an order-8 direct form. Two loops, section by section over the block
and sample by sample through every section; the faster counts.

Then the denormal check: an 8-section cascade over 2^20 samples, an impulse followed by zeros
against noise, with the caller's flush-to-zero and denormals-are-zero off."""

import re
import sys

from .common import compare_table, markdown_table, median_ns, repetitions

BINARIES = ("zal_bench_iir",)
NAME = re.compile(r"^(?P<type>f32|f64)\.(?P<member>\w+)/(?P<contender>\w+)/n:(?P<n>\d+)$")
FILTERS = ("Biquad1", "Biquad4", "Biquad8", "Direct8")
LOOPS = ("loop_section", "loop_sample")
# Our time over the best loop's at most this.
TARGETS = {"Biquad1": 0.5, "Biquad4": 0.5, "Biquad8": 0.5, "Direct8": 0.5}
DECAY_BOUND = 1.2


def times(report):
    """ns/sample per type, member and contender."""
    table = {}
    for name, run in repetitions(report).items():
        match = NAME.match(name)
        if match:
            members = table.setdefault(match["type"], {})
            members.setdefault(match["member"], {})[match["contender"]] = (
                median_ns(run) / int(match["n"]))
    return table


def rows(table):
    result = []
    for type_ in sorted(table):
        for member in FILTERS:
            contenders = table[type_].get(member, {})
            if "ours" not in contenders:
                continue
            loops = [contenders[loop] for loop in LOOPS if loop in contenders]
            best = min(loops) if loops else None
            result.append({"member": f"{type_} {member}", "ours": contenders["ours"],
                           "loop_section": contenders.get("loop_section"),
                           "loop_sample": contenders.get("loop_sample"),
                           "of_best_loop": contenders["ours"] / best if best else None})
    return result


def decay_rows(table):
    result = []
    for type_ in sorted(table):
        decay = table[type_].get("Decay8", {})
        steady = table[type_].get("Steady8", {})
        for contender in ("ours", "loop_section"):
            if contender in decay and contender in steady:
                result.append({"member": f"{type_} {contender}", "decay": decay[contender],
                               "steady": steady[contender],
                               "ratio": decay[contender] / steady[contender]})
    return result


def check_targets(table):
    checks = []
    for member, bound in TARGETS.items():
        measured = [r for r in rows(table) if r["member"].split()[1] == member and r["of_best_loop"]]
        if not measured:
            continue
        misses = [f"{r['member']}: {r['of_best_loop']:.2f}x" for r in measured
                  if r["of_best_loop"] > bound]
        checks.append({"target": f"{member} within {bound:g}x the time of the best plain loop",
                       "met": not misses, "misses": misses})
    ours = [r for r in decay_rows(table) if r["member"].endswith("ours")]
    if ours:
        misses = [f"{r['member']}: {r['ratio']:.2f}x" for r in ours if r["ratio"] > DECAY_BOUND]
        checks.append({"target": f"decaying 8-section cascade within {DECAY_BOUND:g}x the time "
                       "of a steady one, caller's FTZ and DAZ off", "met": not misses,
                       "misses": misses})
    return checks


def cell(value, digits=2):
    return f"{value:.{digits}f}" if value else ""


def markdown(context, table):
    lines = [f"1 Ki-sample blocks, natural level, one core, medians of {context['repetitions']} "
             "runs; ns/sample; x loop = our time / the faster loop's (< 1: we are faster).", ""]
    body = [[r["member"], cell(r["ours"]), cell(r["loop_section"]), cell(r["loop_sample"]),
             cell(r["of_best_loop"])] for r in rows(table)]
    lines += markdown_table(["Filter", "ours", "loop by section", "loop by sample", "x loop"],
                            "lrrrr", body)
    lines += ["", "8-section cascade over 2^20 samples from rest, caller's FTZ/DAZ off; ns/sample.",
              ""]
    body = [[r["member"], cell(r["decay"]), cell(r["steady"]), cell(r["ratio"])]
            for r in decay_rows(table)]
    lines += markdown_table(["Contender", "impulse then zeros", "noise", "ratio"], "lrrr", body)
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    return compare_table(run, options, sys.modules[__name__], "ns_per_sample",
                         extra=lambda table: {"decay": decay_rows(table)})
