#!/usr/bin/env python3
"""Unpacks the packages, runs what they hold and builds the example host against them.

Usage: check_packages.py [--build-root DIR]

Wants the packages in DIR/packages and the stand-in ring-0 library in DIR/windows/bin. Exit status 0
when all is as it should be, else 1.
"""

import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import traceback
import xml.etree.ElementTree
from pathlib import Path

import bed_windows

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
VERSION = re.search(r"project\(vorn64 VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]
LIBRARY = f"usr/lib/x86_64-linux-gnu/libvorn64.so.{VERSION}"
SONAME = "libvorn64.so." + VERSION.split(".")[0]

DEBIAN_FILES = f"""
-rwxr-xr-x usr/bin/vorn
-rw-r--r-- usr/include/vorn/vorn.h
-rw-r--r-- usr/lib/x86_64-linux-gnu/cmake/vorn64/vorn64-config-version.cmake
-rw-r--r-- usr/lib/x86_64-linux-gnu/cmake/vorn64/vorn64-config.cmake
-rw-r--r-- usr/lib/x86_64-linux-gnu/cmake/vorn64/vorn64-targets-release.cmake
-rw-r--r-- usr/lib/x86_64-linux-gnu/cmake/vorn64/vorn64-targets.cmake
lrwxrwxrwx usr/lib/x86_64-linux-gnu/libvorn64.so -> {SONAME}
lrwxrwxrwx usr/lib/x86_64-linux-gnu/{SONAME} -> libvorn64.so.{VERSION}
-rw-r--r-- {LIBRARY}
-rw-r--r-- usr/lib/x86_64-linux-gnu/pkgconfig/vorn64.pc
-rw-r--r-- usr/share/bash-completion/completions/vorn
-rw-r--r-- usr/share/doc/vorn64/changelog.gz
-rw-r--r-- usr/share/doc/vorn64/copyright
-rw-r--r-- usr/share/doc/vorn64/examples/host/CMakeLists.txt
-rw-r--r-- usr/share/doc/vorn64/examples/host/host.cpp
-rw-r--r-- usr/share/man/man1/vorn.1.gz
-rw-r--r-- usr/share/man/man5/VORNconfig.xml.5.gz
-rw-r--r-- usr/share/vorn64/VORNconfig.xml
"""
TAR_FILES = {"README.txt", "VORNconfig.xml", "vorn"}
ZIP_FILES = {
    "README.txt", "RING0.txt", "VORN.exe", "VORN64.dll", "VORNconfig.xml", "libgcc_s_seh-1.dll",
    "libstdc++-6.dll", "libwinpthread-1.dll", "examples/host/CMakeLists.txt",
    "examples/host/host.cpp", "include/vorn/vorn.h", "lib/libVORN64.dll.a",
    "lib/cmake/vorn64/vorn64-config-version.cmake", "lib/cmake/vorn64/vorn64-config.cmake",
    "lib/cmake/vorn64/vorn64-targets-release.cmake", "lib/cmake/vorn64/vorn64-targets.cmake",
    "licenses/gcc-mingw-w64-x86-64-posix-runtime.txt", "licenses/mingw-w64-x86-64-dev.txt",
}
WINDOWS_OWN = {"ADVAPI32.DLL", "CFGMGR32.DLL", "KERNEL32.DLL", "MSVCRT.DLL", "SETUPAPI.DLL",
               "USER32.DLL"}
DRIVER_FAILED = "VORN encountered problem loading driver"


class Wrong(Exception):
    """Something that is not as it should be."""


def demand(condition, text):
    if not condition:
        raise Wrong(text)


def equal(what, expected, actual):
    if expected != actual:
        def lines(value):
            return "\n".join(sorted(map(str, value))) if isinstance(value, set) else str(value)
        raise Wrong(f"{what}\nexpected:\n{lines(expected)}\nactual:\n{lines(actual)}")


def output(*command, environment=None, status=0, directory=None, timeout=300):
    """Standard output of a command that must end with this status and without complaints."""
    done = subprocess.run(list(map(str, command)), capture_output=True, stdin=subprocess.DEVNULL,
                          env=environment, cwd=directory, timeout=timeout, check=False)
    text = done.stdout.decode("latin-1").replace("\r\n", "\n")
    errors = done.stderr.decode("latin-1")
    demand(status is None or done.returncode == status,
           f"{command}: status {done.returncode}\n{text}\n{errors}")
    return text


def with_environment(**values):
    return {**os.environ, **{name: str(value) for name, value in values.items()}}


def files_below(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def run_diagnostic(folder, program, shipped, environment, driver):
    """Runs the program as the shipped configuration says, without the tests that take long."""
    text = shipped.read_text(encoding="utf-8")
    for switch in ("FloatingPoint", "PrimeNumGen", "StressTest", "IMCTest"):
        text, count = re.subn(rf'(?<= {switch}=)"\w+"', '"DISABLE"', text)
        equal(f"switch {switch} in {shipped.name}", 1, count)
    (folder / "VORNconfig.xml").write_text(text, encoding="utf-8")
    console = output(*program, environment=environment, directory=folder)
    for line in ("MMX SSE Testing Passed !!", "--- Math Floating Point Test Disabled ---",
                 "Testing Processor 1"):
        demand(line in console, f"the report lacks {line!r}\n{console}")
    demand(re.search(r"\t\t--- VORN64 (FAILED|PASSED) ---\n$", console), f"no verdict\n{console}")
    if driver is not None:
        equal("the driver is missed", driver, DRIVER_FAILED not in console)
    written = (folder / "CPUOut.txt").read_text(encoding="latin-1")
    demand("MMX SSE Testing Passed !!" in written, f"CPUOut.txt lacks the report\n{written}")


class Packages:
    """The packages, each unpacked once."""

    def __init__(self, build_root, scratch):
        self.build = build_root
        self.folder = build_root / "packages"
        self.scratch = scratch
        self.deb = self.folder / f"vorn64_{VERSION}_amd64.deb"
        self.tar = self.folder / f"vorn64-{VERSION}-linux-x86_64.tar.gz"
        self.zips = {False: self.folder / f"vorn64-{VERSION}-windows-x86_64.zip",
                     True: self.folder / f"vorn64-{VERSION}-windows-x86_64-no-ring0.zip"}
        self.root = scratch / "root"
        output("dpkg-deb", "-x", self.deb, self.root)
        output("tar", "-C", scratch, "-xzf", self.tar)
        self.static = scratch / self.tar.name.removesuffix(".tar.gz")
        self.windows = {}
        for absent, archive in self.zips.items():
            output("unzip", "-q", archive, "-d", scratch)
            self.windows[absent] = scratch / archive.stem
        self.wine = bed_windows.Windows(build_root).wine_environment()

    def new_folder(self):
        return Path(tempfile.mkdtemp(dir=self.scratch))

    def system_environment(self):
        return with_environment(LD_LIBRARY_PATH=(self.root / LIBRARY).parent)


def debian_package_is_in_order(packages):
    listed = set()
    for line in output("dpkg-deb", "-c", packages.deb).splitlines():
        mode, owner, _, _, _, name = line.split(None, 5)
        equal(f"owner of {name}", "root/root", owner)
        if mode[0] == "d":
            equal(f"mode of {name}", "drwxr-xr-x", mode)
        else:
            listed.add(f"{mode} {name.removeprefix('./')}")
    equal("files of the package", set(DEBIAN_FILES.split("\n")) - {""}, listed)

    control = packages.scratch / "control"
    output("dpkg-deb", "-e", packages.deb, control)
    fields = dict(re.findall(r"^([\w-]+): (.*)$", (control / "control").read_text(), re.M))
    for name, wanted in {"Package": "vorn64", "Version": VERSION, "Architecture": "amd64",
                         "Maintainer": "VORN64 developers"}.items():
        equal(name, wanted, fields.get(name))
    # Whoever holds a library that the files name must be depended upon, and nobody else.
    needed = set()
    for file in ("usr/bin/vorn", LIBRARY):
        needed |= set(re.findall(r"NEEDED.*\[(.*)\]", output("readelf", "-d", packages.root / file)))
    holders = set()
    for library in needed - {SONAME}:
        owners = output("dpkg", "-S", f"/lib/x86_64-linux-gnu/{library}", status=None) + output(
            "dpkg", "-S", f"/usr/lib/x86_64-linux-gnu/{library}", status=None)
        holders |= {owner.split(":")[0] for owner in owners.splitlines()}
    demand(SONAME in needed, f"the program does not name {SONAME}")
    equal("Depends", holders, {word.split()[0] for word in fields["Depends"].split(", ")})

    equal("shlibs", f"libvorn64 {VERSION.split('.')[0]} vorn64 (>= {VERSION})\n",
          (control / "shlibs").read_text())
    equal("triggers", "activate-noawait ldconfig\n", (control / "triggers").read_text())
    summed = set()
    for line in (control / "md5sums").read_text().splitlines():
        digest, name = line.split("  ")
        equal(f"sum of {name}", digest,
              hashlib.md5((packages.root / name).read_bytes()).hexdigest())
        summed.add(name)
    equal("summed files", {name for name in files_below(packages.root)
                           if not (packages.root / name).is_symlink()}, summed)


def archives_hold_their_files(packages):
    equal("files of the tar file", TAR_FILES, files_below(packages.static))
    for folder in packages.windows.values():
        equal("files of " + folder.name, ZIP_FILES, files_below(folder))


def packing_again_gives_the_same(packages):
    again = packages.new_folder()
    folder = packages.new_folder()
    output("sh", "-c", 'umask 077; "$@"', "sh", ROOT / "packaging/pack", packages.build, again,
           environment=with_environment(TZ="Pacific/Auckland", TMPDIR=folder))
    for package in (packages.deb, packages.tar, *packages.zips.values()):
        demand(package.read_bytes() == (again / package.name).read_bytes(),
               f"{package.name} differs when packed again")


def files_name_no_place_of_the_build(packages):
    for name in files_below(packages.scratch):
        path = packages.scratch / name
        if path.is_file():
            content = path.read_bytes()
            for place in (ROOT, packages.build):
                demand(str(place).encode() not in content, f"{name} names {place}")


def binaries_are_hardened(packages):
    files = [packages.root / "usr/bin/vorn", packages.root / LIBRARY, packages.static / "vorn"]
    for folder in packages.windows.values():
        files += [folder / "VORN.exe", folder / "VORN64.dll"]
    output(sys.executable, HERE / "check_hardening.py", "objdump", *files)
    # What is packed is stripped; these still tell which instructions a routine is made of.
    for built in ("package-linux/bin/libvorn64.so", "package-linux-static/bin/vorn",
                  "package-windows/bin/VORN64.dll"):
        output(sys.executable, HERE / "isa_disassembly.py", "objdump", packages.build / built)


def debian_program_runs(packages):
    program = packages.root / "usr/bin/vorn"
    equal("libvorn64 is found where it lies", True,
          str(packages.root) in output("ldd", program, environment=packages.system_environment()))
    run_diagnostic(packages.new_folder(), [program],
                   packages.root / "usr/share/vorn64/VORNconfig.xml",
                   packages.system_environment(), driver=None)


def static_program_runs(packages):
    program = packages.static / "vorn"
    demand("NEEDED" not in output("readelf", "-d", program), "the program needs libraries")
    run_diagnostic(packages.new_folder(), [program], packages.static / "VORNconfig.xml",
                   os.environ, driver=None)


def windows_packages_are_whole(packages):
    for absent, folder in packages.windows.items():
        present = {name.upper() for name in files_below(folder)}
        missing = set()
        for file in folder.glob("*.[ed][xl][el]"):
            imports = re.findall(r"DLL Name: (\S+)", output("objdump", "-p", file))
            missing |= {name.upper() for name in imports} - present - WINDOWS_OWN
        equal(f"what {folder.name} wants beside it", set() if absent else {"WINRING0X64.DLL"},
              missing)
        output(sys.executable, HERE / "check_exports.py", folder / "VORN64.dll", "objdump",
               *([] if absent else ["--ring0-by-ordinal"]))


def windows_programs_run(packages):
    for absent, folder in packages.windows.items():
        place = packages.new_folder() / "VORN64 on a stick"
        shutil.copytree(folder, place)
        program = ["wine", place / "VORN.exe"]
        if not absent:
            # As RING0.txt says: without the library the program does not start.
            console = output(*program, environment=packages.wine, directory=place, status=None)
            demand("VORN64" not in console and not (place / "CPUOut.txt").exists(),
                   f"{folder.name} runs without the ring-0 library\n{console}")
            shutil.copy(packages.build / "windows/bin/WinRing0x64.dll", place)
        run_diagnostic(place, program, folder / "VORNconfig.xml", packages.wine, driver=False)


def manual_pages_render(packages):
    man = packages.root / "usr/share/man"
    pages = sorted(man.rglob("*.gz"))
    environment = with_environment(LC_ALL="C.UTF-8", MANWIDTH="80")
    for page in pages:
        text = subprocess.run(["man", "--warnings", "-l", str(page)], env=environment, check=True,
                              capture_output=True, text=True)
        equal(f"complaints about {page.name}", "", text.stderr)
        demand("NAME" in text.stdout, f"{page.name} is empty")
        source = subprocess.run(["gzip", "-dc", str(page)], check=True, capture_output=True).stdout
        checked = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z"], input=source,
                                 capture_output=True, check=True)
        equal(f"warnings of {page.name}", b"", checked.stderr)

    # The pages are true: every key that the library reads, every option that the program has.
    page = (ROOT / "share/man/VORNconfig.xml.5").read_text()
    told = {word for line in re.findall(r"^\.TP\n\.BR? (.*)$", page, re.M)
            for word in re.findall(r"\w+", line)}
    read = set(re.findall(r'\{"@(\w+)", &', (ROOT / "src/config/settings.h").read_text()))
    shipped = xml.etree.ElementTree.parse(packages.root / "usr/share/vorn64/VORNconfig.xml")
    given = {key for element in shipped.iter() for key in element.attrib}
    equal("keys of the page", read, told)
    equal("keys of the shipped configuration", read, given)
    usage = output(packages.static / "vorn", "--help")
    vorn_page = (ROOT / "share/man/vorn.1").read_text().replace("\\-", "-")
    for option in re.findall(r"--\w+", usage):
        demand(option in vorn_page, f"vorn(1) lacks {option}")


def completion_completes(packages):
    script = packages.root / "usr/share/bash-completion/completions/vorn"
    options = set(re.findall(r"--\w+", output(packages.static / "vorn", "--help")))
    for typed, wanted in (("", options | {"MP"}), ("--", options), ("--v", {"--version"}),
                          ("MP ", set())):
        words = ("vorn " + typed).split(" ")
        found = output("bash", "-euc",
                       'source "$1"; shift; complete -p vorn >/dev/null; COMP_WORDS=("$@"); '
                       'COMP_CWORD=$(($# - 1)); _vorn; printf "%s\\n" "${COMPREPLY[@]}"',
                       "bash", script, *words)
        equal(f"completion of {words}", wanted, set(found.split()))


EXAMPLE_ENDS = "Unknown error from vorn library in catch (...) block\n=> 1\n"


def judge_host(packages, command, environment, directory):
    (directory / "VORNconfig.xml").write_text("<VORN/>")
    console = output(*command, "13", "8", environment=environment, directory=directory)
    demand("MMX SSE Testing Passed !!" in console and console.endswith("=> 0\n" + EXAMPLE_ENDS),
           f"the host's output\n{console}")


def example_builds_on_linux(packages):
    source = packages.root / "usr/share/doc/vorn64/examples/host"
    build = packages.new_folder()
    output("cmake", "-S", source, "-B", build, "-G", "Ninja",
           f"-DCMAKE_PREFIX_PATH={packages.root / 'usr'}", "-DCMAKE_CXX_FLAGS=-Wall -Werror")
    output("cmake", "--build", build)
    judge_host(packages, [build / "host"], os.environ, packages.new_folder())

    environment = with_environment(PKG_CONFIG_PATH=(packages.root / LIBRARY).parent / "pkgconfig")
    equal("version of the package", VERSION,
          output("pkg-config", "--modversion", "vorn64", environment=environment).strip())
    flags = output("pkg-config", "--cflags", "--libs", "vorn64", environment=environment).split()
    host = packages.new_folder() / "host"
    output("g++", "-std=c++20", source / "host.cpp", "-o", host, *flags)
    judge_host(packages, [host], packages.system_environment(), host.parent)


def example_builds_for_windows(packages):
    for absent, folder in packages.windows.items():
        build = packages.new_folder()
        output("cmake", "-S", folder / "examples/host", "-B", build, "-G", "Ninja",
               f"-DCMAKE_PREFIX_PATH={folder}",
               f"-DCMAKE_TOOLCHAIN_FILE={ROOT / 'cmake/mingw-toolchain.cmake'}")
        output("cmake", "--build", build)
        place = packages.new_folder()
        for file in (build / "host.exe", *folder.glob("*.dll")):
            shutil.copy(file, place)
        if not absent:
            shutil.copy(packages.build / "windows/bin/WinRing0x64.dll", place)
        judge_host(packages, ["wine", place / "host.exe"], packages.wine, place)


CHECKS = [
    debian_package_is_in_order,
    archives_hold_their_files,
    files_name_no_place_of_the_build,  # before the checks that write there
    packing_again_gives_the_same,
    binaries_are_hardened,
    debian_program_runs,
    static_program_runs,
    windows_packages_are_whole,
    windows_programs_run,
    manual_pages_render,
    completion_completes,
    example_builds_on_linux,
    example_builds_for_windows,
]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build-root", type=Path, default=ROOT / "build")
    arguments = parser.parse_args()
    failed = 0
    with tempfile.TemporaryDirectory(prefix="vorn-packages-") as scratch:
        packages = Packages(arguments.build_root.resolve(), Path(scratch))
        for check in CHECKS:
            fault = ""
            try:
                check(packages)
            except Wrong as wrong:
                fault = str(wrong)
            except Exception:  # the check itself failed: that counts, and is told whole
                fault = traceback.format_exc()
            name = check.__name__.replace("_", " ")
            print(f"{'FAILED' if fault else 'passed'}  package  {name}", flush=True)
            if fault:
                print("    " + fault.replace("\n", "\n    "), flush=True)
                failed += 1
    print(f"package: {len(CHECKS) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
