"""Elementwise arithmetic against plain loops, VOLK and Eigen, and the cost of dispatch.

Per member and size: our ns/element and GB/s at the natural level, the best peer's, and the ratio
(best peer's time / ours: above 1 we are faster); at n = 64 also the ratio against the plain loop
built with -O3 -march=native. GB/s counts each element read and each element written once (no
write-allocate traffic)."""

import re

from .common import LEVEL_NAMES, list_benchmarks, markdown_table, median_ns, repetitions
from .common import any_of, size_label

BINARIES = ("zal_bench_arithmetic", "zal_bench_dispatch")
PEERS = ("plain", "plain-native", "volk", "eigen")
NATIVE_LOOP = "plain-native"
NAME = re.compile(r"^(?P<type>\w+)\.(?P<member>\w+)/(?P<contender>[\w-]+)"
                  r"(?:/level:(?P<level>-?\d+))?/n:(?P<n>\d+)$")

CACHE_RESIDENT_SIZES = (1 << 10, 1 << 14)
MEMORY_BOUND_SIZE = 1 << 22
SMALL_SIZE = 64


def selected_families(names, members, levels):
    """The '<type>.<member>/<contender>[/level:L]' prefixes to run, in the binary's order."""
    families = []
    for name in names:
        match = NAME.match(name)
        if not match or not re.search(members, f"{match['type']}.{match['member']}"):
            continue
        if match["contender"] == "ours" and not levels and int(match["level"]) != -1:
            continue
        family = name.rsplit("/n:", 1)[0]
        if family not in families:
            families.append(family)
    return families


def summarise(runs, families, peers=PEERS):
    """Medians per benchmark, in the binary's order of members, then contender (ours, then the
    peers in the given order), level and size."""
    members = list(dict.fromkeys(family.split("/")[0] for family in families))
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
    contenders = ("ours", *peers)
    return sorted(results, key=lambda r: (members.index(f"{r['type']}.{r['member']}"),
                                          contenders.index(r["contender"]), r["level"] or 0,
                                          r["n"]))


def compare_with_peers(results):
    """One row per member and size: ours at the natural level against the best peer."""
    by_key = {}
    for result in results:
        key = (result["type"], result["member"], result["n"])
        by_key.setdefault(key, {})
        if result["contender"] == "ours":
            if result["level"] == -1:
                by_key[key]["ours"] = result
        else:
            by_key[key][result["contender"]] = result
    rows = []
    for (type_, member, n), contenders in by_key.items():
        ours = contenders.get("ours")
        peers = [contenders[p] for p in PEERS if p in contenders]
        if not ours or not peers:
            continue
        best = min(peers, key=lambda peer: peer["ns_per_element"])
        native = contenders.get(NATIVE_LOOP)
        rows.append({
            "type": type_,
            "member": member,
            "n": n,
            "ns_per_element": ours["ns_per_element"],
            "gb_per_s": ours["gb_per_s"],
            "best_peer": best["contender"],
            "best_peer_ns_per_element": best["ns_per_element"],
            "ratio": best["ns_per_element"] / ours["ns_per_element"],
            "native_loop_ratio": (native["ns_per_element"] / ours["ns_per_element"]
                                  if native and n == SMALL_SIZE else None),
        })
    return rows


def level_rows(results):
    table = {}
    for result in results:
        if result["contender"] == "ours":
            key = (result["type"], result["member"], result["n"])
            table.setdefault(key, {})[LEVEL_NAMES[result["level"]]] = result["ns_per_element"]
    return [{"type": t, "member": m, "n": n, "ns_per_element": levels}
            for (t, m, n), levels in table.items()]


def dispatch_overhead(report):
    runs = repetitions(report)
    median = {name: median_ns(run) for name, run in runs.items()}
    direct = median["DirectKernel"]
    return {
        "times_ns": {name: run["times_ns"] for name, run in runs.items()},
        "direct_ns": direct,
        "dispatched_ns": median["Dispatched"],
        "exported_ns": median["Exported"],
        "dispatched_overhead_ns": median["Dispatched"] - direct,
        "exported_overhead_ns": median["Exported"] - direct,
    }


def check_targets(rows, dispatch):
    """The performance targets, each with the rows that miss it."""
    def label(row):
        return f"{row['type']} {row['member']} {size_label(row['n'])}: {row['ratio']:.3f}"

    cache_resident = [r for r in rows if r["n"] in CACHE_RESIDENT_SIZES]
    complex_products = [r for r in rows
                        if r["type"] in ("c32", "c64") and r["member"] in ("Mul", "Div")]
    memory_bound = [r for r in rows
                    if r["n"] == MEMORY_BOUND_SIZE and not r["member"].endswith("_InPlace")]
    small = [r for r in rows if r["native_loop_ratio"] is not None]
    targets = [
        ("1 Ki and 16 Ki: ratio >= 1.0 for every member",
         [label(r) for r in cache_resident if r["ratio"] < 1.0]),
        ("complex Mul and Div: ratio >= 1.5",
         [label(r) for r in complex_products if r["ratio"] < 1.5]),
        ("4 Mi out-of-place forms: ratio >= 1.25",
         [label(r) for r in memory_bound if r["ratio"] < 1.25]),
        ("n = 64: at most 1.3x the -O3 -march=native loop's time",
         [f"{r['type']} {r['member']}: {1 / r['native_loop_ratio']:.3f}x" for r in small
          if 1 / r["native_loop_ratio"] > 1.3]),
        ("dispatch overhead <= 1 ns",
         [f"{dispatch['dispatched_overhead_ns']:.2f} ns"]
         if dispatch["dispatched_overhead_ns"] > 1.0 else []),
    ]
    return [{"target": target, "met": not misses, "misses": misses} for target, misses in targets]


def markdown(context, rows, levels, dispatch):
    lines = [f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs; ratio = best peer's time / ours (> 1: we are "
             "faster); native loop = the plain loop built with -O3 -march=native.", ""]
    lines += markdown_table(
        ["Member", "n", "ns/element", "GB/s", "Best peer", "Peer ns/element", "Ratio",
         "vs native loop"], "lrrrlrrr",
        [[f"{r['type']} {r['member']}", size_label(r["n"]), f"{r['ns_per_element']:.3f}",
          f"{r['gb_per_s']:.1f}", r["best_peer"], f"{r['best_peer_ns_per_element']:.3f}",
          f"{r['ratio']:.2f}",
          f"{r['native_loop_ratio']:.2f}" if r["native_loop_ratio"] is not None else ""]
         for r in rows])
    if levels:
        names = [name for name in LEVEL_NAMES.values()
                 if any(name in row["ns_per_element"] for row in levels)]
        lines += ["", "ns/element at each level:", ""]
        lines += markdown_table(
            ["Member", "n", *names], "lr" + "r" * len(names),
            [[f"{row['type']} {row['member']}", size_label(row["n"]),
              *(f"{row['ns_per_element'][name]:.3f}" if name in row["ns_per_element"] else ""
                for name in names)] for row in levels])
    lines += ["", f"Dispatch overhead: {dispatch['dispatched_overhead_ns']:.2f} ns dispatched, "
              f"{dispatch['exported_overhead_ns']:.2f} ns through the exported function "
              f"(direct call {dispatch['direct_ns']:.2f} ns).", ""]
    return lines


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    binary = run.binary(BINARIES[0])
    families = selected_families(list_benchmarks(binary), options.members, options.levels)
    if not families:
        return None
    report = run.report(binary, any_of(families, "/n:"))
    dispatch = dispatch_overhead(run.report(run.binary(BINARIES[1])))
    results = summarise(repetitions(report), families)
    rows = compare_with_peers(results)
    levels = level_rows(results) if options.levels else []
    context = run.context(report)
    targets = check_targets(rows, dispatch)
    record = {"context": context, "results": results, "comparison": rows, "levels": levels,
              "dispatch": dispatch, "targets": targets}
    return targets, markdown(context, rows, levels, dispatch), record
