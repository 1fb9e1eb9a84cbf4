#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Proves that scripts/abi.py sees what breaks programs: abi_breaks.py WIDTH=BUILD...

Each break is planted in a copy of the sources and built into a library beside the objects of the build; the check has
to refuse it and to name it. It also has to refuse a library without debug information, and to fail without its tools.
"""
import concurrent.futures
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import typing

sys.dont_write_bytecode = True
import abi  # noqa: E402

NEW_EXPORT = ("include/kestrove/library.h", "KESTROVE_API uint64_t",
              "KESTROVE_API int kestrove_new(void);\nKESTROVE_API uint64_t")
NEW_FUNCTION = ("src/store/strings.cpp", "int stringCopy(",
                '#include "kestrove/library.h"\nint kestrove_new(void) { return 0; }\nint stringCopy(')
MAP = "cmake/kestrove.map"


class Break(typing.NamedTuple):
    """Where which text becomes which, the source that is compiled anew, and what the refusal has to say."""

    name: str
    edits: tuple
    source: str
    named: tuple


BREAKS = (
    Break("removed export", ((MAP, "    stringCopy;\n", ""),), "",
          ("library.abi", "1 Removed function", "stringCopy")),
    Break("changed parameter",
          (("include/kestrove/text.h", "validateIntInBounds(int value", "validateIntInBounds(int64_t value"),
           ("src/store/strings.cpp", "validateIntInBounds(int value", "validateIntInBounds(int64_t value")),
          "src/store/strings.cpp", ("library.abi", "function int validateIntInBounds", "parameter 1 ")),
    Break("moved field",
          (("include/kestrove/layout.h", "  uint32_t minRate; ", "  uint32_t was; "),
           ("include/kestrove/layout.h", "  uint32_t minMtu; ", "  uint32_t minRate; "),
           ("include/kestrove/layout.h", "  uint32_t was; ", "  uint32_t minMtu; ")),
          "src/store/segment.cpp",
          ("library.abi", "'uint32_t minRate' offset changed", "'uint32_t minMtu' offset changed")),
    Break("moved field of a record that is handed over as bare memory",
          (("include/kestrove/engine.h", "  uint32_t bridging; ", "  uint32_t was; "),
           ("include/kestrove/engine.h", "  uint32_t ipv6Support; ", "  uint32_t bridging; "),
           ("include/kestrove/engine.h", "  uint32_t was; ", "  uint32_t ipv6Support; ")), "",
          ("headers.abi", "'uint32_t bridging' offset changed")),
    Break("changed enumeration value",
          (("include/kestrove/codes.h", "SHM_ITEM_FLAG_58 = 58", "SHM_ITEM_FLAG_58 = 59"),), "",
          ("headers.abi", "SHM_ITEM_FLAG_58")),
    Break("changed size",
          (("include/kestrove/layout.h", "char ddupStartupOptions[256];", "char ddupStartupOptions[260];"),),
          "src/store/segment.cpp", ("library.abi", "ddupStartupOptions", "type size changed")),
    Break("new export without a version", (NEW_EXPORT, NEW_FUNCTION, (MAP, "  local:\n    *;\n", "")),
          "src/store/strings.cpp", ("the map", "kestrove_new")),
    Break("new export in a version that is out",
          (NEW_EXPORT, NEW_FUNCTION, (MAP, "    kestrove_mark;", "    kestrove_mark;\n    kestrove_new;")),
          "src/store/strings.cpp", ("library.abi", "1 Added function", "kestrove_new")),
)


def copy_of(tree, root):
    for folder in ("include", "src"):
        shutil.copytree(abi.SOURCE / folder, root / folder)
    for file in (MAP, "abi/headers.cpp"):
        (root / file).parent.mkdir()
        shutil.copy(abi.SOURCE / file, root / file)
    return abi.Tree(tree.build, root)


def edit(root, file, old, new):
    text = (root / file).read_text()
    assert text.count(old) == 1, f"{file} has {text.count(old)} times {old!r}"
    (root / file).write_text(text.replace(old, new))


def link(tree, changed):
    """The library with the changed objects in front: abidw takes the first of two definitions of a record."""
    objects = tree.build / "CMakeFiles/kestrove_objects.dir"
    sources = [path.relative_to(objects).with_suffix("").as_posix() for path in sorted(objects.rglob("*.o"))]
    # A folder that lives long has objects of sources that are gone.
    others = [objects / (name + ".o") for name in sources if name not in changed and (abi.SOURCE / name).exists()]
    library = tree.root / "libkestrove.so"
    abi.run("g++", *tree.width(), "-shared", "-o", library, "-Wl,-soname,libkestrove.so.1",
            f"-Wl,--version-script={tree.root / MAP}", "-Wl,-Bsymbolic-functions,--as-needed", "-static-libstdc++",
            "-static-libgcc", *changed.values(), *others, "-lcrypt")
    return library


def build(tree, source):
    changed = {}
    if source:
        changed[source] = tree.root / "changed.o"
        tree.compile(source, changed[source])
    return link(tree, changed)


def refusal_of(tree, library, record):
    try:
        abi.gate(tree, library, record)
    except abi.Broken as broken:
        return str(broken)
    return ""


def require_refusal(what, refusal, named):
    missing = [word for word in named if word not in refusal]
    if missing:
        raise abi.Broken(f"a planted break is not caught: {what}: {missing[0]!r} is not in the refusal {refusal!r}")


def plant(tree, record, planted):
    with tempfile.TemporaryDirectory() as scratch:
        copy = copy_of(tree, pathlib.Path(scratch))
        for change in planted.edits:
            edit(copy.root, *change)
        refusal = refusal_of(copy, build(copy, planted.source), record)
    require_refusal(f"{planted.name} ({record.name})", refusal, planted.named)


def strip(tree, record):
    with tempfile.TemporaryDirectory() as scratch:
        bare = pathlib.Path(scratch) / "libkestrove.so"
        abi.run("strip", "-g", "-o", bare, tree.build / "libkestrove.so")
        refusal = refusal_of(tree, bare, record)
    require_refusal(f"no debug information ({record.name})", refusal, ("the debug information", "lacks", "stringCopy"))


def fail_without(tool, width):
    """With all other tools in reach."""
    with tempfile.TemporaryDirectory() as scratch:
        for other in set(abi.TOOLS) - {tool}:
            os.symlink(shutil.which(other), pathlib.Path(scratch) / other)
        done = subprocess.run([sys.executable, abi.__file__, width], env={"PATH": scratch}, stderr=subprocess.PIPE,
                              stdout=subprocess.PIPE, encoding="utf-8")
    if done.returncode == 0 or f"{tool} is missing" not in done.stderr:
        raise abi.Broken(f"without {tool} the check ends with {done.returncode}: {done.stderr}")


def main(arguments):
    tasks = [(fail_without, tool, arguments[0]) for tool in abi.TOOLS]
    for word in arguments:
        width, folder = word.split("=")
        tree, record = abi.Tree(abi.SOURCE / folder), abi.SOURCE / "abi" / width
        tasks += [(strip, tree, record), *((plant, tree, record, planted) for planted in BREAKS)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for done in [pool.submit(*task) for task in tasks]:
            done.result()
    print(f"abi: {len(BREAKS)} breaks planted in each width, all caught")


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except abi.Broken as broken:
        sys.exit(f"abi: {broken}")
