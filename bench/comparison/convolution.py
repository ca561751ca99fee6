"""Convolution over a grid of lengths against a direct loop built -O3 -march=native and an
overlap-add over FFTW (FFTW_MEASURE plans); resamplers against the library's Copy and a plain
strided loop.

Per cell (lenA x lenB): our time (the exported work-buffer form, natural level), each method of
ours forced, both peers', and the ratio best peer's time / ours (above 1 we are faster). Per
resampler, type, factor and size: ns per element written, ours, the loop's and Copy's, and ours
over Copy's per element written and per element read and written. Also draws time against lenA x lenB for
both methods as an SVG."""

import math
import re
from pathlib import Path

from .common import any_of, list_benchmarks, markdown_table, median_ns, repetitions
from .machine import describe

BINARIES = ("zal_bench_convolution",)
CONV = re.compile(r"^conv/(?P<contender>ours|direct|transform|loop|fftw)/a:(?P<a>\d+)/b:(?P<b>\d+)$")
RESAMPLE = re.compile(r"^(?P<kind>down|up|copy)/(?P<who>ours|loop)/(?P<type>f32|f64)"
                      r"(?:/factor:(?P<factor>\d+))?/n:(?P<n>\d+)$")
SVG_PATH = Path(__file__).resolve().parent.parent / "convolution_time.svg"


def tables(runs):
    cells, resample = {}, {}
    for name, run in runs.items():
        match = CONV.match(name)
        if match:
            key = (int(match["a"]), int(match["b"]))
            cells.setdefault(key, {})[match["contender"]] = median_ns(run)
            continue
        match = RESAMPLE.match(name)
        if match:
            per_element = median_ns(run) / int(match["n"])
            # Up's n is rounded down to whole groups; it is keyed by the size asked for.
            size = 1 << round(math.log2(int(match["n"])))
            key = (match["type"], size, match["kind"], int(match["factor"] or 1))
            resample.setdefault(key, {})[match["who"]] = per_element
    return cells, resample


def rows_of(cells):
    rows = []
    for (a, b), entry in sorted(cells.items()):
        if not all(k in entry for k in ("ours", "direct", "transform", "loop", "fftw")):
            continue
        peer = min(entry["loop"], entry["fftw"])
        method = "transform" if entry["transform"] < entry["direct"] else "direct"
        chosen = ("transform" if abs(entry["ours"] - entry["transform"])
                  < abs(entry["ours"] - entry["direct"]) else "direct")
        rows.append({"a": a, "b": b, **entry, "peer": peer, "ratio": peer / entry["ours"],
                     "faster_method": method, "chosen": chosen})
    return rows


def moved(kind, factor):
    """Elements read and written per element written; Copy's is 2."""
    return 1 + (factor if kind == "down" else 1 / factor)


def resample_rows(resample):
    rows = []
    for (kind_type, size, kind, factor), entry in sorted(resample.items()):
        copy = resample.get((kind_type, size, "copy", 1), {}).get("ours")
        if kind == "copy" or "ours" not in entry or not copy:
            continue
        rows.append({"type": kind_type, "n": size, "kind": kind, "factor": factor,
                     "ours": entry["ours"], "loop": entry.get("loop"), "copy": copy,
                     "over_copy": entry["ours"] / copy,
                     "over_copy_per_byte": entry["ours"] / copy * 2 / moved(kind, factor)})
    return rows


def check_targets(rows, resample):
    targets = [
        ("every cell: ratio >= 1.0",
         [f"{r['a']}x{r['b']}: {r['ratio']:.2f}" for r in rows if r["ratio"] < 1.0]),
        ("cells where the transform runs: ratio >= 2.0",
         [f"{r['a']}x{r['b']}: {r['ratio']:.2f}" for r in rows
          if r["chosen"] == "transform" and r["ratio"] < 2.0]),
    ]
    resampled = resample_rows(resample)
    if resampled:
        targets.append(("resamplers within 1.2x of Copy per element written",
                        [f"{r['kind']} {r['type']} x{r['factor']} n {r['n']}: {r['over_copy']:.2f}"
                         for r in resampled if r["over_copy"] > 1.2]))
    return [{"target": t, "met": not misses, "misses": misses} for t, misses in targets]


def svg(rows, context):
    """Time against lenA * lenB (both logarithmic), one panel per shorter length: the direct
    method (red), the transform (blue), the better peer (grey, dashed)."""
    shorter = sorted({r["b"] for r in rows})
    width, height, columns = 300, 220, 4
    left, right, top, bottom = 50, 10, 26, 34
    panels_down = (len(shorter) + columns - 1) // columns
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width * columns}" '
             f'height="{height * panels_down + 44}" font-family="sans-serif" font-size="11">',
             '<rect width="100%" height="100%" fill="white"/>',
             '<text x="8" y="16" font-size="13">Convolution time (ns, log) against lenA (log), '
             f'natural level {context.get("natural_level", "?")}, one core: '
             '<tspan fill="#c0392b">direct</tspan>, <tspan fill="#2471a3">transform</tspan>, '
             '<tspan fill="#777">better peer</tspan></text>']
    for index, b in enumerate(shorter):
        ox = (index % columns) * width
        oy = 24 + (index // columns) * height
        data = sorted((r for r in rows if r["b"] == b), key=lambda r: r["a"])
        xs = [math.log2(r["a"]) for r in data]
        values = [math.log10(r[k]) for r in data for k in ("direct", "transform", "peer")]
        y0, y1 = math.floor(min(values)), math.ceil(max(values))
        x0, x1 = min(xs), max(xs)
        plot_w, plot_h = width - left - right, height - top - bottom

        def point(x, value, x0=x0, x1=x1, y0=y0, y1=y1, ox=ox, oy=oy, pw=plot_w, ph=plot_h):
            px = ox + left + (x - x0) / max(x1 - x0, 1) * pw
            py = oy + top + ph - (math.log10(value) - y0) / max(y1 - y0, 1) * ph
            return f"{px:.1f},{py:.1f}"

        parts.append(f'<text x="{ox + left}" y="{oy + 18}" font-size="12">lenB = {b}</text>')
        parts.append(f'<rect x="{ox + left}" y="{oy + top}" width="{plot_w}" height="{plot_h}" '
                     'fill="none" stroke="#999"/>')
        for decade in range(y0, y1 + 1):
            y = oy + top + plot_h - (decade - y0) / max(y1 - y0, 1) * plot_h
            parts.append(f'<text x="{ox + left - 4}" y="{y + 4:.1f}" text-anchor="end">'
                         f'1e{decade}</text>')
        for x in xs:
            px = ox + left + (x - x0) / max(x1 - x0, 1) * plot_w
            parts.append(f'<text x="{px:.1f}" y="{oy + top + plot_h + 14}" '
                         f'text-anchor="middle">2^{x:.0f}</text>')
        for key, colour, dash in (("direct", "#c0392b", ""), ("transform", "#2471a3", ""),
                                  ("peer", "#777", ' stroke-dasharray="5,3"')):
            line = " ".join(point(x, r[key]) for x, r in zip(xs, data))
            parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" '
                         f'stroke-width="1.6"{dash}/>')
    parts.append(f'<text x="8" y="{height * panels_down + 38}" fill="#555">{describe()}</text>')
    parts.append("</svg>")
    return "\n".join(parts) + "\n"


def markdown(context, rows, resample):
    lines = [f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs, float; ratio = better peer's time / ours (> 1: we "
             "are faster); method = the one ours ran.", ""]
    lines += markdown_table(
        ["lenA", "lenB", "ours ns", "direct ns", "transform ns", "loop ns", "FFTW ns", "Ratio",
         "Method"], "rrrrrrrrl",
        [[r["a"], r["b"], f"{r['ours']:.0f}", f"{r['direct']:.0f}", f"{r['transform']:.0f}",
          f"{r['loop']:.0f}", f"{r['fftw']:.0f}", f"{r['ratio']:.2f}", r["chosen"]]
         for r in rows])
    resampled = resample_rows(resample)
    if resampled:
        lines += ["", "Resamplers, ns per element written:", ""]
        lines += markdown_table(
            ["Function", "Type", "Factor", "Elements", "ours", "loop", "Copy", "ours / Copy",
             "per byte moved"],
            "llrrrrrrr",
            [[r["kind"], r["type"], r["factor"], r["n"], f"{r['ours']:.3f}",
              f"{r['loop']:.3f}" if r["loop"] else "", f"{r['copy']:.3f}",
              f"{r['over_copy']:.2f}", f"{r['over_copy_per_byte']:.2f}"] for r in resampled])
    lines += ["", f"Plot: {SVG_PATH.relative_to(SVG_PATH.parent.parent)}", ""]
    return lines


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    binary = run.binary(BINARIES[0])
    names = [name for name in list_benchmarks(binary) if re.search(options.members, name)]
    if not names:
        return None
    report = run.report(binary, any_of(names, "$"))
    cells, resample = tables(repetitions(report))
    rows = rows_of(cells)
    context = run.context(report)
    targets = check_targets(rows, resample)
    if rows:
        SVG_PATH.write_text(svg(rows, context))
    record = {"context": context, "comparison": rows,
              "resampling": resample_rows(resample),
              "targets": targets}
    return targets, markdown(context, rows, resample), record
