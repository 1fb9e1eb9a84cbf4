#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The code blocks of the documents, compiled and run: blocks_test.py SOURCE BUILD WIDTH CASE. Inside the sandbox alone.

A block's language says how it is checked. One that cannot be checked stands behind a line that says why:
<!-- not checked: REASON -->
"""
import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile

SOURCE, BUILD, WIDTH, CASE = (*map(pathlib.Path, sys.argv[1:3]), *sys.argv[3:])
UNCHECKED = 3  # a drawing, a synopsis, and a build that takes minutes: no more without a reason as good
MARK = re.compile(r"<!-- not checked: \S.*-->")
LANGUAGES = {"c", "cpp", "python", "sh", "conf", "yaml", "ini"}  # the last two: by the tests of the fleet
COMPILERS = {"c": ["cc", "-std=c11"], "cpp": ["c++", "-std=c++17"]}
Block = collections.namedtuple("Block", "place language text unchecked")


def blocks_of(document):
    place, lines, before = None, [], ""
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        if place is None and line.startswith("```"):
            place = f"{document.relative_to(SOURCE)}:{number}"
            language, unchecked, lines = line[3:], bool(MARK.fullmatch(before)), []
        elif place and line == "```":
            yield Block(place, language, "\n".join(lines) + "\n", unchecked)
            place = None
        else:
            lines.append(line)
        before = line
    assert place is None, f"{place} has no end"


DOCUMENTS = [*(SOURCE / name for name in ("README.md", "CONTRIBUTING.md", "sandbox/README.md")),
             *sorted(SOURCE.glob("doc/*.md"))]
BLOCKS = [block for document in DOCUMENTS for block in blocks_of(document)]


def checked(*languages):
    return [block for block in BLOCKS if block.language in languages and not block.unchecked]


def run(block, command, **options):
    done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=120, **options)
    if done.returncode != 0:
        sys.exit(f"FAILED: {block.place}: {command} gave {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout + done.stderr


def new_store():
    examples = SOURCE / "sandbox/examples"
    subprocess.run(f"cp {examples}/* /etc/config; shm-init --replace", shell=True, check=True)


def compiled(block, folder):
    """The program of a C or C++ block, linked against this build's library."""
    source = folder / f"front_end.{block.language}"
    source.write_text(block.text, encoding="utf-8")
    flags = [f"-m{WIDTH}", "-Wall", "-Wextra", "-Werror", f"-I{SOURCE}/include", f"-L{BUILD}", f"-Wl,-rpath,{BUILD}"]
    run(block, [*COMPILERS[block.language], source, "-o", folder / "front_end", *flags, "-lkestrove"])
    return folder / "front_end"


def every_program_is_compiled_and_runs():
    programs = checked(*COMPILERS)
    assert len(programs) >= 6, programs
    for block in programs:
        new_store()
        with tempfile.TemporaryDirectory() as folder:
            run(block, [compiled(block, pathlib.Path(folder))])


def install_links():
    """What a command finds where an installation has it."""
    for place, target in (("lib/libkestrove.so", BUILD), ("lib/libkestrove.so.1", BUILD),
                          ("include/kestrove", SOURCE / "include")):
        link = pathlib.Path("/usr/local") / place
        if not link.exists():
            link.symlink_to(target / link.name)
    os.environ["PATH"] = f"{BUILD}/sandbox:{os.environ['PATH']}"
    os.environ["PYTHONPATH"] = str(SOURCE / "python")
    os.environ["KESTROVE_LIBRARY"] = str(BUILD / "libkestrove.so.1")


# What make would do is only said: a target that is not there fails all the same.
PREAMBLES = {"sh": "set -euo pipefail; make() { command make -n \"$@\" >/dev/null; }\n", "python": ""}
INTERPRETERS = {"sh": ["bash", "-c"], "python": ["/usr/bin/python3", "-c"]}


def every_command_runs():
    install_links()
    commands = checked("sh", "python")
    assert len(commands) >= 6, commands
    with tempfile.TemporaryDirectory() as folder:
        for entry in SOURCE.iterdir():
            (pathlib.Path(folder) / entry.name).symlink_to(entry)
        for block in BLOCKS:
            if block.language == "c":  # what is shown before a command is what it compiles
                (pathlib.Path(folder) / "front_end.c").write_text(block.text, encoding="utf-8")
            if block in commands:
                new_store()
                run(block, INTERPRETERS[block.language] + [PREAMBLES[block.language] + block.text], cwd=folder)


def every_configuration_is_taken():
    samples = checked("conf")
    assert samples, "no document shows a configuration file"
    for block in samples:
        new_store()
        with tempfile.NamedTemporaryFile("w", suffix=".conf") as file:
            file.write(block.text)
            file.flush()
            said = run(block, ["kestrovectl", "load", file.name])
        if "not taken as it stands" in said:
            sys.exit(f"FAILED: {block.place}: {said}")


def every_block_is_checked_or_says_why_not():
    strange = [block.place for block in BLOCKS if not block.unchecked and block.language not in LANGUAGES]
    if strange:
        sys.exit(f"FAILED: neither checked nor marked with the reason: {strange}")
    unchecked = [block.place for block in BLOCKS if block.unchecked]
    if len(unchecked) != UNCHECKED:
        sys.exit(f"FAILED: {len(unchecked)} blocks are not checked, not {UNCHECKED}: {unchecked}")


if not pathlib.Path("/run/kestrove/inside").exists():
    sys.exit("blocks_test: only inside the sandbox")
CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (every_program_is_compiled_and_runs, every_command_runs, every_configuration_is_taken,
                      every_block_is_checked_or_says_why_not)}
CASES[CASE]()
