"""Sample format conversion against plain loops, VOLK's converters and the two-pass
(Convert, then deinterleave) layout change.

Per member and size: our ns/sample and GB/s at the natural level, and each peer's time over ours
(above 1 we are faster). GB/s counts each sample read and written once."""

import sys

from .arithmetic import summarise as summarise_runs
from .by_member import compare_by_member, ratio_table
from .common import size_label

BINARIES = ("zal_bench_conversion",)
PEERS = ("volk", "plain", "plain-native", "two-pass")

TARGET_SIZES = (1 << 12, 1 << 22)
MEMORY_BOUND_SIZE = 1 << 22
# Members held to at least the best of VOLK and the native loop.
PEER_MEMBERS = ("S16ToF32", "F32ToS16", "S32ToF32", "F32ToS32", "S24ToF32", "F32ToS24Truncate",
                "F32ToS24Round", "F16ToF32", "F32ToF16", "F32ToF64", "F64ToF32",
                "S24ToF32Unscaled")
# 24-bit members within this factor of their 16-bit counterpart, per sample.
WIDTH_PAIRS = (("S24ToF32", "S16ToF32"), ("F32ToS24Truncate", "F32ToS16"),
               ("F32ToS24Round", "F32ToS16"), ("S24ToF32Unscaled", "S16ToF32"))
WIDTH_FACTOR = 1.5
# Fused layout changes against the two passes, at 4 Mi samples.
FUSED_MEMBERS = ("DeinterleaveS16x2", "DeinterleaveS24x6")
FUSED_RATIO = 1.5


def summarise(runs, families):
    return summarise_runs(runs, families, PEERS)


def check_targets(rows):
    at = {(r["member"], r["n"]): r for r in rows}
    targets = []
    for n in TARGET_SIZES:
        misses = []
        for member in PEER_MEMBERS:
            row = at.get((member, n))
            ratios = [row["ratios"][p] for p in ("volk", "plain-native") if row and p in row["ratios"]]
            if not ratios:
                misses.append(f"{member}: not measured")
            elif min(ratios) < 1.0:
                misses.append(f"{member}: {min(ratios):.2f}")
        targets.append({"target": f"{size_label(n)}: time of the best of VOLK and the native loop / "
                                  "ours >= 1", "met": not misses, "misses": misses})
        misses = []
        for wide, narrow in WIDTH_PAIRS:
            a, b = at.get((wide, n)), at.get((narrow, n))
            if not a or not b:
                misses.append(f"{wide}: not measured")
            elif a["ns_per_element"] > WIDTH_FACTOR * b["ns_per_element"]:
                misses.append(f"{wide}: {a['ns_per_element'] / b['ns_per_element']:.2f}x {narrow}")
        targets.append({"target": f"{size_label(n)}: 24-bit members within {WIDTH_FACTOR}x of the "
                                  "16-bit ones per sample", "met": not misses, "misses": misses})
    misses = []
    for member in FUSED_MEMBERS:
        row = at.get((member, MEMORY_BOUND_SIZE))
        ratio = row["ratios"].get("two-pass") if row else None
        if ratio is None:
            misses.append(f"{member}: not measured")
        elif ratio < FUSED_RATIO:
            misses.append(f"{member}: {ratio:.2f}")
    targets.append({"target": f"4 Mi: time of the two passes / fused >= {FUSED_RATIO}",
                    "met": not misses, "misses": misses})
    return targets


def markdown(context, rows):
    lines = [f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs; ratio = the peer's time / ours (> 1: we are faster).",
             ""]
    lines += ratio_table(rows, PEERS, lambda r: r["member"], "sample")
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    return compare_by_member(run, options, sys.modules[__name__])
