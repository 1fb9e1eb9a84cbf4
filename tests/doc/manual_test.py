#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The manual pages, held to the programs: manual_test.py SOURCE BUILD CASE."""
import os
import pathlib
import re
import subprocess
import sys

SOURCE, BUILD = map(pathlib.Path, sys.argv[1:3])
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "scripts"))
import header_comments  # noqa: E402


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(complaints))


def page(name):
    """The source of a page, without the backslashes that guard its letters."""
    return (SOURCE / f"doc/man/{name}.scd").read_text(encoding="utf-8").replace("\\", "")


def lint(pages, level):
    """Where the pages lie, so that those which are links find the others."""
    said = subprocess.run(["mandoc", "-T", "lint", "-W", level, *pages], stdout=subprocess.PIPE, encoding="utf-8",
                          cwd=BUILD / "share/man")
    if said.returncode != 0 or said.stdout:
        sys.exit(f"FAILED: status {said.returncode}\n{said.stdout}")


def every_page_is_sound():
    built = sorted(path for path in (BUILD / "share/man").rglob("*") if path.is_file())
    sources = {path.stem for path in (SOURCE / "doc/man").glob("*.scd")}
    written = {path.name for path in built if path.suffix != ".3kestrove"}
    assert len(sources) >= 10 and written == sources, (sources, written)
    lint(built, "error")
    families = [path for path in built if re.fullmatch(r"(?:lib)?kestrove(?:-\w+)?\.3kestrove", path.name)]
    assert len(families) > 20, families
    lint(families, "warning")  # of a link it says that a link is fragile


def every_export_is_answered():
    exports = header_comments.read(SOURCE).exports
    asked = subprocess.run(["mman", "-M", BUILD / "share/man", "-w", *exports], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, encoding="utf-8")
    found = [pathlib.Path(line) for line in asked.stdout.splitlines()]
    none([f"man {name} finds nothing" for name in sorted({*exports} - {path.stem for path in found})])
    assert len(found) == len(exports) > 280, found
    none([f"{page} does not lead to a page that names it" for page in found if page.stem not in names_of(page)])


def names_of(link):
    """What the page behind a link says in its NAME section."""
    target = re.fullmatch(r"\.so (man3/kestrove-\w+\.3kestrove)\n", link.read_text(encoding="utf-8")).group(1)
    names = (BUILD / "share/man" / target).read_text(encoding="utf-8").split(".SH NAME\n")[1].split(" \\- ")[0]
    return names.replace("\\-", "-").split(", ")


def every_header_has_its_page():
    headers = {path.stem for path in (SOURCE / "include/kestrove").glob("*.h")} - {"api", "kestrove"}
    pages = {path.stem.removeprefix("kestrove-") for path in (BUILD / "share/man/man3").glob("kestrove-*")}
    assert len(headers) > 20, headers
    none([f"include/kestrove/{name}.h and section 3 differ" for name in sorted(headers ^ pages)])


def helps(*more):
    """Name of the page, program and what it says of itself; a width without a program's libraries has it not."""
    for name in ("shm-init.8", "kestrove-sim.8", "kestrove-monitor.8", "kestrove-api.8", "kestrove-snmp.8", *more):
        program = BUILD / ("sandbox" if name.endswith(".1") else "tools") / name[:-2]
        if name[:-2] not in os.environ["KESTROVE_LEFT_OUT"].split():
            yield name, program, subprocess.run([program, "--help"], stdout=subprocess.PIPE, encoding="utf-8", check=True).stdout


def every_option_is_in_its_page():
    for name, program, text in helps("kestrove-sandbox.1"):
        options = {*re.findall(r"^\s+(?:-\w,)?(--[\w-]+)", text, re.MULTILINE)}
        written = {*re.findall(r"^\*(--[\w-]+)\*", page(name), re.MULTILINE)}
        assert len(options) >= 4, text
        none([f"{name} and {program} --help differ: {option}" for option in sorted(options ^ written)])


def every_exit_code_is_in_its_page():
    for name, program, text in helps():
        codes = {*re.findall(r"(?:^ +|[:;]\s)(\d)\s", text.split("Exit status:")[1], re.MULTILINE)}
        written = {*re.findall(r"^\*(\d+)\*$", page(name), re.MULTILINE)}
        assert len(codes) >= 3, text
        none([f"{name} and {program} --help differ: exit {code}" for code in sorted(codes ^ written)])


def every_line_of_a_script_is_in_its_page():
    sources = [path.read_text(encoding="utf-8") for path in sorted((SOURCE / "src/state").glob("script*.cpp"))]
    literals = {text.strip() for source in sources for text in re.findall(r'"([^"\\]*)', source)}
    words = {text for text in literals if re.match(r"(?:set|ip|route6?|rule) |-\w+|\d+baseT", text)}
    options = {word for text in words for word in re.findall(r"-[A-Za-z]\w*$|^-\w+|\s-\w+", text)}
    lines = {text for text in words if not text.startswith("-")}
    assert len(lines) > 20 and len(options) > 10, (lines, options)
    text = re.sub(r"[*_]", "", page("kestrove-script.5"))
    none([f"kestrove-script(5) lacks {line}" for line in sorted(lines | {o.strip() for o in options}) if line not in text])


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (every_page_is_sound, every_export_is_answered, every_header_has_its_page,
                      every_option_is_in_its_page, every_exit_code_is_in_its_page,
                      every_line_of_a_script_is_in_its_page)}
CASES[sys.argv[3]]()
