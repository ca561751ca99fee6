"""The multirate filter against a plain polyphase loop (-O3 -march=native) and liquid-dsp's
polyphase objects with the same taps per phase, at 2/1, 1/2 and 147/160; libsoxr's and
libsamplerate's default-quality throughput beside them for orientation (their own filters).

Per rate and taps per phase: our ns/output at the natural level, the peers', and each peer's
time / ours (above 1 we are faster)."""

import re
import sys

from .common import compare_table, markdown_table, repetitions

BINARIES = ("zal_bench_multirate",)
NAME = re.compile(r"^(?P<type>f32|f64)\.(?P<rate>\w+)/(?P<contender>\w+)/taps:(?P<taps>\d+)$")
RATES = {"up2": "2/1", "down2": "1/2", "r147over160": "147/160"}
PEERS = ("plain", "liquid")
ORIENTATION = ("soxr", "samplerate")
# Each peer's time over ours at least this.
TARGET = 2.0


def times(report):
    """ns/output per type, rate, taps per phase (0 for the orientation peers) and contender."""
    table = {}
    for name, run in repetitions(report).items():
        match = NAME.match(name)
        if not match:
            continue
        outputs = run["entry"].get("items_per_second")
        if not outputs:
            continue
        per_output = 1e9 / outputs
        rate = table.setdefault(match["type"], {}).setdefault(match["rate"], {})
        rate.setdefault(int(match["taps"]), {})[match["contender"]] = per_output
    return table


def rows(table):
    result = []
    for type_ in sorted(table):
        for rate in RATES:
            by_taps = table[type_].get(rate, {})
            orientation = by_taps.get(0, {})
            for taps in sorted(t for t in by_taps if t):
                contenders = by_taps[taps]
                ours = contenders.get("ours")
                if not ours:
                    continue
                row = {"case": f"{type_} {RATES[rate]} {taps} taps", "type": type_, "ours": ours}
                for peer in PEERS:
                    row[peer] = contenders.get(peer)
                    row[peer + "_ratio"] = contenders[peer] / ours if contenders.get(peer) else None
                for peer in ORIENTATION:
                    row[peer] = orientation.get(peer)
                for level in ("avx2", "avx512"):
                    row[level] = contenders.get("ours_" + level)
                result.append(row)
    return result


def check_targets(table):
    checks = []
    for peer in PEERS:
        measured = [r for r in rows(table) if r[peer + "_ratio"]]
        if not measured:
            continue
        misses = [f"{r['case']}: {r[peer + '_ratio']:.1f}x" for r in measured
                  if r[peer + "_ratio"] < TARGET]
        checks.append({"target": f"{TARGET:g}x the {peer} peer per output sample",
                       "met": not misses, "misses": misses})
    return checks


def cell(value, digits=2):
    return f"{value:.{digits}f}" if value else ""


def markdown(context, table):
    lines = [f"Natural level, one core, medians of {context['repetitions']} runs; ns/output "
             "sample; ratio = the peer's time / ours (> 1: we are faster); soxr (HQ) and "
             "libsamplerate (SINC_MEDIUM) run their own filters, for orientation only.", ""]
    body = []
    for r in rows(table):
        body.append([r["case"], cell(r["ours"]), cell(r["avx2"]), cell(r["avx512"]),
                     cell(r["plain"]), cell(r["plain_ratio"], 1), cell(r["liquid"]),
                     cell(r["liquid_ratio"], 1), cell(r["soxr"]), cell(r["samplerate"])])
    lines += markdown_table(["Case", "ours", "avx2", "avx512", "plain", "plain ratio", "liquid",
                             "liquid ratio", "soxr", "samplerate"], "lrrrrrrrrr", body)
    return lines + [""]


def compare(run, options):
    """Runs the family's benchmarks; returns the targets, Markdown lines and the JSON record."""
    # The natural level and the two widest beside the peers; every level with --levels.
    contenders = re.compile(r"/(ours|ours_avx2|ours_avx512|plain|liquid|soxr|samplerate)/")
    return compare_table(run, options, sys.modules[__name__], "ns_per_output",
                         keep=lambda name: options.levels or contenders.search(name))
