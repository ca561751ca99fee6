"""The block FIR on 1 Ki-sample blocks against VOLK's dot product per output and liquid-dsp's
firfilt_rrrf, as a share of the machine's fused multiply-add peak (probed in the same run), and
the single-sample FIR's time per call.

Per tap count: our ns/sample, GFLOP/s (2 flops per tap and sample), % of peak, and each peer's
time / ours (above 1 we are faster). With --levels, ours at every level this processor runs too,
as a share of the peak at that level's register width."""

import re

from .common import markdown_table, median_ns, repetitions

BINARIES = ("zal_bench_fir",)
BLOCK = 1024
NAME = re.compile(r"^(?P<kind>block|single|level)/(?P<contender>\w+)/taps:(?P<taps>\d+)$")
PEAK = "peak/probe"
# Floats per register at each level.
LEVEL_LANES = {"sse2": 4, "ssse3": 4, "sse42": 4, "avx": 8, "avx2": 8, "avx512": 16}


def times(report):
    """ns/sample per kind, tap count and contender; the peak in GFLOP/s."""
    table = {"block": {}, "single": {}, "level": {}, "peak_gflops": None, "peak_lanes": None}
    for name, run in repetitions(report).items():
        if name == PEAK:
            entry = run["entry"]
            table["peak_gflops"] = entry["flops"] / 1e9
            table["peak_lanes"] = entry["lanes"]
            continue
        match = NAME.match(name)
        if not match:
            continue
        per = 1 if match["kind"] == "single" else BLOCK
        kind = table[match["kind"]].setdefault(int(match["taps"]), {})
        kind[match["contender"]] = median_ns(run) / per
    return table


def rows(table):
    result = []
    peak = table["peak_gflops"]
    for taps in sorted(table["block"]):
        c = table["block"][taps]
        ours = c.get("ours")
        if not ours:
            continue
        gflops = 2 * taps / ours
        result.append({"taps": taps, "ours": ours, "gflops": gflops,
                       "of_peak": gflops / peak if peak else None,
                       "volk_ratio": c["volk"] / ours if c.get("volk") else None,
                       "liquid_ratio": c["liquid"] / ours if c.get("liquid") else None})
    return result


def level_rows(table):
    """Ours per level and tap count: ns/sample, GFLOP/s and the share of the peak at the level's
    register width (the probe's peak scaled by lanes)."""
    result = []
    peak, peak_lanes = table["peak_gflops"], table["peak_lanes"]
    for taps in sorted(table["level"]):
        for level, ns in table["level"][taps].items():
            gflops = 2 * taps / ns
            width_peak = peak * LEVEL_LANES[level] / peak_lanes if peak and peak_lanes else None
            result.append({"taps": taps, "level": level, "ns": ns, "gflops": gflops,
                           "of_width_peak": gflops / width_peak if width_peak else None})
    return result


def check_targets(table):
    measured = {r["taps"]: r for r in rows(table)}
    checks = []

    def check(text, misses):
        checks.append({"target": text, "met": not misses, "misses": misses})

    check("at least 60% of the fused multiply-add peak from 64 taps up",
          [f"{t} taps: {r['of_peak']:.0%}" for t, r in measured.items()
           if t >= 64 and r["of_peak"] is not None and r["of_peak"] < 0.6])
    r = measured.get(256)
    if r:
        check("256 taps: at least 3x VOLK's dot product per output",
              [f"{r['volk_ratio']:.1f}x"] if r["volk_ratio"] and r["volk_ratio"] < 3 else [])
        check("256 taps: at least 5x liquid-dsp's firfilt",
              [f"{r['liquid_ratio']:.1f}x"] if r["liquid_ratio"] and r["liquid_ratio"] < 5 else [])
    r = measured.get(32)
    if r:
        check("32 taps: faster than both peers",
              [f"{name} {ratio:.2f}x" for name, ratio in
               (("VOLK", r["volk_ratio"]), ("liquid-dsp", r["liquid_ratio"]))
               if ratio and ratio <= 1])
    single = table["single"].get(32, {}).get("ours")
    if single is not None:
        check("single-sample FIR at 32 taps under 10 ns per call",
              [f"{single:.1f} ns"] if single >= 10 else [])
    return checks


def markdown(context, table):
    peak = table["peak_gflops"]
    lines = [f"1 Ki-sample blocks, natural level, one core, medians of {context['repetitions']} "
             f"runs; fused multiply-add peak probed in the same run: "
             f"{peak:.1f} GFLOP/s" if peak else "no fused multiply-add peak probe", ""]
    body = []
    for r in rows(table):
        body.append([r["taps"], f"{r['ours']:.2f}", f"{r['gflops']:.1f}",
                     f"{r['of_peak']:.0%}" if r["of_peak"] is not None else "",
                     f"{r['volk_ratio']:.1f}" if r["volk_ratio"] else "",
                     f"{r['liquid_ratio']:.1f}" if r["liquid_ratio"] else ""])
    lines += markdown_table(["taps", "ns/sample", "GFLOP/s", "% of peak", "VOLK ratio",
                             "liquid ratio"], "rrrrrr", body)
    single = table["single"].get(32, {}).get("ours")
    if single is not None:
        lines += ["", f"Single-sample FIR, 32 taps: {single:.1f} ns per call, dispatch included."]
    by_level = level_rows(table)
    if by_level:
        levels = [name for name in LEVEL_LANES if any(r["level"] == name for r in by_level)]
        cells = {(r["taps"], r["level"]): r for r in by_level}
        body = []
        for taps in sorted({r["taps"] for r in by_level}):
            row = [taps]
            for name in levels:
                r = cells.get((taps, name))
                share = f" ({r['of_width_peak']:.0%})" if r and r["of_width_peak"] else ""
                row.append(f"{r['gflops']:.1f}{share}" if r else "")
            body.append(row)
        lines += ["", "Ours at each level: GFLOP/s (share of the peak at the level's register "
                  "width):", ""]
        lines += markdown_table(["taps"] + levels, "r" * (1 + len(levels)), body)
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    report = run.report(run.binary(BINARIES[0]),
                        None if options.levels else "^(block|single|peak)/")
    table = times(report)
    if not table["block"]:
        return None
    context = run.context(report)
    targets = check_targets(table)
    record = {"context": context,
              "ns_per_sample": {k: table[k] for k in ("block", "single", "level")},
              "peak_gflops": table["peak_gflops"], "comparison": rows(table),
              "levels": level_rows(table), "targets": targets}
    return targets, markdown(context, table), record
