"""What the families compared member by member share: running their benchmarks and the table of
time, bandwidth and ratios."""

from .arithmetic import selected_families
from .common import any_of, list_benchmarks, markdown_table, repetitions, size_label


def compare_by_member(run, options, family):
    """Runs a family module's benchmarks (BINARIES, summarise, check_targets and markdown from
    the module); returns the targets, Markdown lines and the JSON record."""
    binary = run.binary(family.BINARIES[0])
    families = selected_families(list_benchmarks(binary), options.members, options.levels)
    if not families:
        return None
    report = run.report(binary, any_of(families, "/n:"))
    results = family.summarise(repetitions(report), families)
    rows = rows_by_member(results)
    context = run.context(report)
    targets = family.check_targets(rows)
    record = {"context": context, "results": results, "comparison": rows, "targets": targets}
    return targets, family.markdown(context, rows), record


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


def ratio_table(rows, peers, label, unit="element"):
    """Member, size, our ns per unit and GB/s, then each peer's time over ours."""
    return markdown_table(
        ["Member", "n", f"ns/{unit}", "GB/s", *(f"vs {peer}" for peer in peers)],
        "lrrr" + "r" * len(peers),
        [[label(r), size_label(r["n"]), f"{r['ns_per_element']:.3f}", f"{r['gb_per_s']:.1f}",
          *(f"{r['ratios'][peer]:.2f}" if peer in r["ratios"] else "" for peer in peers)]
         for r in rows])
