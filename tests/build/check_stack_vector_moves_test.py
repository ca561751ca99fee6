#!/usr/bin/env python3
"""Runs the stack vector move check on tiny hand-written objects with known verdicts.

Proves both halves of the Windows build's defence: the check finds every aligned 256/512-bit
stack move, and the assembler option the level objects are built with leaves none behind.

Usage: check_stack_vector_moves_test.py --cc CC --objdump OBJDUMP [unittest arguments]
CC is the cross compiler, used as the assembler driver.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import unittest

CHECK = os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, os.pardir, "tools",
                     "check_stack_vector_moves.py")
UNALIGNED_MOVES = "-Wa,-muse-unaligned-vector-move"

PASS, FAIL = 0, 1

# (instruction, verdict): each alone in the function probe, assembled as written.
CASES = (
    ("vmovaps %ymm0,0x20(%rsp)", FAIL),
    ("vmovaps 0x20(%rsp),%ymm1", FAIL),
    ("mov %rsp,%rbp\nvmovapd %ymm2,-0x40(%rbp)", FAIL),
    ("vmovdqa %ymm3,(%rsp)", FAIL),
    ("vmovdqa32 %zmm1,0x40(%rsp)", FAIL),
    ("vmovdqa64 0x80(%rsp,%rax,8),%zmm2", FAIL),
    ("vmovdqa32 %ymm17,0x40(%rsp)", FAIL),
    ("vmovaps %zmm0,0x40(%rsp){%k1}", FAIL),
    ("lea 0x20(%rsp),%rbp\nvmovapd (%rbp),%zmm3{%k2}{z}", FAIL),
    ("vmovntpd %zmm0,-0x40(%rbp)", PASS),  # %rbp as an ordinary register: the caller's buffer
    ("vmovntps %ymm0,0x20(%rsp)", FAIL),  # no unaligned twin: the assembler cannot help
    ("vmovntdqa 0x40(%rsp),%zmm4", FAIL),
    # The Win64 prologue saves xmm6-xmm15 with aligned moves: 16 bytes is the stack's alignment.
    ("movaps %xmm6,0x20(%rsp)", PASS),
    ("vmovaps %xmm7,0x30(%rsp)", PASS),
    ("vmovdqa64 %xmm18,0x10(%rsp)", PASS),
    ("vmovups %ymm0,0x20(%rsp)", PASS),
    ("vmovdqu64 %zmm0,0x40(%rsp)", PASS),
    ("vmovaps %ymm0,(%rdi)", PASS),  # the caller's buffer, aligned by the kernel's own logic
    ("vmovaps %ymm0,%ymm1", PASS),
    ("vmovdqa64 %zmm0,%zmm1", PASS),
)


class CheckStackVectorMovesTest(unittest.TestCase):
    tools = None

    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.object_count = 0

    def assemble(self, body, *flags):
        self.object_count += 1
        path = os.path.join(self.directory.name, "probe{}.o".format(self.object_count))
        source = ".text\nprobe:\n{}\n".format(body)
        subprocess.run([self.tools.cc, "-c", *flags, "-x", "assembler", "-", "-o", path],
                       input=source, text=True, check=True)
        return path

    def check(self, *paths):
        result = subprocess.run([sys.executable, CHECK, "--objdump", self.tools.objdump, *paths],
                                capture_output=True, text=True)
        self.assertIn(result.returncode, (PASS, FAIL), result.stderr)
        return result.returncode, result.stdout

    def test_verdicts(self):
        for instruction, verdict in CASES:
            with self.subTest(instruction=instruction):
                status, report = self.check(self.assemble(instruction))
                self.assertEqual(status, verdict, report)
                if verdict == FAIL:
                    self.assertIn(instruction.splitlines()[-1].split()[0], report)
                    self.assertIn("in probe", report)

    def test_unaligned_assembly_leaves_only_non_temporal_moves(self):
        aligned = [i for i, verdict in CASES if verdict == FAIL and "vmovnt" not in i]
        status, report = self.check(self.assemble("\n".join(aligned), UNALIGNED_MOVES))
        self.assertEqual(status, PASS, report)
        status, _ = self.check(self.assemble("vmovntps %ymm0,0x20(%rsp)", UNALIGNED_MOVES))
        self.assertEqual(status, FAIL)

    def test_every_object_of_a_cmake_list_is_checked(self):
        clean = self.assemble("vmovups %ymm0,0x20(%rsp)")
        spill = self.assemble("nop\nvmovaps %ymm0,0x20(%rsp)")
        status, report = self.check(clean + ";" + spill)
        self.assertEqual(status, FAIL)
        self.assertIn("{} .text+0x1 in probe: vmovaps".format(spill), report)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--cc", required=True)
    parser.add_argument("--objdump", required=True)
    CheckStackVectorMovesTest.tools, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0]] + rest)


if __name__ == "__main__":
    main()
