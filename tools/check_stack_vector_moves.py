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
import sys

import disassembly

# Every move whose memory operand must be aligned to the vector's width. The legacy SSE forms
# only reach xmm registers; they are listed so that the width alone decides.
ALIGNED_MOVES = frozenset(
    "movaps movapd movdqa movntps movntpd movntdq movntdqa"
    " vmovaps vmovapd vmovdqa vmovdqa32 vmovdqa64 vmovntps vmovntpd vmovntdq vmovntdqa".split())
WIDE_REGISTER = re.compile(r"%[yz]mm\d")
# A memory operand based on the stack or frame pointer: disp(%rsp), (%rbp,%rax,8) ...
STACK_OPERAND = re.compile(r"\(%[re][sb]p[,)]")


def is_offence(mnemonic, operands):
    return (mnemonic in ALIGNED_MOVES and WIDE_REGISTER.search(operands) is not None and
            STACK_OPERAND.search(operands) is not None)


def check_object(objdump, path):
    """Returns (instruction count, offences) for one object."""
    count = 0
    offences = []
    for i in disassembly.instructions(objdump, path):
        count += 1
        if is_offence(i.mnemonic, i.operands):
            offences.append("{} {}+0x{} in {}: {}".format(path, i.section, i.address, i.function,
                                                          " ".join(i.text.split())))
    return count, offences


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--objdump", required=True)
    parser.add_argument("objects", nargs="+", metavar="OBJ")
    args = parser.parse_args(argv)
    paths = disassembly.object_paths(args.objects)
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
