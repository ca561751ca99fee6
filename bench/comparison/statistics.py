"""Reductions and complex-domain helpers against plain loops, Eigen and VOLK.

Per member and size: our ns/element and GB/s at the natural level, and each peer's time over
ours (above 1 we are faster). GB/s counts each element read and each element written once. The
memory-bound size is also set against the machine's read bandwidth, measured by a probe that
only loads (f32 Read)."""

import sys

from .arithmetic import summarise  # noqa: F401 (the family's summary, read by compare_by_member)
from .by_member import compare_by_member, ratio_table

BINARIES = ("zal_bench_statistics",)
PEERS = ("plain", "eigen", "volk")

TARGET_SIZE = 1 << 12
MEMORY_BOUND_SIZE = 1 << 22
READ_PROBE = ("f32", "Read")
# (members, peer, least ratio, strictly above): at n = 4 Ki.
PEER_TARGETS = (
    (("Sum", "DotProduct", "NormL2"), "eigen", 1.0, False),
    (("MaxIndex", "MinMaxIndex"), "volk", 1.3, False),
    (("Magnitude", "PowerSpectr"), "volk", 1.0, False),
    (("CartToPolar",), "volk", 1.0, True),
)
BANDWIDTH_MEMBERS = ("Sum", "DotProduct", "NormL2", "MaxIndex", "MinMaxIndex")
BANDWIDTH_SHARE = 0.9


def check_targets(rows):
    at = {(r["member"], r["n"]): r for r in rows}
    targets = []
    for members, peer, least, strictly in PEER_TARGETS:
        misses = []
        for member in members:
            row = at.get((member, TARGET_SIZE))
            ratio = row["ratios"].get(peer) if row else None
            if ratio is None:
                misses.append(f"{member}: not measured")
            elif ratio < least or (strictly and ratio <= least):
                misses.append(f"{member}: {ratio:.3f}")
        relation = ">" if strictly else ">="
        targets.append({"target": f"4 Ki {', '.join(members)}: time of {peer} / ours "
                                  f"{relation} {least}", "met": not misses, "misses": misses})
    probe = at.get((READ_PROBE[1], MEMORY_BOUND_SIZE))
    misses = []
    for member in BANDWIDTH_MEMBERS:
        row = at.get((member, MEMORY_BOUND_SIZE))
        if not row or not probe:
            misses.append(f"{member}: not measured")
        elif row["gb_per_s"] < BANDWIDTH_SHARE * probe["gb_per_s"]:
            misses.append(f"{member}: {row['gb_per_s'] / probe['gb_per_s']:.3f} of read bandwidth")
    targets.append({"target": f"4 Mi reductions: at least {BANDWIDTH_SHARE:.0%} of the read "
                              "bandwidth", "met": not misses, "misses": misses})
    return targets


def markdown(context, rows):
    lines = [f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs; ratio = the peer's time / ours (> 1: we are faster). "
             "f32 Read is the read-bandwidth probe.", ""]
    lines += ratio_table(rows, PEERS, lambda r: f"{r['type']} {r['member']}")
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    return compare_by_member(run, options, sys.modules[__name__])
