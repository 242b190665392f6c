"""The bed machine: the static program inside a whole emulated machine.

Debian's kernel boots with an initial file system of busybox, the modules that the case asks for
and the static programs. Sections besides the common ones:

  === cpu       the processor, as of the bed models
  === qemu      further options of the emulator, one a line: -smp 2,sockets=2
  === modules   kernel modules to load, in order (default: msr)
  === script    shell commands that run the program (default: the program with its arguments); they
                start in the directory that holds the case's files, which comes back whole
  === user      "ordinary" runs the script without root's rights

The machine's first serial line is the kernel's, the second brings back what the script left.
"""

import base64
import io
import os
import shlex
import shutil
import subprocess
import tarfile
from pathlib import Path

from bed import Bed, Outcome, prepare
from bed_models import VENDOR, cpu_option

INIT = """#!/bin/busybox sh
/bin/busybox --install -s /bin
export PATH=/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs dev /dev
echo 0 > /proc/sys/kernel/printk
for module in $(cat /modules/order); do insmod /modules/$module.ko; done
stty -F /dev/ttyS1 raw
cd /case
USER_COMMAND="sh /case.sh"
if [ -e /ordinary ]; then
    chown -R 1000:1000 /case
    USER_COMMAND="su -s /bin/sh ordinary /case.sh"
fi
$USER_COMMAND > /case/.console 2> /case/.errors < /dev/null
echo $? > /case/.status
tar -c -C /case . | base64 > /dev/ttyS1
echo END > /dev/ttyS1
sync
poweroff -f
"""


class Machine(Bed):
    timeout = 120

    def __init__(self, build_root):
        super().__init__(build_root)
        self.folder = build_root / "machine"

    def kernel(self):
        return next(iter(sorted(self.folder.glob("kernel/boot/vmlinuz-*"))), None)

    def missing(self):
        if shutil.which("qemu-system-x86_64") is None:
            return "qemu-system-x86_64 is not installed"
        if not Path("/bin/busybox").exists():
            return "busybox-static is not installed"
        if self.kernel() is None:
            return f"there is no kernel below {self.folder}"
        program = self.build_root / "linux-static" / "bin" / "vorn"
        return "" if program.exists() else f"{program} is not built"

    def initial_file_system(self, case, directory):
        root = directory / "root"
        for folder in ("bin", "etc", "proc", "sys", "dev", "tmp", "modules", "case"):
            (root / folder).mkdir(parents=True)
        (root / "init").write_text(INIT)
        (root / "init").chmod(0o755)
        shutil.copy("/bin/busybox", root / "bin" / "busybox")
        for program in ("vorn", "host"):
            shutil.copy(self.build_root / "linux-static" / "bin" / program, root / "bin" / program)
        modules = case.text("modules", "msr\n").split()
        for name in modules:
            found = next(iter(self.folder.glob(f"kernel/lib/modules/*/kernel/**/{name}.ko")))
            shutil.copy(found, root / "modules" / f"{name}.ko")
        (root / "modules" / "order").write_text("\n".join(modules) + "\n")
        if case.text("user", "").strip() == "ordinary":
            (root / "ordinary").touch()
            (root / "etc" / "passwd").write_text("root:x:0:0::/:/bin/sh\nordinary::1000:1000::/:/bin/sh\n")
        default = shlex.join([case.text("program", "vorn").strip()] + case.words("arguments"))
        (root / "case.sh").write_text(case.text("script", default + "\n"))
        prepare(case, root / "case")
        archive = directory / "initrd"
        with open(archive, "wb") as out:
            names = subprocess.run(["find", ".", "-print0"], cwd=root, stdout=subprocess.PIPE,
                                   check=True).stdout
            subprocess.run(["cpio", "--quiet", "--null", "-o", "-H", "newc", "-R", "0:0"], cwd=root,
                           input=names, stdout=out, check=True)
        shutil.rmtree(root)
        return archive

    def run(self, case, directory):
        archive = self.initial_file_system(case, directory)
        command = ["qemu-system-x86_64", "-M", "q35", "-accel", "tcg", "-m", "512", "-nodefaults",
                   "-no-reboot", "-display", "none", "-cpu", cpu_option(case, VENDOR),
                   "-kernel", str(self.kernel()), "-initrd", str(archive),
                   "-append", "console=ttyS0 panic=-1 quiet no_timer_check",
                   "-serial", f"file:{directory / 'kernel.log'}",
                   "-serial", f"file:{directory / 'case.b64'}"]
        for line in case.text("qemu", "").splitlines():
            command += shlex.split(line)
        result = subprocess.run(command, cwd=directory, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                                timeout=int(case.text("timeout", str(self.timeout))))
        brought = (directory / "case.b64").read_text(encoding="latin-1")
        if not brought.rstrip().endswith("END"):
            raise RuntimeError("the machine did not come to its end\n" +
                               result.stdout.decode("latin-1") +
                               (directory / "kernel.log").read_text(encoding="latin-1"))
        files = directory / "case"
        data = base64.b64decode(brought.rstrip()[:-len("END")])
        with tarfile.open(fileobj=io.BytesIO(data)) as archive_file:
            archive_file.extractall(files)
        read = lambda name: (files / name).read_bytes().decode("latin-1")
        return Outcome(int(read(".status")), read(".console"), read(".errors"), files)


def make(build_root):
    return Machine(build_root)
