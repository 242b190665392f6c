#!/usr/bin/env python3
"""Runs the built programs on one test bed, case by case, and compares whole reports.

Usage: bed.py BED [--build-root DIR] [--only PATTERN] [--keep]

The cases of a bed are the files cases/BED/*.case and those of the folders that it shares; README.md
beside this file has their form. Exit status: 0 when every case passed, 1 when one failed, 77 when this
machine cannot run the bed.
"""

import argparse
import fnmatch
import importlib
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import traceback
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
SKIPPED = 77

# What differs from run to run, masked on both sides before the comparison: times, rates, sizes.
MASKS = [
    (re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d"), "<time>"),
    (re.compile(r"(execution time was)\d+( seconds)"), r"\1<n>\2"),
    (re.compile(r"(Seconds: |seconds=\")\d+"), r"\1<n>"),
    # Wine's desktop process, when its virtual display ends before it.
    (re.compile(r"^X connection to :\d+ broken[^\n]*\n", re.M), ""),
]


class CaseError(Exception):
    """A case file that cannot be read."""


class Case:
    """One case: sections of text by name. A table of rows makes one case of each row."""

    def __init__(self, name, sections, directory):
        self.name = name
        self.sections = sections
        self.directory = directory

    def text(self, section, default=None):
        return self.sections.get(section, default)

    def words(self, section):
        return self.sections.get(section, "").split()

    def files(self, kind):
        """(name, text) of the sections "=== KIND NAME"."""
        prefix = kind + " "
        return [(s[len(prefix):], t) for s, t in self.sections.items() if s.startswith(prefix)]


def read_sections(path):
    sections = {}
    name = None
    for line in path.read_text(encoding="latin-1").splitlines(keepends=True):
        if line.startswith("=== "):
            name = line[4:].strip()
            if name in sections:
                raise CaseError(f"{path.name}: section '{name}' stands twice")
            sections[name] = ""
        elif name is not None:
            sections[name] += line
        elif line.strip() and not line.startswith("#"):
            raise CaseError(f"{path.name}: text before the first section: {line.strip()}")
    return sections


def read_cases(path):
    sections = read_sections(path)
    table = sections.pop("rows", None)
    if table is None:
        return [Case(path.stem, complete(sections, path, {}), path.parent)]
    lines = [[cell.strip() for cell in line.split("|")]
             for line in table.splitlines() if line.strip() and not line.startswith("#")]
    header, rows = lines[0], lines[1:]
    cases = []
    for row in rows:
        if len(row) != len(header):
            raise CaseError(f"{path.name}: a row has {len(row)} cells, its header {len(header)}: {row}")
        values = dict(zip(header, row))
        cases.append(Case(f"{path.stem}: {row[0]}", complete(sections, path, values), path.parent))
    return cases


def complete(sections, path, values):
    """The sections with ${name} replaced and the sections of the included files added."""
    def fill(text):
        # A fragment's name may be made of cells: ${text:end-${end}}
        return re.sub(r"\$\{(\w+)\}", lambda m: values[m.group(1)], text)

    filled = {fill(name): fill(text) for name, text in sections.items()}
    for name in filled.pop("include", "").split():
        for section, text in read_sections(path.parent / name).items():
            filled[fill(section)] = filled.get(fill(section), "") + fill(text)
    fragments = {name[5:]: text for name, text in filled.items() if name.startswith("text ")}
    return {name: re.sub(r"\$\{text:([^}]+)\}\n?", lambda m: fragments[m.group(1).strip()], text)
            for name, text in filled.items() if not name.startswith("text ")}


def masked(text, case):
    for pattern, replacement in MASKS:
        text = pattern.sub(replacement, text)
    for line in case.text("masks", "").splitlines():
        # A mask of the case's own: PATTERN => REPLACEMENT
        pattern, _, replacement = line.partition(" => ")
        text = re.sub(pattern, replacement, text)
    return text


def difference(expected, actual):
    import difflib
    lines = difflib.unified_diff(expected.splitlines(keepends=True),
                                 actual.splitlines(keepends=True), "expected", "actual", n=2)
    return "".join(repr(line)[1:-1] + "\n" for line in lines)


class Outcome:
    """What a program left behind."""

    def __init__(self, status, console, errors, directory, calls=""):
        self.status = status
        self.console = console
        self.errors = errors
        self.directory = directory
        self.calls = calls

    def file(self, name):
        path = self.directory / name
        if not path.exists():
            return None
        return path.read_bytes().decode("latin-1").replace("\r\n", "\n")


def judge(case, outcome):
    """The ways in which the outcome differs from what the case demands."""
    faults = []

    def compare(what, expected, actual):
        if expected is None:
            return
        expected, actual = masked(expected, case), masked(actual or "", case)
        if expected != actual:
            faults.append(f"{what} differs\n{difference(expected, actual)}")

    expected_status = int(case.text("status", "0").strip())
    if outcome.status != expected_status:
        faults.append(f"status is {outcome.status}, expected {expected_status}\n"
                      f"console: {outcome.console!r}\nerrors: {outcome.errors!r}")
    compare("console", case.text("console"), outcome.console)
    compare("standard error", case.text("errors"), outcome.errors)
    compare("ring-0 calls", case.text("calls"), outcome.calls)
    for fragment in case.text("console has", "").splitlines():
        if masked(fragment, case) not in masked(outcome.console, case):
            faults.append(f"console lacks {fragment!r}\n{outcome.console}")
    for fragment in case.text("console lacks", "").splitlines():
        if fragment in outcome.console:
            faults.append(f"console has {fragment!r}")
    for fragment in case.text("errors has", "").splitlines():
        if fragment not in outcome.errors:
            faults.append(f"standard error lacks {fragment!r}\n{outcome.errors}")
    for name, expected in case.files("file"):
        actual = outcome.file(name)
        if actual is None:
            faults.append(f"there is no file {name}")
        else:
            compare(f"file {name}", expected, actual)
    for name in case.words("absent"):
        if outcome.file(name) is not None:
            faults.append(f"there is a file {name}")
    return faults


def prepare(case, directory):
    """Lays out the case's own files: its configuration and whatever else it gives."""
    for name, text in case.files("given"):
        path = directory / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text.encode("latin-1"))
    config = case.text("config")
    if config is not None:
        (directory / "VORNconfig.xml").write_bytes(config.encode("latin-1"))


def run_program(command, directory, environment, timeout, text_input=""):
    process = subprocess.Popen(command, cwd=directory, env=environment, stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               start_new_session=True)
    try:
        console, errors = process.communicate(text_input.encode(), timeout=timeout)
    except subprocess.TimeoutExpired:
        # What it started, too: that may hold the pipes.
        os.killpg(process.pid, signal.SIGKILL)
        console, errors = process.communicate()
        errors += b"\n(no end within the time limit)"
    decode = lambda data: data.decode("latin-1").replace("\r\n", "\n")
    return process.returncode, decode(console), decode(errors)


class Bed:
    """A bed: where a case's program comes from and how it is started."""

    parallel = 2
    shared = []  # further folders of cases that this bed runs
    timeout = 60

    def __init__(self, build_root):
        self.build_root = build_root

    def missing(self):
        """Why this machine cannot run the bed; empty when it can."""
        return ""

    def begin(self):
        pass

    def end(self):
        pass

    def program_path(self, program):
        """Where a built program of this bed lies."""
        raise NotImplementedError

    def command(self, case, program):
        raise NotImplementedError

    def environment(self, case, directory):
        return dict(os.environ)

    def copy_programs(self, case, directory):
        """Lays built programs into the case's directory: NAME => PLACE, one a line."""
        for line in case.text("programs", "").splitlines():
            name, _, place = line.partition(" => ")
            (directory / place).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(self.program_path(name), directory / place)

    def run(self, case, directory):
        prepare(case, directory)
        self.copy_programs(case, directory)
        program = case.text("program", "vorn").strip()
        script = case.text("script")
        command = (["sh", "-c", script] if script is not None
                   else self.command(case, program) + case.words("arguments"))
        if case.text("display") is not None:
            command = ["xvfb-run", "-a"] + command
        status, console, errors = run_program(command, directory,
                                              self.environment(case, directory),
                                              int(case.text("timeout", str(self.timeout))),
                                              case.text("input", ""))
        calls = directory / "calls.log"
        return Outcome(status, console, errors, directory,
                       calls.read_text() if calls.exists() else "")


def load_bed(name, build_root):
    module = importlib.import_module("bed_" + name.replace("-", "_"))
    return module.make(build_root)


def applies(case):
    """Whether this machine is one that the case is about: its "only where" command succeeds."""
    command = case.text("only where")
    return command is None or subprocess.run(["sh", "-c", command], check=False).returncode == 0


def run_case(bed, case, keep):
    if not applies(case):
        return case, None
    directory = Path(tempfile.mkdtemp(prefix="vorn-case-"))
    try:
        faults = judge(case, bed.run(case, directory))
    except Exception:  # the bed itself failed: that is a failed case, told whole
        faults = [traceback.format_exc()]
    if keep:
        print(f"kept: {case.name}: {directory}")
    else:
        shutil.rmtree(directory, ignore_errors=True)
    return case, faults


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("bed")
    parser.add_argument("--build-root", type=Path, default=ROOT / "build")
    parser.add_argument("--only", default="*", help="run the cases whose name matches this pattern")
    parser.add_argument("--keep", action="store_true", help="keep the cases' directories")
    arguments = parser.parse_args()

    sys.path.insert(0, str(HERE))
    bed = load_bed(arguments.bed, arguments.build_root.resolve())
    reason = bed.missing()
    if reason:
        print(f"SKIPPED bed {arguments.bed}: {reason}")
        return SKIPPED

    folders = [HERE / "cases" / folder for folder in [arguments.bed, *bed.shared]]
    cases = [case for folder in folders for path in sorted(folder.glob("*.case"))
             for case in read_cases(path) if fnmatch.fnmatch(case.name, arguments.only)]
    failed = 0
    bed.begin()
    try:
        with ThreadPoolExecutor(bed.parallel) as pool:
            for case, faults in pool.map(lambda c: run_case(bed, c, arguments.keep), cases):
                word = "SKIPPED" if faults is None else "FAILED" if faults else "passed"
                print(f"{word}  {arguments.bed}  {case.name}", flush=True)
                for fault in faults or []:
                    print("    " + fault.replace("\n", "\n    "), flush=True)
                failed += bool(faults)
    finally:
        bed.end()
    if not cases:
        print(f"no case of bed {arguments.bed} matches {arguments.only}")
        return 1
    print(f"{arguments.bed}: {len(cases) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
