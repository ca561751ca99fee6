"""Data movement against the C library (memcpy, memmove, memset) and plain loops built with
-O3 -march=native.

Per member and size: our ns/element and GB/s at the natural level, and each peer's time over
ours (above 1 we are faster). GB/s counts each element read and each element written once. The
interleaving members' n counts frames; their names carry the channel count."""

import sys

from .arithmetic import summarise as summarise_runs
from .by_member import compare_by_member, ratio_table
from .common import size_label

BINARIES = ("zal_bench_movement",)
PEERS = ("libc", "plain-native", "streamed", "string")

CACHED_SIZES = (1 << 12, 1 << 22)
PAST_CACHES_SIZE = 1 << 26
LAYOUT_SIZE = 1 << 12
# (members, peer, sizes, least ratio)
TARGETS = (
    (("Copy", "Move", "Set", "Zero"), "libc", CACHED_SIZES, 1.0),
    (("Copy", "Move", "Set", "Zero"), "libc", (PAST_CACHES_SIZE,), 1.25),
    (("u16 SwapBytes", "s24 SwapBytes", "u32 SwapBytes", "u64 SwapBytes", "Interleave",
      "Deinterleave"), "plain-native", (LAYOUT_SIZE,), 1.0),
    (("Interleave2ch", "Interleave6ch", "Interleave8ch", "Deinterleave2ch", "Deinterleave6ch",
      "Deinterleave8ch"), "plain-native", (LAYOUT_SIZE,), 1.5),
)


def summarise(runs, families):
    return summarise_runs(runs, families, PEERS)


def label(row):
    return row["member"] if row["type"] == "f32" else f"{row['type']} {row['member']}"


def check_targets(rows):
    at = {(label(r), r["n"]): r for r in rows}
    targets = []
    for members, peer, sizes, least in TARGETS:
        misses = []
        for member in members:
            for n in sizes:
                row = at.get((member, n))
                ratio = row["ratios"].get(peer) if row else None
                if ratio is None:
                    misses.append(f"{member} {size_label(n)}: not measured")
                elif ratio < least:
                    misses.append(f"{member} {size_label(n)}: {ratio:.3f}")
        sizes_text = ", ".join(size_label(n) for n in sizes)
        targets.append({"target": f"{sizes_text} {', '.join(members)}: time of {peer} / ours "
                                  f">= {least}", "met": not misses, "misses": misses})
    return targets


def markdown(context, rows):
    lines = [f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs; ratio = the peer's time / ours (> 1: we are "
             "faster).", ""]
    lines += ratio_table(rows, PEERS, label)
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    return compare_by_member(run, options, sys.modules[__name__])
