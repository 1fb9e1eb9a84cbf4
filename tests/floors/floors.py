#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds who may include and call whom: floors.py SOURCES EXPORTS OBJECT... prints each line that does not, and fails.

sys/ knows nobody; store/ knows sys/; everybody else knows store/, sys/ and what lies in its own folder or in a folder
around that. Families reach each other through the exported functions of include/kestrove alone.
"""
import pathlib, re, subprocess, sys

sources, exports, objects = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
below = {"sys": {"sys"}, "store": {"store", "sys"}}
exported = set(re.findall(r"^\s+(\w+);", exports.read_text(), re.M))


def allowed(room, other):
    if room in below:
        return other in below[room]
    return other in ("store", "sys") or room == other or room.startswith(other + "/")


def room_of(path):
    return str(path.parent.relative_to(sources))


def included():
    for path in sorted([*sources.rglob("*.cpp"), *sources.rglob("*.h")]):
        for number, line in enumerate(path.read_text().splitlines(), 1):
            header = re.match(r'#include "(?!kestrove/)(.+)/[^/]+"', line)
            if header and not allowed(room_of(path), header[1]):
                yield f"{path}:{number}: {line}"


def called():
    symbols = [line.split() for line in subprocess.run(["nm", "-A", *objects], capture_output=True, text=True, check=True)
               .stdout.replace(": ", " ").replace(":", " ").splitlines()]
    source = {o: sources / re.search(r"/src/(.*)\.o$", o)[1] for o in objects}
    home = {name: source[o] for o, *_, kind, name in symbols if kind in "TDBR"}
    for o, *_, kind, name in symbols:
        if kind != "U" or name not in home or allowed(room_of(source[o]), room_of(home[name])):
            continue
        if room_of(source[o]) in below or not (name in exported or declared_around(source[o], home[name], name)):
            yield f"{source[o]} calls {name} of {home[name]}"


def declared_around(caller, definer, name):
    plain = subprocess.run(["c++filt", name], capture_output=True, text=True).stdout.split("(")[0].rpartition("::")[2].strip()
    around = set(caller.parents) & set(definer.parents) - set(sources.parents) - {sources}
    return any(re.search(rf"\b{plain}\(", h.read_text()) for folder in around for h in folder.glob("*.h"))


offences = [*included(), *called()]
print(*offences, f"{len(offences)} offences among {len(objects)} objects", sep="\n")
sys.exit(bool(offences) or not objects or not exported)
