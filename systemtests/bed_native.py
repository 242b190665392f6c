"""The bed native: the programs of this system on this machine."""

from bed import Bed


class Native(Bed):
    shared = ["everywhere"]

    def missing(self):
        program = self.build_root / "linux" / "bin" / "vorn"
        return "" if program.exists() else f"{program} is not built"

    def environment(self, case, directory):
        environment = super().environment(case, directory)
        environment["PATH"] = f"{self.build_root / 'linux' / 'bin'}:{environment['PATH']}"
        return environment

    def program_path(self, program):
        return str(self.build_root / "linux" / "bin" / program)

    def command(self, case, program):
        return [self.program_path(program)]


def make(build_root):
    return Native(build_root)
