"""Data movement against the C library (memcpy, memmove, memset) and plain loops built with
-O3 -march=native.

Per member and size: our ns/element and GB/s at the natural level, and each peer's time over
ours (above 1 we are faster). GB/s counts each element read and each element written once. The
interleaving members' n counts frames; their names carry the channel count."""

import sys

from .arithmetic import NAME
from .by_member import compare_by_member, ratio_table
from .common import median_ns, size_label

BINARIES = ("zal_bench_movement",)
PEERS = ("libc", "plain-native")

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
    """Medians per benchmark, in the binary's order of members, then contender and size."""
    members = list(dict.fromkeys(family.split("/")[0] for family in families))
    contenders = ("ours", *PEERS)
    results = []
    for name, run in runs.items():
        match = NAME.match(name)
        if not match:
            continue
        n = int(match["n"])
        ns_per_element = median_ns(run) / n
        bytes_per_item = run["entry"]["bytes_per_second"] / run["entry"]["items_per_second"]
        results.append({
            "name": name,
            "type": match["type"],
            "member": match["member"],
            "contender": match["contender"],
            "level": int(match["level"]) if match["level"] is not None else None,
            "n": n,
            "times_ns": run["times_ns"],
            "ns_per_element": ns_per_element,
            "gb_per_s": bytes_per_item / ns_per_element,
        })
    return sorted(results, key=lambda r: (members.index(f"{r['type']}.{r['member']}"),
                                          contenders.index(r["contender"]), r["n"]))


def label(row):
    return row["member"] if row["type"] == "f32" else f"{row['type']} {row['member']}"


def rows_by_member(results):
    """One row per member and size: ours at the natural level and every peer's time."""
    rows = {}
    for result in results:
        key = (result["type"], result["member"], result["n"])
        row = rows.setdefault(key, {"type": key[0], "member": key[1], "n": key[2], "peers": {}})
        if result["contender"] == "ours":
            row["ns_per_element"] = result["ns_per_element"]
            row["gb_per_s"] = result["gb_per_s"]
        else:
            row["peers"][result["contender"]] = result["ns_per_element"]
    return [dict(row, ratios={peer: ns / row["ns_per_element"] for peer, ns in row["peers"].items()})
            for row in rows.values() if "ns_per_element" in row]


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
