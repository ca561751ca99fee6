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
# A memory operand based on the stack pointer, disp(%rsp) or (%rsp,%rax,8) ..., or on %rbp in a
# function that makes it the frame pointer; elsewhere %rbp is an ordinary register.
STACK_OPERAND = re.compile(r"\(%[re]sp[,)]")
FRAME_OPERAND = re.compile(r"\(%[re]bp[,)]")
# mov %rsp,%rbp or lea disp(%rsp),%rbp; not a load of %rbp from a stack slot.
FRAME_POINTER_SETUP = {"mov": re.compile(r"^%rsp,%rbp$"), "lea": re.compile(r"\(%rsp\),%rbp$")}


def is_offence(mnemonic, operands, has_frame_pointer):
    on_stack = STACK_OPERAND.search(operands) is not None or (
        has_frame_pointer and FRAME_OPERAND.search(operands) is not None)
    return mnemonic in ALIGNED_MOVES and WIDE_REGISTER.search(operands) is not None and on_stack


def check_object(objdump, path):
    """Returns (instruction count, offences) for one object."""
    count = 0
    offences = []
    instructions = list(disassembly.instructions(objdump, path))
    framed = {i.function for i in instructions
              if i.mnemonic in FRAME_POINTER_SETUP
              and FRAME_POINTER_SETUP[i.mnemonic].search(i.operands)}
    for i in instructions:
        count += 1
        if is_offence(i.mnemonic, i.operands, i.function in framed):
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
