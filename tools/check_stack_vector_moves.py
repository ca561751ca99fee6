#!/usr/bin/env python3
"""Fails when an object moves a 256- or 512-bit vector to or from the stack with an aligned move.

The Win64 stack is only 16-byte aligned, and MinGW GCC does not realign it for wider vectors: an
aligned move (vmovaps, vmovdqa64, vmovntps ...) of a ymm or zmm register to or from a stack slot
faults whenever that slot happens to sit off a 32- or 64-byte boundary, which depends on the call
path. The Windows build assembles every aligned move as its unaligned twin; this check proves it
on the objects, and catches the non-temporal moves, which have no unaligned twin.

Usage: check_stack_vector_moves.py --objdump OBJDUMP OBJ...
An OBJ argument may hold several paths separated by ";" (the form CMake gives a
$<TARGET_OBJECTS> list in a test command).
Exit status: 0 clean, 1 offending moves, 2 usage or tool error.
"""

import argparse
import re
import subprocess
import sys

# Every move whose memory operand must be aligned to the vector's width. The legacy SSE forms
# only reach xmm registers; they are listed so that the width alone decides.
ALIGNED_MOVES = frozenset(
    "movaps movapd movdqa movntps movntpd movntdq movntdqa"
    " vmovaps vmovapd vmovdqa vmovdqa32 vmovdqa64 vmovntps vmovntpd vmovntdq vmovntdqa".split())
WIDE_REGISTER = re.compile(r"%[yz]mm\d")
# A memory operand based on the stack or frame pointer: disp(%rsp), (%rbp,%rax,8) ...
STACK_OPERAND = re.compile(r"\(%[re][sb]p[,)]")

SECTION_LINE = re.compile(r"^Disassembly of section (.*):\s*$")
FUNCTION_LINE = re.compile(r"^[0-9A-Fa-f]+ <(.*)>:\s*$")
INSTRUCTION_LINE = re.compile(r"^\s*([0-9A-Fa-f]+):\s+(\S.*)$")
# Prefixes objdump may print ahead of the mnemonic, including encoding pseudo-prefixes ({evex}).
PREFIX = re.compile(r"(?:lock|rep\w*|notrack|bnd|data16|data32|addr16|addr32|[c-gs]s|"
                    r"rex(?:\.[WRXB]+)?|rex64|\{[a-z0-9]+\})$")


def parse_instruction(text):
    """Splits 'prefixes mnemonic operands # annotation' into (mnemonic, operands)."""
    tokens = re.split(r"#|\s<", text, 1)[0].split()
    while tokens and PREFIX.match(tokens[0]):
        tokens.pop(0)
    if not tokens:
        return None, ""
    return tokens[0], "".join(tokens[1:])


def is_offence(mnemonic, operands):
    return (mnemonic in ALIGNED_MOVES and WIDE_REGISTER.search(operands) is not None and
            STACK_OPERAND.search(operands) is not None)


def disassemble(objdump, path):
    command = [objdump, "-d", "--no-show-raw-insn", "-M", "att", "-C", path]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        raise RuntimeError("{} failed on {}:\n{}".format(objdump, path, result.stderr))
    return result.stdout


def check_object(objdump, path):
    """Returns (instruction count, offences) for one object."""
    section, function = "?", "?"
    sections, count = 0, 0
    offences = []
    for line in disassemble(objdump, path).splitlines():
        section_header = SECTION_LINE.match(line)
        if section_header:
            section, function = section_header.group(1), "?"
            sections += 1
            continue
        function_header = FUNCTION_LINE.match(line)
        if function_header:
            function = function_header.group(1)
            continue
        match = INSTRUCTION_LINE.match(line)
        if not match or section == "?":
            continue
        address, text = match.groups()
        mnemonic, operands = parse_instruction(text)
        if mnemonic is None:
            continue
        count += 1
        if is_offence(mnemonic, operands):
            offences.append("{} {}+0x{} in {}: {}".format(path, section, address, function,
                                                          " ".join(text.split())))
    if sections and not count:
        raise RuntimeError("no instruction recognised in the disassembly of " + path)
    return count, offences


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--objdump", required=True)
    parser.add_argument("objects", nargs="+", metavar="OBJ")
    args = parser.parse_args(argv)
    paths = [path for argument in args.objects for path in argument.split(";") if path]
    if not paths:
        parser.error("no objects")
    instruction_count = 0
    offences = []
    for path in paths:
        try:
            count, found = check_object(args.objdump, path)
        except (OSError, RuntimeError) as error:
            print("error: {}".format(error), file=sys.stderr)
            return 2
        instruction_count += count
        offences += found
    for offence in offences:
        print(offence)
    if offences:
        print("{} aligned 256/512-bit stack move(s) in {} object(s)".format(len(offences),
                                                                          len(paths)))
        return 1
    print("{} instruction(s) in {} object(s): no aligned 256/512-bit stack move".format(
        instruction_count, len(paths)))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
