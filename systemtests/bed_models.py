"""The bed models: the static program on emulated processors.

The section "=== cpu" of a case gives the processor, one option a line as the emulator names it:
family=6, model=0x26, stepping=5, model-id=Ovrin(R) ..., and features with a sign: -sse4.2, -msr.
"""

import os
import shutil

from bed import Bed

VENDOR = "GenuineOvrin"


def cpu_option(case, vendor=None):
    options = ["max"] + (["vendor=" + vendor] if vendor else [])
    for line in case.text("cpu", "").splitlines():
        if line.strip():
            name, _, value = line.partition("=")
            # The emulator separates options by commas; a value keeps its blanks.
            options.append(f"{name.strip()}={value.rstrip()}" if value else line.strip())
    return ",".join(options)


class Models(Bed):
    def missing(self):
        if shutil.which("qemu-x86_64") is None:
            return "qemu-x86_64 is not installed"
        program = self.build_root / "linux-static" / "bin" / "vorn"
        return "" if program.exists() else f"{program} is not built"

    def program_path(self, program):
        return str(self.build_root / "linux-static" / "bin" / program)

    def command(self, case, program):
        return without_registers() + ["qemu-x86_64", "-cpu", cpu_option(case, VENDOR),
                self.program_path(program)]


def without_registers():
    """Prefix of a command that must not reach this machine's own registers."""
    if os.access("/dev/cpu/0/msr", os.R_OK):
        return ["setpriv", "--bounding-set", "-sys_rawio", "--inh-caps", "-sys_rawio"]
    return []


def make(build_root):
    return Models(build_root)
