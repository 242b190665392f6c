#!/usr/bin/env python3
"""Checks that a built library shows its public names and nothing else.

Usage: check_exports.py LIBRARY OBJDUMP [--ring0-by-ordinal]

With --ring0-by-ordinal the library must import WinRing0x64.dll by the ten ordinals and by no name.
"""

import re
import subprocess
import sys

PUBLIC = re.compile(r"^(run\(int, char\*\*\)|vorn::VORN::.*|vorn::platformAdvice.*)$")
ORDINALS = {1, 7, 8, 21, 22, 81, 82, 83, 92, 93}


def output(*command, text=None):
    return subprocess.run(command, check=True, capture_output=True, text=True, input=text).stdout


def elf_exports(library):
    symbols = output("nm", "-D", "-C", "--defined-only", library).splitlines()
    # Unique and weak names of the C++ runtime's own templates belong to the runtime.
    return {line.split(" ", 2)[2] for line in symbols if line.split(" ", 2)[1] in "TDBR"}


def dll_exports(dump):
    table = dump.split("[Ordinal/Name Pointer] Table", 1)[1]
    mangled = re.findall(r"^\s+\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+)?(?:[0-9a-f]{4}\s+)?(\S+)$", table, re.M)
    return set(output("c++filt", text="\n".join(mangled)).split("\n")) - {""}


def ring0_imports(dump):
    block = re.search(r"DLL Name: WinRing0x64\.dll\n(.*?)\n\s*\n", dump, re.S)
    if block is None:
        return None
    return block.group(1)


def main():
    library, objdump = sys.argv[1:3]
    faults = []
    if library.endswith(".dll"):
        dump = output(objdump, "-p", library)
        exports = dll_exports(dump)
    else:
        dump = ""
        exports = elf_exports(library)
    faults += [f"exported: {name}" for name in sorted(exports) if not PUBLIC.match(name)]
    for wanted in ("run(int, char**)", "vorn::VORN::VORN()", "vorn::VORN::~VORN()"):
        if wanted not in exports:
            faults.append(f"not exported: {wanted}")
    if "--ring0-by-ordinal" in sys.argv:
        block = ring0_imports(dump)
        if block is None:
            faults.append("WinRing0x64.dll is not imported")
        else:
            lines = block.splitlines()[1:]
            found = {int(line.split()[1], 16) for line in lines if line.split()[-1] == "<none>"}
            named = [line.strip() for line in lines if line.split()[-1] != "<none>"]
            if found != ORDINALS or named:
                faults.append(f"imports of WinRing0x64.dll: ordinals {sorted(found)}, names {named}")
    print("\n".join(faults) or f"{library}: {len(exports)} public names")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
