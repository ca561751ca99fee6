#!/usr/bin/env python3
"""Fails when a level object defines a linkable symbol outside its level namespace.

A weak or global definition that two level objects could both provide (an inline helper, a std
template, a static initialiser) lets the linker keep one copy for every caller; if it keeps the
AVX-512 copy, an older processor dies on an illegal instruction. Everything a level object
defines for the linker must therefore be named zal::engine::<level>::..., and a baseline object
must define nothing in any level namespace.

Usage: check_level_symbols.py --nm NM --level LEVEL OBJ... [--level LEVEL OBJ...]...
LEVEL is a level token or "baseline". An OBJ argument may hold several paths separated by ";"
(the form CMake gives a $<TARGET_OBJECTS> list in a test command).
Exit status: 0 clean, 1 offending symbols, 2 usage or tool error.
"""

import argparse
import re
import subprocess
import sys

LEVELS = ("sse2", "ssse3", "sse42", "avx", "avx2", "avx512")
BASELINE = "baseline"

# Compiler and runtime artefacts that may be defined outside the level namespace: none of them
# holds code compiled with the level's flags.
RUNTIME_ARTEFACTS = (
    (r"\.L", "assembler-local label"),
    (r"__x86\.get_pc_thunk\.", "32-bit PIC thunk"),
    (r"DW\.ref\.__g(?:xx|cc)_personality_v0$", "personality pointer for the unwind tables"),
    (r"_{2,3}(?:asan|ubsan|tsan|msan|hwasan|sancov)_", "sanitizer instrumentation"),
    (r"__odr_asan[._]", "AddressSanitizer one-definition indicator"),
    (r"(?:asan|tsan|msan|hwasan|sancov)\.module_[cd]tor", "sanitizer module constructor"),
    (r"_ZT[IS]F", "typeinfo of a function type, emitted for -fsanitize=function"),
    (r"\.refptr\.", "MinGW pointer cell for external data"),
)
# Allowed only as a weak (COMDAT) definition: calls std::terminate, holds no vector code.
WEAK_RUNTIME_ARTEFACTS = (r"__clang_call_terminate$",)

UNDEFINED_TYPES = set("Uwv")  # w and v: weak references without a definition here
UNLINKABLE_UPPER_TYPES = set("UN")  # N: debugging symbol
WEAK_TYPES = set("WVu")
# Lower-case types are local, except u (unique global) and, in ELF, i (indirect function; in
# COFF, i marks the section symbol of linker directives).
ELF_GLOBAL_LOWER_TYPES = set("ui")
COFF_GLOBAL_LOWER_TYPES = set("u")

# One line of BSD-format nm output; undefined symbols have no value.
NM_LINE = re.compile(r"^([0-9A-Fa-f]+)?\s+(\S)\s+(\S.*)$")

# Special names of the common C++ ABI that wrap another name: vtable, VTT, typeinfo and its name, thunks, TLS
# init and wrapper, guard variable, reference temporary, transaction clone, construction vtable,
# and the local-entity prefix Z (a static or lambda inside a function).
NUMBER = r"n?\d+_"
CALL_OFFSET = r"(?:h{0}|v{0}{0})".format(NUMBER)
SPECIAL_PREFIX = re.compile("|".join((
    r"T[VTISHWC]", "Th" + NUMBER, "Tv" + NUMBER + NUMBER, "Tc" + CALL_OFFSET + CALL_OFFSET,
    "GV", "GR", "GT[tn]", "Z")))


def level_namespace_pattern(level):
    # A nested name (N), possibly cv- or ref-qualified, whose first components are
    # zal::engine::<level>.
    return re.compile(r"N[rVK]*[RO]?3zal6engine{}{}".format(len(level), level))


LEVEL_PATTERNS = {level: level_namespace_pattern(level) for level in LEVELS}


def mangled_entity(name):
    """The C++ ABI encoding with special-name prefixes removed, or None if not such a name."""
    if not name.startswith("_Z"):
        return None
    entity = name[2:]
    while True:
        prefix = SPECIAL_PREFIX.match(entity)
        if not prefix:
            return entity
        entity = entity[prefix.end():]


def linker_name(name, weak_references):
    # A MinGW weak definition appears as ".weak.<symbol>.<another symbol>" beside a weak
    # reference to <symbol>; names may hold dots, so <symbol> is the reference it starts with.
    if not name.startswith(".weak."):
        return name
    rest = name[len(".weak."):]
    candidates = [symbol for symbol in weak_references if rest.startswith(symbol + ".")]
    return max(candidates, key=len) if candidates else rest


def in_level_namespace(name, level):
    entity = mangled_entity(name)
    return entity is not None and LEVEL_PATTERNS[level].match(entity) is not None


def is_runtime_artefact(name, is_weak):
    if any(re.match(pattern, name) for pattern, _ in RUNTIME_ARTEFACTS):
        return True
    return is_weak and any(re.match(pattern, name) for pattern in WEAK_RUNTIME_ARTEFACTS)


def is_elf(path):
    with open(path, "rb") as stream:
        return stream.read(4) == b"\x7fELF"


def run_nm(nm, path, demangle):
    command = [nm, "-p"] + (["-C"] if demangle else ["--no-demangle"]) + [path]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        raise RuntimeError("{} failed on {}:\n{}".format(nm, path, result.stderr))
    symbols = []
    for line in result.stdout.splitlines():
        if not line.strip():
            continue
        match = NM_LINE.match(line)
        if not match:
            raise RuntimeError("unexpected {} output for {}: {!r}".format(nm, path, line))
        value, kind, name = match.groups()
        symbols.append((value is not None, kind, name))
    return symbols


def is_linkable_definition(defined, kind, elf):
    if not defined or kind in UNDEFINED_TYPES:
        return False
    if kind.isupper() or kind == "?":
        return kind not in UNLINKABLE_UPPER_TYPES
    return kind in (ELF_GLOBAL_LOWER_TYPES if elf else COFF_GLOBAL_LOWER_TYPES)


def offends(name, group):
    if group == BASELINE:
        return any(in_level_namespace(name, level) for level in LEVELS)
    return not in_level_namespace(name, group)


def check_object(nm, path, group):
    """Returns one message per offending symbol of the object."""
    elf = is_elf(path)
    symbols = run_nm(nm, path, demangle=False)
    weak_references = {name for defined, kind, name in symbols if not defined and kind in "wv"}
    offenders = []
    for index, (defined, kind, listed_name) in enumerate(symbols):
        if not is_linkable_definition(defined, kind, elf):
            continue
        name = linker_name(listed_name, weak_references)
        # COFF shows a COMDAT definition, the counterpart of an ELF weak one, as a plain T.
        is_weak = kind in WEAK_TYPES or name != listed_name or (not elf and kind == "T")
        if not is_runtime_artefact(name, is_weak) and offends(name, group):
            offenders.append((index, kind, name))
    if not offenders:
        return []
    demangled = run_nm(nm, path, demangle=True)
    if len(demangled) != len(symbols):
        raise RuntimeError("{} listed {} differently when demangling".format(nm, path))
    rule = ("defined in a level namespace" if group == BASELINE else
            "defined outside zal::engine::{}::".format(group))
    return ["{}: {} {} {}\n    {}".format(path, kind, name, rule, demangled[index][2])
            for index, kind, name in offenders]


def parse_groups(argv):
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--nm", required=True)
    parser.add_argument("--level", nargs="+", action="append", required=True,
                        metavar=("LEVEL", "OBJ"))
    args = parser.parse_args(argv)
    groups = []
    for level, *objects in args.level:
        if level not in LEVELS and level != BASELINE:
            parser.error("unknown level {!r}".format(level))
        paths = [path for argument in objects for path in argument.split(";") if path]
        if not paths:
            parser.error("no objects for level {}".format(level))
        groups.append((level, paths))
    return args.nm, groups


def main(argv):
    nm, groups = parse_groups(argv)
    offence_count = 0
    object_count = 0
    for group, paths in groups:
        for path in paths:
            try:
                offences = check_object(nm, path, group)
            except (OSError, RuntimeError) as error:
                print("error: {}".format(error), file=sys.stderr)
                return 2
            object_count += 1
            offence_count += len(offences)
            for offence in offences:
                print("[{}] {}".format(group, offence))
    if offence_count:
        print("{} offending symbol(s) in {} object(s)".format(offence_count, object_count))
        return 1
    print("{} object(s): no linkable definition outside its level namespace".format(object_count))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
