#!/usr/bin/env python3
"""Runs the level build checks on tiny hand-written objects with known verdicts.

A parser that stops recognising objdump or nm output would otherwise pass every real object.

Usage: check_scripts_test.py --cc CC --nm NM --objdump OBJDUMP [unittest arguments]
"""

import argparse
import collections
import os
import re
import subprocess
import sys
import tempfile
import unittest

TOOLS_DIR = os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, os.pardir, "tools")
SYMBOL_CHECK = os.path.join(TOOLS_DIR, "check_level_symbols.py")
INSTRUCTION_CHECK = os.path.join(TOOLS_DIR, "check_level_instructions.py")

PASS, FAIL = 0, 1

# (group, instruction, verdict)
INSTRUCTION_CASES = (
    ("sse2", "addps %xmm1,%xmm0", PASS),
    ("sse2", "pextrw $1,%xmm0,%eax", PASS),
    ("sse2", "vaddps %ymm0,%ymm1,%ymm2", FAIL),
    ("sse2", "vaddps %xmm0,%xmm1,%xmm2", FAIL),  # VEX with xmm only is still AVX
    ("sse2", "haddps %xmm1,%xmm0", FAIL),
    ("sse2", "fisttpl (%rdi)", FAIL),
    ("sse2", "pshufb %xmm1,%xmm0", FAIL),
    ("sse2", "popcnt %eax,%ecx", FAIL),
    ("sse2", "popcntq 8(%rdi),%rcx", FAIL),
    ("sse2", "aesenc %xmm1,%xmm0", FAIL),
    ("baseline", "mulps %xmm1,%xmm0", PASS),
    ("baseline", "movddup %xmm1,%xmm0", FAIL),
    ("baseline", "andn %eax,%ecx,%edx", FAIL),
    ("ssse3", "pshufb %xmm1,%xmm0", PASS),
    ("ssse3", "movddup %xmm1,%xmm0", PASS),
    ("ssse3", "pmulld %xmm1,%xmm0", FAIL),
    ("ssse3", "pextrw $1,%xmm0,(%rdi)", FAIL),  # the memory form came with SSE4.1
    ("ssse3", "crc32b %al,%ecx", FAIL),
    ("sse42", "pmulld %xmm1,%xmm0", PASS),
    ("sse42", "crc32l (%rdi),%ecx", PASS),
    ("sse42", "popcnt %eax,%ecx", PASS),
    ("sse42", "vzeroupper", FAIL),
    ("avx", "vzeroupper", PASS),
    ("avx", "vaddps %ymm0,%ymm1,%ymm2", PASS),
    ("avx", "vptest %ymm0,%ymm1", PASS),
    ("avx", "vbroadcastss (%rdi),%ymm1", PASS),
    ("avx", "vbroadcastss %xmm0,%ymm1", FAIL),
    ("avx", "vpaddd %ymm0,%ymm1,%ymm2", FAIL),
    ("avx", "vpaddd %xmm0,%xmm1,%xmm2", PASS),
    ("avx", "vmovntdqa (%rdi),%xmm0", PASS),
    ("avx", "vmovntdqa (%rdi),%ymm0", FAIL),
    ("avx", "vfmadd231ps %ymm0,%ymm1,%ymm2", FAIL),
    ("avx", "vpbroadcastd %xmm0,%xmm1", FAIL),
    ("avx", "vcvtph2ps %xmm0,%ymm1", FAIL),
    ("avx", "tzcnt %eax,%ecx", FAIL),
    ("avx", "movbe (%rdi),%eax", FAIL),
    ("avx", "shlx %eax,%ecx,%edx", FAIL),
    ("avx2", "vpaddd %ymm0,%ymm1,%ymm2", PASS),
    ("avx2", "vfmadd231ps %ymm0,%ymm1,%ymm2", PASS),
    ("avx2", "vpermq $0x4e,%ymm1,%ymm3", PASS),
    ("avx2", "lzcnt (%rdi),%rcx", PASS),
    ("avx2", "vpbroadcastd %xmm0,%ymm1", PASS),
    ("avx2", "vpbroadcastd %eax,%ymm1", FAIL),
    ("avx2", "vaddps %zmm0,%zmm1,%zmm2", FAIL),
    ("avx2", "vpternlogd $0xff,%ymm0,%ymm1,%ymm2", FAIL),
    ("avx2", "vpaddd %xmm17,%xmm1,%xmm2", FAIL),
    ("avx2", "vpermq %ymm1,%ymm2,%ymm3", FAIL),
    ("avx2", "kmovw %k1,%eax", FAIL),
    ("avx2", "vpcmpeqd %ymm1,%ymm2,%k1", FAIL),
    ("avx2", "vaddps (%rax){1to8},%ymm1,%ymm2", FAIL),
    ("avx512", "vaddps %zmm0,%zmm1,%zmm2{%k1}{z}", PASS),
    ("avx512", "vpternlogd $0xff,%ymm0,%ymm1,%ymm2", PASS),
    ("avx512", "vaddps (%rax){1to16},%zmm1,%zmm2", PASS),
    ("avx512", "aesenc %xmm1,%xmm0", FAIL),
)

# (group, assembly, verdict)
SYMBOL_CASES = (
    ("sse2", ".globl _ZN3zal6engine4sse23FooEv\n_ZN3zal6engine4sse23FooEv: ret", PASS),
    ("sse2", ".globl foo\nfoo: ret", FAIL),
    ("sse2", "foo: ret", PASS),  # local
    ("sse2", "call foo\nret", PASS),  # an undefined reference
    ("sse2", ".weak _ZN3zal6engine4avx24TestEv\n_ZN3zal6engine4avx24TestEv: ret", FAIL),
    ("avx2", ".weak _ZN3zal6engine4avx24TestEv\n_ZN3zal6engine4avx24TestEv: ret", PASS),
    ("avx", ".weak _ZN3zal6engine4avx24TestEv\n_ZN3zal6engine4avx24TestEv: ret", FAIL),
    ("avx2", ".globl _ZNK3zal6engine4avx21X3GetEv\n_ZNK3zal6engine4avx21X3GetEv: ret", PASS),
    ("avx2", ".weak _ZGVZN3zal6engine4avx21FEvE1s\n_ZGVZN3zal6engine4avx21FEvE1s: ret", PASS),
    ("avx2", ".weak _ZTVN3zal6engine4avx21XE\n_ZTVN3zal6engine4avx21XE: ret", PASS),
    ("avx2", ".weak _ZTVN5other1XE\n_ZTVN5other1XE: ret", FAIL),
    ("avx2", ".weak _ZSt4swapIiEvRT_S1_\n_ZSt4swapIiEvRT_S1_: ret", FAIL),
    ("avx2", ".weak __clang_call_terminate\n__clang_call_terminate: ret", PASS),
    ("avx2", ".weak DW.ref.__gxx_personality_v0\nDW.ref.__gxx_personality_v0: ret", PASS),
    ("baseline", ".globl _ZN3zal6engine6avx5123FooEv\n_ZN3zal6engine6avx5123FooEv: ret", FAIL),
    ("baseline", ".globl _ZN3zal6engine9DetectCpuEv\n_ZN3zal6engine9DetectCpuEv: ret", PASS),
)


class CheckScriptsTest(unittest.TestCase):
    tools = None

    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.object_count = 0

    def assemble(self, body):
        """Assembles body after a local label, probe, which adds no symbol to check."""
        return self.assemble_functions({"probe": body})

    def assemble_functions(self, bodies):
        self.object_count += 1
        path = os.path.join(self.directory.name, "probe{}.o".format(self.object_count))
        source = ".text\n" + "".join(
            "{}:\n{}\n".format(label, body) for label, body in bodies.items())
        subprocess.run([self.tools.cc, "-c", "-x", "assembler", "-", "-o", path], input=source,
                       text=True, check=True)
        return path

    def run_check(self, script, tool_option, tool, *arguments):
        result = subprocess.run([sys.executable, script, tool_option, tool] + list(arguments),
                                capture_output=True, text=True)
        self.assertIn(result.returncode, (PASS, FAIL), result.stderr)
        return result.returncode, result.stdout

    def check_instructions(self, *arguments):
        return self.run_check(INSTRUCTION_CHECK, "--objdump", self.tools.objdump, *arguments)

    def check_symbols(self, *arguments):
        return self.run_check(SYMBOL_CHECK, "--nm", self.tools.nm, *arguments)

    def test_instruction_verdicts(self):
        # One object per group, one function per case; the report names the failing functions.
        cases_by_group = collections.defaultdict(list)
        for group, instruction, verdict in INSTRUCTION_CASES:
            cases_by_group[group].append((instruction, verdict))
        for group, cases in cases_by_group.items():
            labels = ["case{}".format(index) for index in range(len(cases))]
            path = self.assemble_functions(
                {label: instruction for label, (instruction, _) in zip(labels, cases)})
            status, report = self.check_instructions("--level", group, path)
            reported = set(re.findall(r" in (case\d+): ", report))
            self.assertEqual(status, FAIL if reported else PASS, report)
            for label, (instruction, verdict) in zip(labels, cases):
                with self.subTest(group=group, instruction=instruction):
                    self.assertEqual(FAIL if label in reported else PASS, verdict, report)

    def test_runtime_checked_functions_may_use_their_extension(self):
        cases = (
            ("avx512", "ConvertStepsByBytePermutes", "vpermb %zmm0,%zmm1,%zmm2", PASS),
            ("avx512", "Convert", "vpermb %zmm0,%zmm1,%zmm2", FAIL),
            ("avx512", "ConvertStepsByBytePermutes", "vpdpbusd %zmm0,%zmm1,%zmm2", FAIL),
            ("avx2", "ConvertStepsByBytePermutes", "vpermb %zmm0,%zmm1,%zmm2", FAIL),
        )
        for group, function, instruction, verdict in cases:
            with self.subTest(group=group, function=function, instruction=instruction):
                path = self.assemble_functions({function: instruction})
                status, report = self.check_instructions("--level", group, path)
                self.assertEqual(status, verdict, report)

    def test_offence_names_object_function_and_address(self):
        path = self.assemble("nop\nhaddpd %xmm1,%xmm0")
        status, report = self.check_instructions("--level", "sse2", path)
        self.assertEqual(status, FAIL)
        self.assertIn("{} .text+0x1 in probe: haddpd".format(path), report)

    def test_symbol_verdicts(self):
        for group, body, verdict in SYMBOL_CASES:
            with self.subTest(group=group, assembly=body):
                status, report = self.check_symbols("--level", group, self.assemble(body))
                self.assertEqual(status, verdict, report)

    def test_undecodable_bytes_fail(self):
        # An extension newer than objdump must not slip through as unknown bytes.
        path = self.assemble(".byte 0x0f, 0x04")
        self.assertEqual(self.check_instructions("--level", "avx512", path)[0], FAIL)

    def test_unrecognised_disassembly_is_an_error(self):
        fake_objdump = os.path.join(self.directory.name, "fake_objdump")
        with open(fake_objdump, "w") as script:
            script.write("#!/bin/sh\necho 'Disassembly of section .text:'\necho 'no instruction'\n")
        os.chmod(fake_objdump, 0o755)
        result = subprocess.run([sys.executable, INSTRUCTION_CHECK, "--objdump", fake_objdump,
                                 "--level", "sse2", self.assemble("nop")], capture_output=True)
        self.assertEqual(result.returncode, 2)

    def test_annotations_are_not_operands(self):
        # objdump prints the target's name after a call; a demangled lambda name holds braces,
        # which in an operand would mean EVEX masking.
        path = self.assemble('call "lambda{1}#2"\n"lambda{1}#2": ret')
        self.assertEqual(self.check_instructions("--level", "sse2", path)[0], PASS)

    def test_elf_symbol_kinds(self):
        # COFF has neither unique globals nor a weak mark on COMDAT definitions.
        cases = (
            (".globl __clang_call_terminate\n__clang_call_terminate: ret", FAIL),
            (".globl _ZZN5other1FEvE1s\n.type _ZZN5other1FEvE1s, @gnu_unique_object\n"
             "_ZZN5other1FEvE1s: .long 0", FAIL),
        )
        with open(self.assemble("nop"), "rb") as stream:
            if stream.read(4) != b"\x7fELF":
                self.skipTest("not an ELF toolchain")
        for body, verdict in cases:
            with self.subTest(assembly=body):
                status, report = self.check_symbols("--level", "avx2", self.assemble(body))
                self.assertEqual(status, verdict, report)

    def test_evex_pseudo_prefix(self):
        path = self.assemble("{evex} vaddps %xmm0,%xmm1,%xmm2")
        disassembly = subprocess.run([self.tools.objdump, "-d", path], capture_output=True,
                                     text=True, check=True).stdout
        if "{evex}" not in disassembly:
            self.skipTest("this objdump does not mark EVEX encodings")
        self.assertEqual(self.check_instructions("--level", "avx2", path)[0], FAIL)

    def test_every_object_of_a_cmake_list_is_checked(self):
        # CMake passes $<TARGET_OBJECTS> to a test as one ";"-separated argument.
        clean = self.assemble("addps %xmm1,%xmm0")
        vex = self.assemble("vaddps %xmm0,%xmm1,%xmm2")
        status, report = self.check_instructions("--level", "sse2", clean + ";" + vex)
        self.assertEqual(status, FAIL)
        self.assertIn(vex, report)
        leak = self.assemble(".globl foo\nfoo: ret")
        status, report = self.check_symbols("--level", "sse2", clean + ";" + leak)
        self.assertEqual(status, FAIL)
        self.assertIn(leak, report)

    def test_each_group_is_held_to_its_own_level(self):
        avx2 = self.assemble("vpaddd %ymm0,%ymm1,%ymm2")
        sse2 = self.assemble("paddd %xmm1,%xmm0")
        status, _ = self.check_instructions("--level", "avx2", avx2, "--level", "sse2", sse2)
        self.assertEqual(status, PASS)
        status, report = self.check_instructions("--level", "sse2", sse2, "--level", "avx", avx2)
        self.assertEqual(status, FAIL)
        self.assertIn("[avx] " + avx2, report)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--cc", default="cc")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--objdump", default="objdump")
    CheckScriptsTest.tools, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0]] + rest)


if __name__ == "__main__":
    main()
