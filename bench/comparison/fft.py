"""Fast Fourier transforms against FFTW (FFTW_MEASURE plans, the same kind and layout).

Per kind and length: our forward transform's ns and MFlops at the natural level, FFTW's, their
ratio (FFTW's time / ours: above 1 we are faster), the same ratio for our avx2 level alone, and
our inverse transform's time over our forward one. MFlops = 5 N log2 N / t for complex kinds,
2.5 N log2 N / t for real ones. Also draws MFlops against N, ours and FFTW's, as an SVG.

With --fftw-best, the binary runs a second time against FFTW built with every SIMD option this
processor has (bench/peers/build-fftw-avx512.sh, built once and cached outside the tree; same
soname, put first with LD_LIBRARY_PATH), and the tables show both FFTWs beside ours."""

import math
import os
import re
import subprocess
import sys
from pathlib import Path

from .common import LEVEL_NAMES, list_benchmarks, markdown_table, median_ns, repetitions
from .common import any_of, size_label
from .machine import describe

BINARIES = ("zal_bench_fft",)
KINDS = {"r32": "real float", "c32": "complex float", "s32": "split float",
         "r64": "real double", "c64": "complex double", "s64": "split double"}
NAME = re.compile(r"^(?P<kind>[rcs](?:32|64))\.(?P<direction>fwd|inv)/(?P<contender>ours|fftw)"
                  r"(?:/level:(?P<level>-?\d+))?/n:(?P<n>\d+)$")
AVX2_LEVEL = 4
MIDDLE = (256, 65536)
SVG_PATH = Path(__file__).resolve().parent.parent / "fft_mflops.svg"
BEST_SCRIPT = Path(__file__).resolve().parent.parent / "peers" / "build-fftw-avx512.sh"
BEST = "fftw-best"


def wanted(match, levels):
    if match["contender"] == "fftw":
        return match["direction"] == "fwd"
    level = int(match["level"])
    if match["direction"] == "inv":
        return level == -1
    return levels or level in (-1, AVX2_LEVEL)


def selected_names(names, members, levels):
    chosen = []
    for name in names:
        match = NAME.match(name)
        if match and re.search(members, match["kind"]) and wanted(match, levels):
            chosen.append(name)
    return chosen


def flops(kind, n):
    return (2.5 if kind.startswith("r") else 5.0) * n * math.log2(n)


def summarise(runs, peer_label="fftw"):
    """Per benchmark: times, median and MFlops; FFTW's entries labelled `peer_label`."""
    results = []
    for name, run in runs.items():
        match = NAME.match(name)
        if not match:
            continue
        n = int(match["n"])
        ns = median_ns(run)
        results.append({
            "name": name, "kind": match["kind"], "direction": match["direction"],
            "contender": peer_label if match["contender"] == "fftw" else "ours",
            "level": int(match["level"]) if match["level"] is not None else None,
            "n": n, "times_ns": run["times_ns"], "ns": ns,
            "mflops": flops(match["kind"], n) / ns * 1e3,
        })
    return results


def rows_of(results):
    table = {}
    for r in results:
        key = (r["kind"], r["n"])
        label = r["contender"] if r["contender"] != "ours" else f"{r['direction']}{r['level']}"
        table.setdefault(key, {})[label] = r
    rows = []
    for kind in KINDS:
        for (k, n), entries in sorted(table.items(), key=lambda item: item[0][1]):
            ours, peer = entries.get("fwd-1"), entries.get("fftw")
            if k != kind or not ours or not peer:
                continue
            avx2 = entries.get(f"fwd{AVX2_LEVEL}")
            inverse = entries.get("inv-1")
            best = entries.get(BEST)
            rows.append({
                "kind": kind, "n": n, "ns": ours["ns"], "mflops": ours["mflops"],
                "peer_ns": peer["ns"], "peer_mflops": peer["mflops"],
                "ratio": peer["ns"] / ours["ns"],
                "avx2_ratio": peer["ns"] / avx2["ns"] if avx2 else None,
                "inverse_over_forward": inverse["ns"] / ours["ns"] if inverse else None,
                "best_ns": best["ns"] if best else None,
                "best_mflops": best["mflops"] if best else None,
                "best_ratio": best["ns"] / ours["ns"] if best else None,
                "avx2_best_ratio": best["ns"] / avx2["ns"] if best and avx2 else None,
            })
    return rows


def level_rows(results):
    table = {}
    for r in results:
        if r["contender"] == "ours" and r["direction"] == "fwd":
            table.setdefault((r["kind"], r["n"]), {})[LEVEL_NAMES[r["level"]]] = r["ns"]
    return [{"kind": k, "n": n, "ns": levels} for (k, n), levels in table.items()]


def check_targets(rows):
    def label(row, key="ratio"):
        return f"{row['kind']} {size_label(row['n'])}: {row[key]:.3f}"

    def middle(row):
        return MIDDLE[0] <= row["n"] <= MIDDLE[1]

    def split_over_interleaved(row):
        other = next((r for r in rows if r["kind"] == "c" + row["kind"][1:] and r["n"] == row["n"]),
                     None)
        return row["ns"] / other["ns"] if other else None

    float_rows = [r for r in rows if r["kind"].endswith("32")]
    double_rows = [r for r in rows if r["kind"].endswith("64")]
    targets = [
        ("float, N = 256 .. 64 Ki: ratio >= 1.3",
         [label(r) for r in float_rows if middle(r) and r["ratio"] < 1.3]),
        ("float, other N: ratio >= 1.0",
         [label(r) for r in float_rows if not middle(r) and r["ratio"] < 1.0]),
        ("double, N = 256 .. 64 Ki: ratio >= 1.2",
         [label(r) for r in double_rows if middle(r) and r["ratio"] < 1.2]),
        ("double, other N: ratio >= 1.0",
         [label(r) for r in double_rows if not middle(r) and r["ratio"] < 1.0]),
        ("inverse within 10% of forward",
         [label(r, "inverse_over_forward") for r in rows
          if r["inverse_over_forward"] is not None and r["inverse_over_forward"] > 1.1]),
        ("avx2 level alone, N = 256 .. 64 Ki: ratio >= 1.0",
         [label(r, "avx2_ratio") for r in rows
          if middle(r) and r["avx2_ratio"] is not None and r["avx2_ratio"] < 1.0]),
        ("split no slower than interleaved (time within 5%)",
         [f"{size_label(r['n'])} {r['kind']}: {split_over_interleaved(r):.2f}" for r in rows
          if r["kind"].startswith("s") and (split_over_interleaved(r) or 0) > 1.05]),
    ]
    if any(r["best_ratio"] is not None for r in rows):
        targets += [
            ("FFTW with every SIMD option, every N: ratio >= 1.0",
             [label(r, "best_ratio") for r in rows
              if r["best_ratio"] is not None and r["best_ratio"] < 1.0]),
            ("avx2 level alone, every N: ratio to Debian's FFTW >= 1.0",
             [label(r, "avx2_ratio") for r in rows
              if r["avx2_ratio"] is not None and r["avx2_ratio"] < 1.0]),
        ]
    return [{"target": t, "met": not misses, "misses": misses} for t, misses in targets]


def svg(rows, context):
    """MFlops against log2 N, one panel per kind: ours (solid) and FFTW (dashed)."""
    width, height, columns = 330, 230, 3
    left, right, top, bottom = 52, 10, 28, 34
    kinds = [k for k in KINDS if any(r["kind"] == k for r in rows)]
    panels_down = (len(kinds) + columns - 1) // columns
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width * columns}" '
             f'height="{height * panels_down + 44}" font-family="sans-serif" font-size="11">',
             '<rect width="100%" height="100%" fill="white"/>',
             f'<text x="8" y="16" font-size="13">Forward transforms, MFlops against N '
             f'(natural level {context.get("natural_level", "?")}, one core): '
             '<tspan fill="#c0392b">ours</tspan>, <tspan fill="#2471a3">FFTW</tspan>'
             + (', <tspan fill="#1e8449">FFTW, every SIMD option</tspan>'
                if any(r["best_mflops"] for r in rows) else "") + '</text>']
    for index, kind in enumerate(kinds):
        ox = (index % columns) * width
        oy = 24 + (index // columns) * height
        data = sorted((r for r in rows if r["kind"] == kind), key=lambda r: r["n"])
        xs = [math.log2(r["n"]) for r in data]
        top_value = max(max(r["mflops"], r["peer_mflops"], r["best_mflops"] or 0)
                        for r in data) * 1.1
        x0, x1 = min(xs), max(xs)
        plot_w, plot_h = width - left - right, height - top - bottom

        def point(x, y):
            px = ox + left + (x - x0) / max(x1 - x0, 1) * plot_w
            py = oy + top + plot_h - y / top_value * plot_h
            return f"{px:.1f},{py:.1f}"

        parts.append(f'<text x="{ox + left}" y="{oy + 18}" font-size="12">{KINDS[kind]}</text>')
        parts.append(f'<rect x="{ox + left}" y="{oy + top}" width="{plot_w}" height="{plot_h}" '
                     'fill="none" stroke="#999"/>')
        for step in range(5):
            value = top_value * step / 4
            y = oy + top + plot_h - plot_h * step / 4
            parts.append(f'<text x="{ox + left - 4}" y="{y + 4:.1f}" text-anchor="end">'
                         f'{value / 1000:.0f}k</text>')
        for x in xs[::2]:
            px = ox + left + (x - x0) / max(x1 - x0, 1) * plot_w
            parts.append(f'<text x="{px:.1f}" y="{oy + top + plot_h + 14}" '
                         f'text-anchor="middle">2^{x:.0f}</text>')
        for key, colour, dash in (("mflops", "#c0392b", ""),
                                  ("peer_mflops", "#2471a3", ' stroke-dasharray="5,3"'),
                                  ("best_mflops", "#1e8449", ' stroke-dasharray="2,2"')):
            if any(r[key] is None for r in data):
                continue
            line = " ".join(point(x, r[key]) for x, r in zip(xs, data))
            parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" '
                         f'stroke-width="1.6"{dash}/>')
    parts.append(f'<text x="8" y="{height * panels_down + 38}" fill="#555">{describe()}</text>')
    parts.append("</svg>")
    return "\n".join(parts) + "\n"


def markdown(context, rows, levels, best_context=None):
    lines = [f"Machine: {describe()}.", "",
             f"Natural level {context.get('natural_level', '?')}, one core, medians of "
             f"{context['repetitions']} runs, forward transforms out of place; ratio = FFTW's "
             "time / ours (> 1: we are faster); inv/fwd = our inverse's time / our forward's.",
             f"FFTW: {context.get('fftw_library', '?')}."]
    if best_context:
        lines.append(f"Best FFTW (every SIMD option, its own run of the binary): "
                     f"{best_context.get('fftw_library', '?')}.")
    lines.append("")
    if best_context:
        lines += markdown_table(
            ["Kind", "N", "ns", "MFlops", "FFTW ns", "Ratio", "best FFTW ns", "Ratio best",
             "avx2 ratio", "avx2 ratio best", "inv/fwd"], "lrrrrrrrrrr",
            [[KINDS[r["kind"]], size_label(r["n"]), f"{r['ns']:.0f}", f"{r['mflops']:.0f}",
              f"{r['peer_ns']:.0f}", f"{r['ratio']:.2f}",
              f"{r['best_ns']:.0f}" if r["best_ns"] is not None else "",
              f"{r['best_ratio']:.2f}" if r["best_ratio"] is not None else "",
              f"{r['avx2_ratio']:.2f}" if r["avx2_ratio"] is not None else "",
              f"{r['avx2_best_ratio']:.2f}" if r["avx2_best_ratio"] is not None else "",
              f"{r['inverse_over_forward']:.2f}" if r["inverse_over_forward"] is not None else ""]
             for r in rows])
    else:
        lines += markdown_table(
            ["Kind", "N", "ns", "MFlops", "FFTW ns", "FFTW MFlops", "Ratio", "avx2 ratio",
             "inv/fwd"], "lrrrrrrrr",
            [[KINDS[r["kind"]], size_label(r["n"]), f"{r['ns']:.0f}", f"{r['mflops']:.0f}",
              f"{r['peer_ns']:.0f}", f"{r['peer_mflops']:.0f}", f"{r['ratio']:.2f}",
              f"{r['avx2_ratio']:.2f}" if r["avx2_ratio"] is not None else "",
              f"{r['inverse_over_forward']:.2f}" if r["inverse_over_forward"] is not None else ""]
             for r in rows])
    if levels:
        names = [name for name in LEVEL_NAMES.values()
                 if any(name in row["ns"] for row in levels)]
        lines += ["", "Forward ns at each level:", ""]
        lines += markdown_table(
            ["Kind", "N", *names], "lr" + "r" * len(names),
            [[KINDS[row["kind"]], size_label(row["n"]),
              *(f"{row['ns'][name]:.0f}" if name in row["ns"] else "" for name in names)]
             for row in levels])
    lines += ["", f"Plot: {SVG_PATH.relative_to(SVG_PATH.parent.parent)}", ""]
    return lines


def best_fftw_prefix():
    """Where FFTW with every SIMD option is installed, building it first if it is not."""
    print(f"bench/compare: {BEST_SCRIPT.name} (cached after the first build, which takes "
          "about 25 minutes)...", file=sys.stderr)
    result = subprocess.run([str(BEST_SCRIPT)], stdout=subprocess.PIPE, check=True, text=True)
    return Path(result.stdout.strip().splitlines()[-1])


def best_fftw_results(run, binary, names):
    """FFTW's forward benchmarks again, against the build with every SIMD option."""
    prefix = best_fftw_prefix()
    peer_names = [name for name in names if NAME.match(name)["contender"] == "fftw"]
    if not peer_names:
        return [], None
    library_path = os.pathsep.join(
        p for p in (str(prefix / "lib"), os.environ.get("LD_LIBRARY_PATH")) if p)
    report = run.report(binary, any_of(peer_names, "$"),
                        dict(os.environ, LD_LIBRARY_PATH=library_path))
    context = run.context(report)
    if not context.get("fftw_library", "").startswith(str(prefix)):
        sys.exit(f"bench/compare: the second run loaded FFTW from "
                 f"{context.get('fftw_library', '?')}, not from {prefix}/lib")
    return summarise(repetitions(report), BEST), context


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    binary = run.binary(BINARIES[0])
    names = selected_names(list_benchmarks(binary), options.members, options.levels)
    if not names:
        return None
    report = run.report(binary, any_of(names, "$"))
    results = summarise(repetitions(report))
    context = run.context(report)
    best_context = None
    if getattr(options, "fftw_best", False):
        best, best_context = best_fftw_results(run, binary, names)
        results += best
    rows = rows_of(results)
    levels = level_rows(results) if options.levels else []
    targets = check_targets(rows)
    SVG_PATH.write_text(svg(rows, context))
    record = {"context": context, "best_fftw_context": best_context, "results": results,
              "comparison": rows, "levels": levels, "targets": targets}
    return targets, markdown(context, rows, levels, best_context), record
