"""The matrix product against Eigen called directly (built -O3 -march=native).

Per element type, order and size d (d x d operands): our time at the natural level, Eigen's time
over ours (above 1 we are faster), and for the row-major order its cost over our column-major
product of the same size (the temporary and the copy). With --levels, each level's kernel time
over the natural one's, by columns."""

import re
import statistics

from .common import LEVEL_NAMES, list_benchmarks, markdown_table, repetitions

BINARIES = ("zal_bench_matrix",)
TYPES = ("f32", "f64", "c32", "c64")
ORDERS = ("ColumnMajor", "RowMajor")
# Column-major: at least this share of Eigen's speed at every size.
LEAST_RATIO = 0.9

NAME = re.compile(r"^(\w+)\.(\w+)/([\w-]+)/n:(\d+)$")


def times(report):
    """{(type, order, contender, d): median ns per product}."""
    table = {}
    for name, run in repetitions(report).items():
        match = NAME.match(name)
        if match:
            kind, order, contender, d = match.groups()
            table[(kind, order, contender, int(d))] = statistics.median(run["times_ns"])
    return table


def rows(table):
    result = []
    for (kind, order, contender, d), ns in sorted(table.items(),
                                                  key=lambda item: (TYPES.index(item[0][0]),
                                                                    ORDERS.index(item[0][1]),
                                                                    item[0][3])):
        if contender != "ours":
            continue
        row = {"type": kind, "order": order, "n": d, "ns": ns,
               "gflops": (8 if kind.startswith("c") else 2) * d ** 3 / ns}
        eigen = table.get((kind, order, "eigen", d))
        if eigen:
            row["vs_eigen"] = eigen / ns
        columns = table.get((kind, "ColumnMajor", "ours", d))
        if order == "RowMajor" and columns:
            row["over_column_major"] = ns / columns
        levels = {}
        for level in LEVEL_NAMES.values():
            level_ns = table.get((kind, "ColumnMajor", f"ours-{level}", d))
            if level_ns and columns:
                levels[level] = level_ns / columns
        if order == "ColumnMajor" and levels:
            row["levels_over_natural"] = levels
        result.append(row)
    return result


def check_targets(result):
    misses = [f"{r['type']} {r['n']}: {r['vs_eigen']:.2f}" for r in result
              if r["order"] == "ColumnMajor" and r.get("vs_eigen", 0) < LEAST_RATIO]
    return [{"target": f"ColumnMajor 4..256, every type: time of eigen / ours >= {LEAST_RATIO}",
             "met": not misses, "misses": misses}]


def markdown(context, result):
    levels = [level for level in LEVEL_NAMES.values()
              if any(level in r.get("levels_over_natural", {}) for r in result)]
    lines = [f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs; d x d operands. vs eigen = Eigen's time / ours "
             "(> 1: we are faster); row/col = our row-major time / our column-major time."
             + (" Level columns: that level's kernel time / the natural one's." if levels else ""),
             ""]
    lines += markdown_table(
        ["Type", "Order", "d", "ns", "GFlop/s", "vs eigen", "row/col", *levels],
        "llrrrrr" + "r" * len(levels),
        [[r["type"], r["order"], r["n"], f"{r['ns']:.0f}", f"{r['gflops']:.1f}",
          f"{r['vs_eigen']:.2f}" if "vs_eigen" in r else "",
          f"{r['over_column_major']:.2f}" if "over_column_major" in r else "",
          *(f"{r['levels_over_natural'][level]:.2f}" if level in r.get("levels_over_natural", {})
            else "" for level in levels)]
         for r in result])
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    binary = run.binary(BINARIES[0])
    names = {name.split("/n:")[0] for name in list_benchmarks(binary)
             if re.search(options.members, name)
             and (options.levels or "/ours-" not in name)}
    if not names:
        return None
    pattern = "^(" + "|".join(sorted(n.replace(".", r"\.") for n in names)) + ")/n:"
    report = run.report(binary, pattern)
    table = times(report)
    result = rows(table)
    context = run.context(report)
    targets = check_targets(result)
    record = {"context": context, "ns": [dict(zip(("type", "order", "contender", "n"), key),
                                              ns=ns) for key, ns in table.items()],
              "comparison": result, "targets": targets}
    return targets, markdown(context, result), record
