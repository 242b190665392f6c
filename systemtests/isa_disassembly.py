#!/usr/bin/env python3
"""Proves that the instruction tests execute the instructions that they name.

Usage: isa_disassembly.py OBJDUMP BINARY

Disassembles the library or the static program and looks in each routine for its instructions: each at
least as often as the routine executes it, MMX on MMX registers, AVX on 256-bit ones. What packed
arithmetic is compared with must hold none. Exit status 0 when all is as it should be, else 1.
"""

import collections
import re
import subprocess
import sys

# Routine: its instructions, each with how often at least. "a|b" is either of two mnemonics; what
# follows a blank is a pattern that the operands must match.
ROUTINES = {
    "mmxDotProduct": {"movq %mm": 6, "pmaddwd %mm": 3, "paddd %mm": 3, "psrlq %mm": 1,
                      "movd %mm": 1, "emms": 1},
    "sseDotProduct": {"mulps": 1, "addps": 3},
    "sse2ComplexProduct": {"unpcklpd|movlhps": 2, "unpckhpd|movhlps": 2, "shufpd": 1, "mulpd": 2,
                           "subpd": 1, "addpd": 1},
    "sse3ComplexProduct": {"movddup": 2, "mulpd": 2, "addsubpd": 1, "shufpd": 1},
    "ssse3AbsoluteValues": {"pabsb": 1, "pabsw": 1, "pabsd": 1},
    "ssse3Arithmetic": {"phaddw": 1, "phsubw": 1, "phaddd": 1, "phsubd": 1, "pmulhrsw": 1},
    "ssse3DotProduct": {"pmaddubsw": 1},
    "sse41Blend": {"pblendw": 1, "blendpd": 1},
    "sse41MinMax": {"pmaxsb": 1, "pminsb": 1, "pmaxsd": 1, "pminsd": 1, "pmaxuw": 1, "pminuw": 1,
                    "pmaxud": 1, "pminud": 1},
    "sse41Insert": {"pinsrb": 1, "pinsrd": 1},
    "sse41Extract": {"pextrb": 2, "pextrd": 2},
    "sse41BitwiseComparison": {"ptest": 6},
    "sse41DotProduct": {"dpps": 1},
    "sse41Arithmetic": {"mpsadbw": 1, "pmuldq": 1, "pmulld": 1},
    "sse41BitConversion": {"pmovsxbw": 1, "pmovzxbw": 1, "pmovsxbd": 1, "pmovzxbd": 1,
                           "pmovsxwd": 1, "pmovzxwd": 1, "packusdw": 1},
    "sse41BitCompare": {"pcmpeqq": 1},
    # Ten comparisons of explicit and eleven of implicit length; a comparison that only reads a flag
    # may be either instruction of its family.
    "sse42StringCompare": {"pcmpestri": 1, "pcmpestrm": 1, "pcmpestri|pcmpestrm": 10,
                           "pcmpistri": 1, "pcmpistrm": 1, "pcmpistri|pcmpistrm": 11},
    "sse42PopulationCount": {"popcnt %e": 1, "popcnt %r": 1},
    "sse42Crc": {"crc32b? %(?:[a-d]l|[sd]il|r[0-9]+b),": 1,
                 "crc32w? %(?:[a-d]x|[sd]i|r[0-9]+w),": 1,
                 "crc32l? %(?:e..|r[0-9]+d),": 1,
                 "crc32q? %(?:r[a-z].|r[0-9]+),": 1},
    "scalarDotProduct": {"mulss": 1, "addss": 1},
    "scalarComplexProduct": {"mulsd": 4, "subsd": 1, "addsd": 1},
    "scalarSad": {"sub": 1},
    "referenceKernel": {"mulsd": 2, "addsd": 2},
    "avxKernel": {"vmov[au]p[ds] %ymm": 3, "vperm2f128 %ymm": 1, "vpermilpd %ymm": 1,
                  "vmulpd %ymm": 2, "vaddpd %ymm": 2},
    "aesDecrypt": {"aesdec": 1},
    "aesDecryptLast": {"aesdeclast": 1},
    "aesEncrypt": {"aesenc": 1},
    "aesEncryptLast": {"aesenclast": 1},
    "aesInverseMixColumns": {"aesimc": 1},
    "aesKeyAssist": {"aeskeygenassist": 1},
    "carrylessHighProduct": {"pclmulhqhqdq": 1},
    "carrylessLowProduct": {"pclmullqlqdq": 1},
}

# What a routine must not hold: mnemonic and operands against a pattern.
PACKED = r"^v|^(mul|add|sub|hadd|movddup|unpckl|unpckh|shuf)\w*p[sd]\b"
FORBIDDEN = {
    "mmxDotProduct": r"%[xy]mm",
    "scalarDotProduct": PACKED,
    "scalarComplexProduct": PACKED,
    "scalarSad": r"%[xy]?mm",
    "referenceKernel": PACKED,
}


def disassemble(objdump, binary):
    """Instructions, "mnemonic operands", of each function of the library's namespace."""
    process = subprocess.Popen([objdump, "-d", "-C", "--no-show-raw-insn", binary],
                               stdout=subprocess.PIPE, text=True)
    functions = collections.defaultdict(list)
    name = None
    for line in process.stdout:
        header = re.match(r"^[0-9a-f]+ <(.*)>:$", line)
        if header:
            # A part that the compiler moved away from its function has the function's name, too.
            routine = re.match(r"^vorn::(\w+)\(", header.group(1))
            name = routine.group(1) if routine else None
        elif name is not None:
            instruction = re.match(r"^\s*[0-9a-f]+:\s+(\S+)\s*([^#<]*)", line)
            if instruction:
                functions[name].append(" ".join(instruction.groups()))
    if process.wait() != 0:
        sys.exit(f"{objdump} failed on {binary}")
    return functions


def count(demand, instructions):
    mnemonic, _, operands = demand.partition(" ")
    pattern = re.compile(rf"^(?:{mnemonic}) .*(?:{operands})")
    return sum(bool(pattern.match(instruction)) for instruction in instructions)


def faults_of(routine, instructions):
    if not instructions:
        return ["is not in the binary"]
    faults = [f"has {count(demand, instructions)} of {least}: {demand}"
              for demand, least in ROUTINES[routine].items()
              if count(demand, instructions) < least]
    forbidden = FORBIDDEN.get(routine)
    if forbidden:
        faults += [f"must not have: {instruction}" for instruction in instructions
                   if re.search(forbidden, instruction)]
    return faults


def main():
    objdump, binary = sys.argv[1:]
    functions = disassemble(objdump, binary)
    faults = [f"{binary}: {routine} {fault}" for routine in ROUTINES
              for fault in faults_of(routine, functions.get(routine, []))]
    print("\n".join(faults + [f"{binary}: {len(ROUTINES)} routines, {len(faults)} faults"]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
