#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the library to the record of its interface: abi.py [--write] WIDTH=BUILD...

Two dumps make the record of a width: abi/WIDTH/library.abi, the exported names with their prototypes and the records
that these reach, read from the debug information of a build; abi/WIDTH/headers.abi, what the headers alone tell, the
values of the enumerations and the records handed over as bare memory. Any difference fails. So does a dump that lacks
an exported name or a public record, and a missing tool.
"""
import json
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

SOURCE = pathlib.Path(__file__).resolve().parent.parent
DUMPS = ("library.abi", "headers.abi")
TOOLS = ("abidw", "abidiff", "g++")
DUMP = ["abidw", "--no-comp-dir-path", "--no-corpus-path", "--no-show-locs", "--type-id-style", "hash"]


class Broken(Exception):
    """The interface is not what the record says; the text says why."""


def run(*command):
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout


class Tree:
    """The sources of a library and how a build compiles them; a scratch copy has some of them of its own."""

    def __init__(self, build, root=SOURCE):
        self.build, self.root = build, root
        commands = json.loads((build / "compile_commands.json").read_text())
        self.commands = {pathlib.Path(entry["file"]).relative_to(SOURCE).as_posix(): entry for entry in commands
                         if "kestrove_objects.dir" in entry["command"]}

    def compile(self, source, into):
        """A source of the library, as the build does it, with the headers of this tree."""
        entry = self.commands[source]
        words = [word.replace(f"-I{SOURCE}/", f"-I{self.root}/") for word in shlex.split(entry["command"])]
        words[words.index("-o") + 1] = into
        subprocess.run([*words[:words.index("-c")], "-c", self.root / source], check=True, cwd=entry["directory"])

    def width(self):
        return [word for word in shlex.split(next(iter(self.commands.values()))["command"]) if word in ("-m32", "-m64")]


def exported_names(tree):
    listed = (tree.root / "cmake/kestrove.map").read_text().split("local:")[0]
    names = set(re.findall(r"^ +(\w+);", listed, re.MULTILINE))
    assert len(names) > 250, f"cmake/kestrove.map lists {len(names)} names"
    return names


def public_records(tree):
    headers = "".join(path.read_text() for path in sorted((tree.root / "include/kestrove").glob("*.h")))
    names = set(re.findall(r"^typedef struct (\w+)", headers, re.MULTILINE))
    assert len(names) > 20 and "ShmData" in names, names
    return names


def public_values(tree):
    headers = "".join(path.read_text() for path in sorted((tree.root / "include/kestrove").glob("*.h")))
    headers = re.sub(r"/\*.*?\*/", "", headers, flags=re.DOTALL)
    blocks = re.findall(r"^enum {(.*?)}", headers, re.MULTILINE | re.DOTALL)
    names = {name for block in blocks for name in re.findall(r"\b([A-Z]\w+)\b(?= =|,|\s*$)", block)}
    assert len(names) > 200, f"the headers name {len(names)} values"
    return names


def dump_library(library, into):
    run(*DUMP, "--exported-interfaces-only", "--out-file", into, library)


def dump_headers(tree, into):
    with tempfile.NamedTemporaryFile(suffix=".so") as shared:
        run("g++", *tree.width(), "-std=c++11", "-g", "-fPIC", "-shared", f"-I{tree.root}/include",
            f"-ffile-prefix-map={tree.root}=../..", "-o", shared.name, tree.root / "abi/headers.cpp")
        run(*DUMP, "--out-file", into, shared.name)


def dump(tree, library, folder):
    folder.mkdir(parents=True, exist_ok=True)
    dump_library(library, folder / "library.abi")
    dump_headers(tree, folder / "headers.abi")
    for name in DUMPS:
        text = (folder / name).read_text()
        (folder / name).write_text(text.replace(f"'{SOURCE}/", "'../../"))


def names_in(root, kind, attribute="name"):
    return {found.get(attribute) for found in root.iter(kind)}


def records_in(root):
    return {found.get("name") for found in root.iter("class-decl")
            if found.get("size-in-bits") and found.find("data-member") is not None}


def lacks(what, wanted, there):
    if wanted - there:
        raise Broken(f"{what} lacks {', '.join(sorted(wanted - there))}")


def require_whole(tree, folder):
    """A dump without debug information, or of another thing, would agree with anything."""
    if not (folder / "library.abi").is_file():
        raise Broken(f"abi/{folder.name} holds no record: make it with scripts/abi --write")
    library, headers = (xml.etree.ElementTree.parse(folder / name).getroot() for name in DUMPS)
    exports = exported_names(tree)
    where = folder.name
    symbols = {symbol.get("name"): symbol.get("version") for symbol in library.iter("elf-symbol")}
    lacks(f"the library ({where})", exports, {name for name, version in symbols.items() if version})
    lacks(f"the map of exported names ({where})", set(symbols), exports)
    declared = names_in(library, "function-decl", "elf-symbol-id") | names_in(library, "var-decl", "elf-symbol-id")
    lacks(f"the debug information ({where})", exports, {str(name).split("@")[0] for name in declared})
    lacks(f"the dump of the library ({where})", {"ShmData"}, records_in(library))
    lacks(f"the two dumps ({where})", public_records(tree), records_in(library) | records_in(headers))
    lacks(f"the dump of the headers ({where})", public_values(tree), names_in(headers, "enumerator"))


def require_same(record, folder):
    reports = []
    for name in DUMPS:
        done = subprocess.run(["abidiff", record / name, folder / name], stdout=subprocess.PIPE, encoding="utf-8")
        if done.returncode != 0:
            reports.append(f"abidiff of {record.name}/{name} ends with {done.returncode}:\n{done.stdout}")
    if reports:
        raise Broken("".join(reports))


def require_no_place(folder):
    """Whoever makes a record leaves no path of the machine in it."""
    for name in DUMPS:
        places = re.findall(r"='(/[^']*)'", (folder / name).read_text())
        if places:
            raise Broken(f"{name} has paths of this machine: {places[0]}")


def gate(tree, library, record):
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch) / record.name
        dump(tree, library, folder)
        require_whole(tree, folder)
        require_same(record, folder)


def write(tree, record):
    dump(tree, tree.build / "libkestrove.so", record)
    require_whole(tree, record)
    require_no_place(record)
    print(f"abi: abi/{record.name} written")


def check(tree, record):
    require_whole(tree, record)
    gate(tree, tree.build / "libkestrove.so", record)
    print(f"abi: {record.name} is what abi/{record.name} records")


def main(arguments):
    for tool in TOOLS:
        if not shutil.which(tool):
            raise Broken(f"{tool} is missing; scripts/setup abi installs it")
    act = write if "--write" in arguments else check
    for word in arguments:
        if word != "--write":
            width, build = word.split("=")
            act(Tree(SOURCE / build), SOURCE / "abi" / width)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except Broken as broken:
        sys.exit(f"abi: {broken}")
