"""Walks objdump's AT&T disassembly of object files, one instruction at a time.

Shared by the build checks that judge instructions: they differ only in what they look for.
"""

import collections
import re
import subprocess

# Prefixes objdump may print ahead of the mnemonic; the braced ones are encoding pseudo-prefixes
# ({vex}, {evex} ...), which are kept for the caller.
PREFIXES = re.compile(r"(?:lock|rep|repe|repz|repne|repnz|notrack|bnd|xacquire|xrelease|data16|"
                      r"data32|addr16|addr32|[c-gs]s|rex(?:\.[WRXB]+)?|rex64|\{[a-z0-9]+\})$")
SECTION_LINE = re.compile(r"^Disassembly of section (.*):\s*$")
FUNCTION_LINE = re.compile(r"^[0-9A-Fa-f]+ <(.*)>:\s*$")
INSTRUCTION_LINE = re.compile(r"^\s*([0-9A-Fa-f]+):\s+(\S.*)$")

Instruction = collections.namedtuple(
    "Instruction", "section function address text pseudo_prefixes mnemonic operands")


def object_paths(arguments):
    """The paths in OBJ arguments, each of which may list several separated by ';' (the form
    CMake gives a $<TARGET_OBJECTS> list in a test command)."""
    return [path for argument in arguments for path in argument.split(";") if path]


def parse_instruction(text):
    """Splits 'prefixes mnemonic operands annotation' into (pseudo-prefixes, mnemonic, operands)."""
    # AT&T operands hold neither '#' nor ' <': objdump's annotations start there.
    tokens = re.split(r"#|\s<", text, 1)[0].split()
    pseudo_prefixes = []
    while tokens and PREFIXES.match(tokens[0]):
        if tokens[0].startswith("{"):
            pseudo_prefixes.append(tokens[0])
        tokens.pop(0)
    if not tokens:  # llvm-objdump prints a lone lock prefix on a line of its own
        return pseudo_prefixes, None, ""
    return pseudo_prefixes, tokens[0], "".join(tokens[1:])


def disassemble(objdump, path):
    command = [objdump, "-d", "--no-show-raw-insn", "-M", "att", "-C", path]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        raise RuntimeError("{} failed on {}:\n{}".format(objdump, path, result.stderr))
    return result.stdout


def instructions(objdump, path):
    """Yields every instruction of an object. Raises RuntimeError when objdump fails, or when the
    object has code sections but no line could be read as an instruction (a parser that silently
    reads nothing would pass every check)."""
    section, function = "?", "?"
    sections, count = 0, 0
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
        pseudo_prefixes, mnemonic, operands = parse_instruction(text)
        if mnemonic is None:
            continue
        count += 1
        yield Instruction(section, function, address, text, pseudo_prefixes, mnemonic, operands)
    if sections and not count:
        raise RuntimeError("no instruction recognised in the disassembly of " + path)
