#!/usr/bin/env python3
"""Checks that built files are hardened.

Usage: check_hardening.py OBJDUMP FILE...

ELF files: loaded at any address, whole relocation table read-only before the program starts, no
executable stack, no segment that is writable and executable, our own functions guarded by stack
protectors and calling the C library's checked forms. Windows files: any address of 64 bits, data that
does not execute. A stripped file is judged by what it imports instead of by its code.
"""

import re
import subprocess
import sys

OWN_FUNCTION = re.compile(r"^[0-9a-f]+ <(main|_Z3run|_ZNK?4vorn)")


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def elf_faults(path, objdump):
    faults = []
    header = output("readelf", "-h", path)
    segments = output("readelf", "-lW", path)
    dynamic = output("readelf", "-dW", path)
    if not re.search(r"Type:\s+DYN\b", header):
        faults.append("is loaded at a fixed address")
    if "GNU_RELRO" not in segments:
        faults.append("has no read-only relocations (RELRO)")
    if not re.search(r"\((FLAGS|FLAGS_1)\).*\bNOW\b", dynamic):
        faults.append("binds lazily: its relocations stay writable")
    if "TEXTREL" in dynamic:
        faults.append("relocates its code")
    stack = re.search(r"^\s*GNU_STACK(?:\s+0x\S+){5}\s+(\S+)", segments, re.M)
    if stack is None or "E" in stack.group(1):
        faults.append("has an executable stack")
    if re.search(r"^\s*LOAD(?:\s+0x\S+){5}\s+RWE", segments, re.M):
        faults.append("has a segment that is writable and executable")
    return faults + checks_of_elf(path, objdump)


def checks_of_elf(path, objdump):
    """What the compiler put into the code: the names that our own functions call, or imports."""
    sections = output("readelf", "-SW", path)
    imports = set(re.findall(r" U (\w+)", output("nm", "-D", path)))
    if " .symtab " not in sections and not imports:
        return []  # a stripped static program tells nothing of its code
    if " .symtab " in sections:
        called = own_calls(path, objdump)
    else:
        called = imports
    faults = []
    if "__stack_chk_fail" not in called:
        faults.append("has no stack protectors")
    if "snprintf" in called:
        faults.append("calls an unchecked snprintf")
    return faults


def own_calls(path, objdump):
    called = set()
    own = False
    process = subprocess.Popen([objdump, "-d", "--no-show-raw-insn", path], stdout=subprocess.PIPE,
                               text=True)
    for line in process.stdout:
        if line.endswith(">:\n"):
            own = OWN_FUNCTION.match(line) is not None
        elif own and "call" in line:
            name = re.search(r"call\s+\S+ <(?:__GI_|___)?(\w+)", line)
            if name:
                called.add(name.group(1))
    if process.wait() != 0:
        raise RuntimeError(f"{objdump} cannot disassemble {path}")
    return called


def pe_faults(path, objdump):
    header = output(objdump, "-p", path)
    faults = [f"lacks {flag}" for flag in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT")
              if not re.search(rf"^\s+{flag}$", header, re.M)]
    if "relocations stripped" in header:
        faults.append("cannot be moved: its relocations are stripped")
    return faults


def main():
    objdump, *paths = sys.argv[1:]
    faults = []
    for path in paths:
        find = pe_faults if path.lower().endswith((".exe", ".dll")) else elf_faults
        faults += [f"{path} {fault}" for fault in find(path, objdump)]
    print("\n".join(faults) or f"{len(paths)} files are hardened")
    return 1 if faults or not paths else 0


if __name__ == "__main__":
    sys.exit(main())
