#!/usr/bin/env python3
"""Changes one comparison, connective or constant of the hardware tests at a time and looks whether a
unit test notices.

Usage: mutation.py BUILD_DIRECTORY [--operators] [--sample N] [--seed N] [--only PATTERN...]

Works on a copy of the sources: BUILD_DIRECTORY is made for it. A change that does not compile does not
count. Prints every change that no test noticed, FILE:LINE and the line as changed; exit status 1 when
one of them does not stand in mutation_survivors.txt beside this file, with its reason.
"""

import argparse
import fnmatch
import os
import random
import re
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent

# What is changed, and what becomes of it. Blanks around operators keep templates and pointers out.
OPERATORS = [(" == ", " != "), (" != ", " == "), (" <= ", " < "), (" >= ", " > "), (" < ", " <= "),
             (" > ", " >= "), (" && ", " || "), (" || ", " && ")]
NUMBER = re.compile(r"(?<![\w.\"'])(0x[0-9A-Fa-f]+|\d+)(?![\w.'])")
SKIPPED_LINES = re.compile(r"^\s*(//|#|template|using|namespace|\*)|static_assert|__attribute__|NOLINT")


def without_texts(line):
    """The line with the inside of its texts and its comment blanked out, in the same columns."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda m: '"' + " " * (len(m.group()) - 2) + '"', line)
    comment = line.find("//")
    return line if comment < 0 else line[:comment]


def mutants_of(path, operators_alone=False):
    lines = path.read_text().splitlines(keepends=True)
    # What the instructions work on is data, whose many lanes nobody inspects.
    operators_alone = operators_alone or path.name.startswith("execution_")
    for number, line in enumerate(lines):
        if SKIPPED_LINES.search(line):
            continue
        code = without_texts(line)
        for old, new in OPERATORS:
            for match in re.finditer(re.escape(old), code):
                yield number, line[:match.start()] + new + line[match.end():]
        for match in () if operators_alone else NUMBER.finditer(code):
            base = 16 if match.group().startswith("0x") else 10
            changed = int(match.group(), base) + 1
            text = hex(changed) if base == 16 else str(changed)
            yield number, line[:match.start()] + text + line[match.end():]


def programs_for(path):
    """The test programs that can notice a change of this file."""
    floor = path.parent.name
    own = "tests_common_unittest" if floor == "common" else f"tests_{floor}_unittest"
    return [own, "scenes_unittest"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--operators", action="store_true", help="comparisons and connectives alone")
    parser.add_argument("--sample", type=int, default=0, help="as many changes, drawn at random (0: all)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default=["*"], nargs="+", help="files below src/tests that match")
    arguments = parser.parse_args()

    build = arguments.build.resolve()
    copy = build / "source"
    shutil.rmtree(copy, ignore_errors=True)
    # With times of their own: what a former run built last was a change.
    shutil.copytree(ROOT, copy, ignore=shutil.ignore_patterns("build", ".git"),
                    copy_function=shutil.copy)
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "check": False}
    configure = ["cmake", "-S", copy, "-B", build / "build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None",
                 "-DCMAKE_CXX_FLAGS=-O1 -w", "-DVORN_BENCHMARKS=OFF"]
    if subprocess.run(configure, **quiet).returncode != 0:
        sys.exit("cannot configure")

    files = [f for f in sorted((copy / "src" / "tests").rglob("*.cpp"))
             if any(fnmatch.fnmatch(str(f.relative_to(copy / "src" / "tests")), pattern)
                    for pattern in arguments.only)]
    mutants = [(f, *mutant) for f in files for mutant in mutants_of(f, arguments.operators)]
    if arguments.sample:
        mutants = random.Random(arguments.seed).sample(mutants, min(arguments.sample, len(mutants)))
    programs = sorted({p for f in files for p in programs_for(f)})
    if subprocess.run(["ninja", "-C", build / "build", *programs], **quiet).returncode != 0:
        sys.exit("the unchanged sources do not build")
    wanted = "^(" + "|".join(programs) + ")$"
    if subprocess.run(["ctest", "--test-dir", build / "build", "-R", wanted], **quiet).returncode != 0:
        sys.exit("the unchanged sources do not pass")
    environment = {**os.environ, "LOCPATH": str(build / "build" / "unittests" / "locales")}

    known = HERE / "mutation_survivors.txt"
    explained = known.read_text() if known.exists() else ""
    counts = {"noticed": 0, "not compiled": 0, "explained": 0, "unnoticed": 0}
    for path, number, changed in mutants:
        original = path.read_text()
        lines = original.splitlines(keepends=True)
        lines[number] = changed
        path.write_text("".join(lines))
        names = programs_for(path)
        if subprocess.run(["ninja", "-C", build / "build", *names], **quiet).returncode != 0:
            outcome = "not compiled"
        else:
            outcome = "unnoticed"
            for name in names:
                try:
                    # Scenes that execute instructions take seconds and tell nothing of other tests.
                    scenes = "*" if path.parent.name == "isa" else "-Scene_isa*"
                    command = [build / "build" / "bin" / name, "--gtest_fail_fast",
                               "--gtest_filter=" + scenes]
                    result = subprocess.run(command, cwd=build, env=environment, timeout=60, **quiet)
                    failed = result.returncode != 0
                except subprocess.TimeoutExpired:
                    failed = True
                if failed:
                    outcome = "noticed"
                    break
        path.write_text(original)
        if outcome == "unnoticed":
            place = f"{path.relative_to(copy)}: {changed.strip()}"
            outcome = "explained" if place in explained else outcome
            print(f"{outcome}  {place}", flush=True)
        counts[outcome] += 1
    print(", ".join(f"{count} {outcome}" for outcome, count in counts.items()))
    sys.exit(1 if counts["unnoticed"] else 0)


if __name__ == "__main__":
    main()
