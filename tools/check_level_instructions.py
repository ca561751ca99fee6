#!/usr/bin/env python3
"""Fails when an object holds an instruction beyond the level it is built for.

Each level object may use only what its level's processors have; baseline objects (engine core,
portable variants, exported wrappers) run before any selection and may use only SSE2. One
instruction too many is an illegal-instruction crash on an older processor.

Usage: check_level_instructions.py --objdump OBJDUMP --level LEVEL OBJ... [--level LEVEL OBJ...]...
LEVEL is a level token or "baseline". An OBJ argument may hold several paths separated by ";"
(the form CMake gives a $<TARGET_OBJECTS> list in a test command).
Exit status: 0 clean, 1 offending instructions, 2 usage or tool error.
"""

import argparse
import fnmatch
import re
import sys

import disassembly

LEVELS = ("sse2", "ssse3", "sse42", "avx", "avx2", "avx512")
BEYOND = "beyond every level"
GROUP_LEVELS = dict({level: level for level in LEVELS}, baseline="sse2")
RANK = dict({level: index for index, level in enumerate(LEVELS)}, **{BEYOND: len(LEVELS)})

# An instruction of extension X is allowed at levels >= level(X); one that belongs to several
# extensions (say an AVX2 pattern refined by an AVX-512 one) needs the highest of them.
# Mnemonics are shell patterns over the whole AT&T mnemonic. "sized" ones also match with an
# AT&T operand-size suffix (popcntl, crc32b, movbel, fisttpll).
EXTENSIONS = (
    ("SSE3", "ssse3", dict(
        mnemonics="addsubps addsubpd haddps haddpd hsubps hsubpd lddqu movddup movshdup movsldup"
                  " monitor mwait",
        sized="fisttp")),
    ("SSSE3", "ssse3", dict(
        mnemonics="pshufb palignr phaddw phaddd phaddsw phsubw phsubd phsubsw pabsb pabsw pabsd"
                  " pmaddubsw pmulhrsw psignb psignw psignd")),
    ("SSE4.1", "sse42", dict(
        mnemonics="pmulld pmuldq pminsb pminsd pminuw pminud pmaxsb pmaxsd pmaxuw pmaxud ptest"
                  " blendps blendpd blendvps blendvpd pblendw pblendvb roundps roundpd roundss"
                  " roundsd dpps dppd insertps extractps pextrb pextrd pextrq pinsrb pinsrd"
                  " pinsrq pmovsx* pmovzx* packusdw pcmpeqq phminposuw mpsadbw movntdqa")),
    ("SSE4.2", "sse42", dict(
        mnemonics="pcmpgtq pcmpestri pcmpestrm pcmpistri pcmpistrm",
        sized="crc32")),
    ("POPCNT", "sse42", dict(sized="popcnt")),
    # AVX itself is every VEX instruction, hence every ymm operand: every v mnemonic but
    # SYSTEM_V_MNEMONICS.
    ("AVX2", "avx2", dict(
        mnemonics="vpbroadcast[bwdq] vbroadcasti128 vperm2i128 vinserti128 vextracti128 vpermd"
                  " vpermq vpermps vpermpd vpgather* vgather* vpmaskmov[dq] vpsllv* vpsrlv*"
                  " vpsrav* vpblendd")),
    ("FMA", "avx2", dict(
        mnemonics=" ".join(family + order + "*"
                           for family in ("vfmadd", "vfmsub", "vfnmadd", "vfnmsub", "vfmaddsub",
                                          "vfmsubadd")
                           for order in ("132", "213", "231")))),
    ("BMI1", "avx2", dict(sized="andn bextr blsi blsmsk blsr tzcnt")),
    ("BMI2", "avx2", dict(sized="bzhi mulx pdep pext rorx sarx shlx shrx")),
    ("LZCNT", "avx2", dict(sized="lzcnt")),
    ("MOVBE", "avx2", dict(sized="movbe")),
    ("F16C", "avx2", dict(mnemonics="vcvtph2ps vcvtps2ph")),
    # EVEX-only mnemonics of AVX-512 F, CD, BW, DQ and VL. Forms shared with VEX are told apart
    # by their registers and decorations (OPERAND_RULES).
    ("AVX-512", "avx512", dict(
        mnemonics="vpternlog[dq] vpermt2* vpermi2* vcompress* vpcompress[dq] vexpand*"
                  " vpexpand[dq] vpmovm2* vpmov[bwdq]2m vpmov[dqw][bdw] vpmovs[dqw][bdw]"
                  " vpmovus[dqw][bdw] vrndscale* vgetexp* vgetmant* vscalef* vfixupimm* vrange*"
                  " vreduce* vfpclass* vrcp14* vrsqrt14* vpconflict* vplzcnt* vdbpsadbw valign[dq]"
                  " vpro[lr][dq] vpro[lr]v[dq] vpsraq vpsravq vpsravw vpsllvw vpsrlvw vpabsq"
                  " vpmaxsq vpmaxuq vpminsq vpminuq vpmullq vblendm* vpblendm* vpbroadcastm*"
                  " vpcmp[bwdq] vpcmpu[bwdq] vptestm* vptestnm* vpand[dq] vpandn[dq] vpor[dq]"
                  " vpxor[dq] vmovdqu8 vmovdqu16 vmovdqu32 vmovdqu64 vmovdqa32 vmovdqa64"
                  " vshuf[fi]32x4 vshuf[fi]64x2 vinsert[fi]32x* vinsert[fi]64x* vextract[fi]32x*"
                  " vextract[fi]64x* vbroadcast[fi]32x* vbroadcast[fi]64x* vpermw vcvt*udq*"
                  " vcvt*qq* vcvt*usi* vscatter* vpscatter* kmov[bwdq] kand[bwdq] kandn[bwdq]"
                  " kor[bwdq] kxor[bwdq] kxnor[bwdq] knot[bwdq] kortest[bwdq] ktest[bwdq]"
                  " kshiftl[bwdq] kshiftr[bwdq] kadd[bwdq] kunpck*")),
    # Extensions no level requires; a -march=native added to the whole build can let the
    # compiler use them.
    ("AES, VAES", BEYOND, dict(mnemonics="aes* vaes*")),
    ("PCLMULQDQ, VPCLMULQDQ", BEYOND, dict(mnemonics="pclmul* vpclmul*")),
    ("SHA", BEYOND, dict(mnemonics="sha1* sha256* sha512*")),
    ("GFNI", BEYOND, dict(mnemonics="gf2p8* vgf2p8*")),
    ("ADX", BEYOND, dict(sized="adcx adox")),
    ("RDRAND, RDSEED", BEYOND, dict(sized="rdrand rdseed")),
    ("PRFCHW", BEYOND, dict(mnemonics="prefetchw*")),
    ("AVX-512 VNNI, AVX-VNNI", BEYOND, dict(mnemonics="vpdpbusd* vpdpwssd*")),
    ("AVX-512 VBMI, VBMI2", BEYOND, dict(
        mnemonics="vpermb vpermt2b vpermi2b vpmultishiftqb vpcompress[bw] vpexpand[bw] vpshld*"
                  " vpshrd*")),
    ("AVX-512 IFMA, BITALG, VPOPCNTDQ, BF16", BEYOND, dict(
        mnemonics="vpmadd52* vpopcnt* vpshufbitqmb vcvtne2ps2bf16 vcvtneps2bf16 vdpbf16ps")),
    ("AVX-512 ER, PF, 4FMAPS, 4VNNIW", BEYOND, dict(
        mnemonics="vexp2* vrcp28* vrsqrt28* vgatherpf* vscatterpf* v4f* vp4dpwssd*")),
    ("FMA4", BEYOND, dict(
        mnemonics="vfmadd[ps][sd] vfmsub[ps][sd] vfnmadd[ps][sd] vfnmsub[ps][sd] vfmaddsubp[sd]"
                  " vfmsubaddp[sd]")),
    ("XOP", BEYOND, dict(
        mnemonics="vprot[bwdq] vpperm vpcmov vpcom[!p]* vphadd[bwdu][bwdq]* vphsub[bwd][wdq]"
                  " vpmacs* vpmadcs* vfrcz* vpsha[bwdq] vpshl[bwdq]")),
    ("SSE4a, TBM", BEYOND, dict(
        mnemonics="extrq insertq movntss movntsd",
        sized="blcfill blci blcic blcmsk blcs blsfill blsic t1mskc tzmsk")),
    ("3DNow!", BEYOND, dict(mnemonics="femms pavgusb pf* pi2f[dw] pswapd pmulhrw prefetch")),
    ("AMX", BEYOND, dict(mnemonics="ldtilecfg sttilecfg tile* tdp*")),
)

# Functions that a kernel calls only where the feature word in force has an extension beyond its
# level: (shell pattern on the demangled function name, the extension allowed there).
RUNTIME_CHECKED = (
    ("*ByBytePermutes*", "AVX-512 VBMI, VBMI2"),
)

# Registers and decorations that need a level whatever the mnemonic.
OPERAND_RULES = (
    (r"%zmm\d", "avx512", "512-bit register"),
    (r"%k[0-7]\b", "avx512", "mask register"),
    (r"%[xyz]mm(?:1[6-9]|2\d|3[01])\b", "avx512", "vector register 16-31"),
    (r"\{", "avx512", "EVEX masking, broadcast or rounding"),
    (r"%tmm\d", BEYOND, "AMX tile register"),
)

# Every VEX or EVEX instruction has a v mnemonic, except these system instructions.
SYSTEM_V_MNEMONICS = frozenset(
    "verr verw vmcall vmclear vmfunc vmgexit vmlaunch vmload vmmcall vmptrld vmptrst vmread"
    " vmresume vmrun vmsave vmwrite vmxoff vmxon".split())
# 256-bit vp instructions are AVX2 integer operations, except these few in AVX itself.
AVX_256_BIT_VP = frozenset(("vptest", "vpermilps", "vpermilpd", "vperm2f128"))
# Encoding pseudo-prefixes objdump prints ahead of the mnemonic.
PSEUDO_PREFIX_LEVELS = {"{vex}": "avx", "{vex2}": "avx", "{vex3}": "avx", "{evex}": "avx512"}
UNDECODED = re.compile(r"\(bad\)$|<unknown>$|\.(?:byte|short|word|long)$")

SIZE_SUFFIX = "(?:[bwlqs]|ll)?"


def compile_extensions():
    compiled = []
    for name, level, table in EXTENSIONS:
        patterns = [fnmatch.translate(glob) for glob in table.get("mnemonics", "").split()]
        patterns += [re.escape(base) + SIZE_SUFFIX + r"\Z"
                     for base in table.get("sized", "").split()]
        compiled.append((name, level, re.compile("|".join(patterns))))
    return compiled


COMPILED_EXTENSIONS = compile_extensions()
COMPILED_OPERAND_RULES = [(re.compile(pattern), level, what)
                          for pattern, level, what in OPERAND_RULES]


def requirements(pseudo_prefixes, mnemonic, operands):
    """Yields (level, reason) for everything the instruction needs beyond SSE2."""
    if UNDECODED.match(mnemonic):
        yield BEYOND, "undecodable bytes"
        return
    for prefix in pseudo_prefixes:
        if prefix in PSEUDO_PREFIX_LEVELS:
            yield PSEUDO_PREFIX_LEVELS[prefix], prefix + " encoding"
    if mnemonic.startswith("v") and mnemonic not in SYSTEM_V_MNEMONICS:
        yield "avx", "VEX encoding"
    for name, level, pattern in COMPILED_EXTENSIONS:
        if pattern.match(mnemonic):
            yield level, name
    for pattern, level, what in COMPILED_OPERAND_RULES:
        if pattern.search(operands):
            yield level, what
    # Forms whose mnemonic exists at a lower level.
    if "%ymm" in operands and ((mnemonic.startswith("vp") and mnemonic not in AVX_256_BIT_VP) or
                               mnemonic == "vmovntdqa"):
        yield "avx2", "256-bit integer operation"
    if mnemonic in ("vbroadcastss", "vbroadcastsd") and operands.startswith("%xmm"):
        yield "avx2", "broadcast from a register"
    if mnemonic.startswith("vpbroadcast") and re.match(r"%(?!xmm)", operands):
        yield "avx512", "broadcast from a general register"
    if mnemonic in ("vpermq", "vpermpd") and not operands.startswith("$"):
        yield "avx512", "permutation by a register index"
    if mnemonic == "pextrw" and "(" in operands:
        yield "sse42", "SSE4.1 pextrw to memory"


def check_object(objdump, path, group):
    """Returns (instruction count, offences) for one object."""
    allowed = RANK[GROUP_LEVELS[group]]
    count = 0
    offences = []
    for i in disassembly.instructions(objdump, path):
        count += 1
        checked = {extension for pattern, extension in RUNTIME_CHECKED
                   if fnmatch.fnmatchcase(i.function, pattern)}
        needs = [(RANK[level], level, reason)
                 for level, reason in requirements(i.pseudo_prefixes, i.mnemonic, i.operands)
                 if reason not in checked]
        if needs and max(needs)[0] > allowed:
            _, level, reason = max(needs)
            need = "in no level" if level == BEYOND else "needs level " + level
            offences.append("{} {}+0x{} in {}: {}  ({}: {})".format(
                path, i.section, i.address, i.function, " ".join(i.text.split()), reason, need))
    return count, offences


def parse_groups(argv):
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--objdump", required=True)
    parser.add_argument("--level", nargs="+", action="append", required=True,
                        metavar=("LEVEL", "OBJ"))
    args = parser.parse_args(argv)
    groups = []
    for group, *objects in args.level:
        if group not in GROUP_LEVELS:
            parser.error("unknown level {!r}".format(group))
        paths = disassembly.object_paths(objects)
        if not paths:
            parser.error("no objects for level {}".format(group))
        groups.append((group, paths))
    return args.objdump, groups


def main(argv):
    objdump, groups = parse_groups(argv)
    offence_count = 0
    instruction_count = 0
    object_count = 0
    for group, paths in groups:
        for path in paths:
            try:
                count, offences = check_object(objdump, path, group)
            except (OSError, RuntimeError) as error:
                print("error: {}".format(error), file=sys.stderr)
                return 2
            object_count += 1
            instruction_count += count
            offence_count += len(offences)
            for offence in offences:
                print("[{}] {}".format(group, offence))
    if offence_count:
        print("{} offending instruction(s) in {} object(s)".format(offence_count, object_count))
        return 1
    print("{} instruction(s) in {} object(s): none beyond its level".format(
        instruction_count, object_count))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
