"""This machine as the benchmark tables describe it: processor numbers, level, cores, caches.

Never a brand: the CPUID family/model/stepping and the instruction sets say what matters.
"""

import os
from pathlib import Path

# The engine's levels, highest first, by the flags Linux lists for each.
LEVELS = (
    ("avx512", {"avx512f", "avx512cd", "avx512bw", "avx512dq", "avx512vl"}),
    ("avx2", {"avx2", "fma", "bmi1", "bmi2"}),
    ("avx", {"avx"}),
    ("sse42", {"sse4_2"}),
    ("ssse3", {"ssse3"}),
    ("sse2", {"sse2"}),
)


def cpuinfo_fields():
    fields = {}
    try:
        text = Path("/proc/cpuinfo").read_text()
    except OSError:
        return fields
    for line in text.split("\n\n")[0].splitlines():
        key, _, value = line.partition(":")
        fields[key.strip()] = value.strip()
    return fields


def size_text(kib):
    return f"{kib // 1024} MiB" if kib >= 1024 and kib % 1024 == 0 else f"{kib} KiB"


def caches():
    """'L1d 48 KiB, L2 1 MiB, L3 32 MiB' for the first CPU's data and unified caches."""
    parts = []
    for index in sorted(Path("/sys/devices/system/cpu/cpu0/cache").glob("index*")):
        try:
            kind = (index / "type").read_text().strip()
            level = (index / "level").read_text().strip()
            size = (index / "size").read_text().strip()
        except OSError:
            continue
        if kind == "Instruction" or not size.endswith("K"):
            continue
        parts.append(f"L{level}{'d' if kind == 'Data' else ''} {size_text(int(size[:-1]))}")
    return ", ".join(parts)


def describe():
    fields = cpuinfo_fields()
    flags = set(fields.get("flags", "").split())
    level = next((name for name, needed in LEVELS if needed <= flags), "unknown level")
    words = [f"x86-64, CPUID family {fields.get('cpu family', '?')} model {fields.get('model', '?')}"
             f" stepping {fields.get('stepping', '?')}", f"level {level}"]
    if "hypervisor" in flags:
        words.append("under a hypervisor")
    words.append(f"{os.cpu_count()} logical CPUs")
    cache_text = caches()
    if cache_text:
        words.append(cache_text)
    return ", ".join(words)
