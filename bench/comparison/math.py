"""Math functions against SLEEF, the C library (scalar loop, and the loop GCC vectorises through
glibc's vector library with -O3 -march=native -ffast-math) and VOLK, at n = 4 Ki; with --levels
also ours at every level this processor runs, against SLEEF in the same run.

Per member: our ns/element at the natural level, each peer's, and ratios (peer's time / ours:
above 1 we are faster). For the exact members only peers that compute the exact result count:
the -ffast-math loop divides and takes square roots by reciprocal approximations there."""

import re
import sys

from .common import LEVEL_NAMES, compare_table, markdown_table, median_ns, repetitions

BINARIES = ("zal_bench_math",)
PEERS = ("sleef", "libm", "libmvec", "volk")
NAME = re.compile(r"^(?P<type>f32|f64)\.(?P<member>\w+)/(?P<contender>\w+)/n:(?P<n>\d+)$")
SIZE = 4096
NOT_MEASURED = "not measured"
EXACT = ("Abs", "Sqr", "Sqrt", "Inverse", "Round")
APPROXIMATING_PEERS = {"Sqrt": ("libmvec",), "Inverse": ("libmvec",)}
LEVEL_CONTENDERS = tuple(f"ours_{name}" for level, name in LEVEL_NAMES.items() if level >= 0)


def times(report):
    """ns/element per (type, member) and contender, at SIZE."""
    table = {}
    for name, run in repetitions(report).items():
        match = NAME.match(name)
        if match and int(match["n"]) == SIZE:
            key = f"{match['type']} {match['member']}"
            table.setdefault(key, {})[match["contender"]] = median_ns(run) / SIZE
    return table


MEMBER_ORDER = ("Abs", "Sqr", "Sqrt", "Inverse", "Round", "Exp", "Ln", "Ln_Prec24", "Ln_Prec21",
                "Ln_Prec11", "Pow", "Pow_Prec26", "Inverse_Prec26")


def member_order(key):
    type_, member = key.split()
    return (type_, MEMBER_ORDER.index(member) if member in MEMBER_ORDER else len(MEMBER_ORDER))


def rows(table):
    result = []
    for key in sorted(table, key=member_order):
        contenders = table[key]
        if "ours" not in contenders:
            continue
        member = key.split()[1]
        fair = {p: t for p, t in contenders.items()
                if p in PEERS and p not in APPROXIMATING_PEERS.get(member, ())}
        best = min(fair, key=fair.get) if fair else None
        result.append({"member": key, "ours": contenders["ours"],
                       "peers": {p: contenders.get(p) for p in PEERS},
                       "best_peer": best,
                       "ratio": fair[best] / contenders["ours"] if best else None})
    return result


def check_targets(table):
    def ours(key):
        return table[key]["ours"]

    # A target whose members --members left out is not reported.
    def faster(key, peer):
        if key not in table:
            return NOT_MEASURED
        ratio = table[key][peer] / ours(key)
        return None if ratio > 1 else f"{key} vs {peer}: {ratio:.2f}"

    def at_most(key, fraction, of):
        if key not in table or of not in table:
            return NOT_MEASURED
        share = ours(key) / ours(of)
        return None if share <= fraction else f"{key}: {share:.2f}x {of}"

    checks = [
        ("float Exp and Ln faster than SLEEF's 1-ulp functions",
         [faster("f32 Exp", "sleef"), faster("f32 Ln", "sleef")]),
        ("Ln_Prec21 and Ln_Prec24 faster than SLEEF's 3.5-ulp log",
         [faster("f32 Ln_Prec21", "sleef"), faster("f32 Ln_Prec24", "sleef")]),
        ("Ln_Prec11 at most 0.5x float Ln", [at_most("f32 Ln_Prec11", 0.5, "f32 Ln")]),
        ("float and double Pow faster than glibc's vector pow",
         [faster("f32 Pow", "libmvec"), faster("f64 Pow", "libmvec")]),
        ("Pow_Prec26 at most 0.6x double Pow", [at_most("f64 Pow_Prec26", 0.6, "f64 Pow")]),
        ("Inverse_Prec26 faster than Inverse", [at_most("f64 Inverse_Prec26", 1.0, "f64 Inverse")]),
        ("double Exp and Ln faster than glibc's vector functions and SLEEF",
         [faster(f"f64 {m}", p) for m in ("Exp", "Ln") for p in ("libmvec", "sleef")]),
    ]
    exact = [r for r in rows(table) if r["member"].split()[1] in EXACT]
    checks.append(("Sqrt, Abs, Sqr, Round, Inverse at least as fast as the best exact peer",
                   [f"{r['member']}: {r['ratio']:.2f}" for r in exact
                    if r["ratio"] is not None and r["ratio"] < 1.0]))
    return [{"target": target, "met": not [m for m in misses if m],
             "misses": [m for m in misses if m]} for target, misses in checks
            if NOT_MEASURED not in misses]


def markdown(context, table):
    lines = [f"n = 4 Ki, natural level, one core, medians of {context['repetitions']} runs; "
             "ns/element, and ratio = best peer's time / ours (> 1: we are faster).", ""]
    body = []
    for r in rows(table):
        cells = [f"{r['peers'][p]:.3f}" if r["peers"][p] is not None else "" for p in PEERS]
        body.append([r["member"], f"{r['ours']:.3f}", *cells, r["best_peer"] or "",
                     f"{r['ratio']:.2f}" if r["ratio"] else ""])
    lines += markdown_table(["Member", "ours", *PEERS, "best peer", "ratio"],
                            "lrrrrrlr", body)
    lines += [""]
    levels = [c for c in LEVEL_CONTENDERS if any(c in contenders for contenders in table.values())]
    if levels:
        lines += ["ns/element at each level, and SLEEF's time / ours at that level (its 1-ulp "
                  "functions, its 3.5-ulp log for Ln_PrecN; SLEEF itself at its natural width):",
                  ""]
        body = []
        for key in sorted(table, key=member_order):
            contenders = table[key]
            if not any(level in contenders for level in levels):
                continue
            sleef = contenders.get("sleef")
            cells = []
            for level in levels:
                ns = contenders.get(level)
                cells.append("" if ns is None else
                             f"{ns:.3f}" + (f" ({sleef / ns:.2f})" if sleef else ""))
            body.append([key, f"{sleef:.3f}" if sleef else "", *cells])
        lines += markdown_table(["Member", "sleef", *(c[len("ours_"):] for c in levels)],
                                "lr" + "r" * len(levels), body)
        lines += [""]
    return lines


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    def keep(name):
        match = NAME.match(name)
        return (match is not None and int(match["n"]) == SIZE and
                (options.levels or match["contender"] not in LEVEL_CONTENDERS))

    return compare_table(run, options, sys.modules[__name__], "ns_per_element", keep=keep)
