"""The bed models-windows: the Windows programs under Wine on emulated processors.

Sections as of the beds models and windows. The vendor stays the emulator's own: the C library's loader
refuses one that it does not know.
"""

import shutil
from pathlib import Path

from bed_models import cpu_option
from bed_windows import Windows

WINE_LOADER = Path("/usr/lib/wine/wine64")


class ModelsWindows(Windows):
    timeout = 180
    shared = []

    def missing(self):
        if shutil.which("qemu-x86_64") is None:
            return "qemu-x86_64 is not installed"
        if not WINE_LOADER.exists():
            return f"{WINE_LOADER} is not there"
        return super().missing()

    def environment(self, case, directory):
        environment = super().environment(case, directory)
        environment["WINELOADERNOEXEC"] = "1"
        return environment

    def command(self, case, program):
        return ["qemu-x86_64", "-cpu", cpu_option(case), str(WINE_LOADER),
                self.program_path(program)]


def make(build_root):
    return ModelsWindows(build_root)
