"""What every family's comparison shares: running a benchmark binary pinned to one core with
shuffled repetitions, collecting each benchmark's times, and printing sizes and tables."""

import json
import re
import statistics
import subprocess

LEVEL_NAMES = {-1: "natural", 0: "sse2", 1: "ssse3", 2: "sse42", 3: "avx", 4: "avx2", 5: "avx512"}


class Run:
    """How to run benchmarks: the build tree, the core to pin to, and the timing options."""

    def __init__(self, build_dir, core, repetitions, min_time):
        self.build_dir = build_dir
        self.core = core
        self.repetitions = repetitions
        self.min_time = min_time

    def binary(self, name):
        return self.build_dir / "bench" / name

    def report(self, binary, filter_pattern=None, environment=None):
        """Google Benchmark's JSON report of the binary, every benchmark repeated. Repetitions
        are shuffled across all benchmarks, so that a slow spell of the machine spreads over
        every contender instead of falling on one. `environment` replaces the process's."""
        command = ["taskset", "-c", str(self.core), str(binary), "--benchmark_format=json",
                   f"--benchmark_repetitions={self.repetitions}",
                   f"--benchmark_min_time={self.min_time}",
                   "--benchmark_enable_random_interleaving=true"]
        if filter_pattern:
            command.append(f"--benchmark_filter={filter_pattern}")
        result = subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True,
                                env=environment)
        return json.loads(result.stdout)

    def context(self, report):
        return dict(report["context"], core=self.core, repetitions=self.repetitions,
                    min_time_s=self.min_time)


def list_benchmarks(binary):
    result = subprocess.run([str(binary), "--benchmark_list_tests"], stdout=subprocess.PIPE,
                            check=True, text=True)
    return result.stdout.split()


def any_of(names, suffix):
    """A --benchmark_filter matching names that start with one of the given ones and go on with
    suffix. The binary's regular expressions are POSIX extended ones: only dots need escaping."""
    return "^(" + "|".join(name.replace(".", r"\.") for name in names) + ")" + suffix


def repetitions(report):
    """Per benchmark name: every repetition's CPU time in ns, its counters' medians aside."""
    runs = {}
    for entry in report["benchmarks"]:
        if entry.get("run_type", "iteration") != "iteration" or entry.get("error_occurred"):
            continue
        scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
        run = runs.setdefault(entry["run_name"], {"times_ns": [], "entry": entry})
        run["times_ns"].append(entry["cpu_time"] * scale)
    return runs


def median_ns(run):
    return statistics.median(run["times_ns"])


def size_label(n):
    if n >= 1 << 20 and n % (1 << 20) == 0:
        return f"{n >> 20} Mi"
    if n >= 1 << 10 and n % (1 << 10) == 0:
        return f"{n >> 10} Ki"
    return str(n)


def markdown_table(header, alignments, rows):
    """Lines of a Markdown table; alignments is one of 'l' or 'r' per column."""
    lines = ["| " + " | ".join(header) + " |",
             "|" + "|".join("---" if a == "l" else "---:" for a in alignments) + "|"]
    lines += ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]
    return lines


def target_lines(targets):
    """Markdown list of targets: each met, or missed with its misses."""
    lines = ["Targets:", ""]
    for target in targets:
        state = "met" if target["met"] else "missed: " + "; ".join(target["misses"])
        lines.append(f"- {target['target']}: {state}")
    return lines


def compare_table(run, options, family, unit, keep=lambda name: True, extra=lambda table: {}):
    """Runs the benchmarks of a family module (BINARIES, times, rows, check_targets and markdown
    from the module) whose names match --members and `keep`; returns the targets, Markdown lines
    and the JSON record (the times under `unit`, and what `extra` adds), or None when no
    benchmark matches."""
    binary = run.binary(family.BINARIES[0])
    names = [name for name in list_benchmarks(binary)
             if re.search(options.members, name) and keep(name)]
    if not names:
        return None
    report = run.report(binary, any_of(names, "$"))
    table = family.times(report)
    if not table:
        return None
    context = run.context(report)
    targets = family.check_targets(table)
    record = {"context": context, unit: table, "comparison": family.rows(table),
              "targets": targets, **extra(table)}
    return targets, family.markdown(context, table), record


def compare_at_one_size(run, options, family):
    """compare_table over the benchmarks of length family.SIZE."""
    return compare_table(run, options, family, "ns_per_element",
                         keep=lambda name: name.endswith(f"/n:{family.SIZE}"))
