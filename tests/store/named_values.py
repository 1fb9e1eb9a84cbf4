#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Finds private names for what include/kestrove/codes.h names: named_values.py ROOT FOLDER... prints each and fails.

A constant or an enumerator counts when its value is that of a public name and its words are the last words of that name:
kVlanChange = 6 beside SHM_MODE_EVENT_VLAN_CHANGE = 6.
"""
import pathlib, re, sys

root, folders = pathlib.Path(sys.argv[1]), sys.argv[2:]


def numbers(text):
    """Name and number of what stands as NAME = number."""
    for name, value in re.findall(r"\b(\w+) = (0|[1-9]\d*|0x[0-9a-fA-F]+)[uU]?\s*(?=[,;}/\n])", text):
        yield name, int(value, 0)


public = {}
for name, value in numbers((root / "include/kestrove/codes.h").read_text()):
    words = name.lower().split("_")[1:]
    for start in range(len(words)):
        public.setdefault(("".join(words[start:]), value), name)
assert len(public) > 300, "the header of the names was not understood"

found = 0
for folder in folders:
    for path in sorted(p for p in (root / folder).rglob("*") if p.suffix in (".cpp", ".h")):
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if not re.search(r"\b(constexpr|enum)\b|^\s+k[A-Z]\w* = ", line):
                continue
            for name, value in numbers(line + "\n"):
                known = re.match(r"k[A-Z]", name) and public.get((name[1:].lower(), value))
                if known:
                    print(f"{path}:{number}: {name} is {known}")
                    found += 1
sys.exit(bool(found))
