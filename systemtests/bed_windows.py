"""The bed windows: the Windows programs under Wine on this machine's processor.

The section "=== registers" of a case holds the answers of the stand-in ring-0 library; without it the
library cannot be started. "=== calls" compares the calls that it logged.
"""

import os
import shutil
import subprocess

from bed import Bed


class Windows(Bed):
    timeout = 120
    shared = ["everywhere"]

    def missing(self):
        if shutil.which("wine") is None:
            return "wine is not installed"
        program = self.build_root / "windows" / "bin" / "VORN.exe"
        return "" if program.exists() else f"{program} is not built"

    def wine_environment(self):
        environment = dict(os.environ)
        environment.setdefault("WINEPREFIX", str(self.build_root / "wine"))
        environment["WINEDEBUG"] = "-all"
        environment["WINEDLLOVERRIDES"] = "mscoree,mshtml="
        return environment

    def begin(self):
        # One server for all cases: its start costs more than a case.
        subprocess.run(["wine", "cmd", "/c", "exit"], env=self.wine_environment(),
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=False, timeout=300)

    def environment(self, case, directory):
        environment = self.wine_environment()
        registers = case.text("registers")
        if registers is not None:
            (directory / "registers.txt").write_text(registers)
            environment["VORN_STANDIN_REGISTERS"] = "registers.txt"
        environment["VORN_STANDIN_LOG"] = "calls.log"
        return environment

    def program_path(self, program):
        name = "VORN" if program == "vorn" else program
        return str(self.build_root / "windows" / "bin" / (name + ".exe"))

    def command(self, case, program):
        return ["wine", self.program_path(program)]


def make(build_root):
    return Windows(build_root)
