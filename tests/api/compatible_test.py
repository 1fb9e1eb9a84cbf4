#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""doc/api.yaml beside that of the last release, and of made-up ones: compatible_test.py SOURCE CASE.

Programs that know the released interface go on as they are: paths, methods, parameters and members of bodies stay, what
could be left out still can, and results keep their members.
"""
import pathlib, re, subprocess, sys

SOURCE = pathlib.Path(sys.argv[1])
DOCUMENT = "doc/api.yaml"


def facts(text):
    """Each as a line: what there is, and what must be given; the first may not go, nothing may join the second."""
    there, needed = set(), set()
    path = method = ""
    for line in text.splitlines():
        if re.match(r"  /\S*:$", line):
            path, method = line.strip(), ""
        elif path and re.match(r"    [a-z]+:$", line):
            method = line.strip()
            there.add(f"{path} {method}")
        elif path and method and line.startswith("        - {name: "):
            name = re.match(r'        - \{name: ("[^"]*"|[^,]*)', line)[1].strip('"')
            there.add(f"{path} {method} parameter {name}")
            if "required: true" in line:
                needed.add(f"{path} {method} parameter {name}")
        elif path and method and re.match(r' {16}"', line):
            there.add(f"{path} {method} member {line.split(chr(34))[1]}")
        elif path and method and re.match(r" {14}required: ", line):
            needed.update(f"{path} {method} member {name}" for name in re.findall(r'"([^"]*)"', line))
        elif path and method and re.match(r' {8}"2\d\d": ', line):
            there.update(f"{path} {method} result {name}" for name in re.findall(r'"([^"]+)": \{', line))
        elif re.match(r"    \w+: \{", line) and not line.startswith("    cookie") and not line.startswith("    token"):
            shape = line.strip().split(":")[0]
            there.update(f"shape {shape} {name}" for name in re.findall(r'"([^"]+)": \{', line))
        elif line == "components:":
            path = method = ""
    return there, needed


def losses(old, new):
    (there, needed), (there_now, needed_now) = facts(old), facts(new)
    gone = [f"gone: {fact}" for fact in sorted(there - there_now)]
    known = {" ".join(fact.split(" ")[:2]) for fact in there}
    return gone + [f"needed now: {fact}" for fact in sorted(needed_now - needed) if " ".join(fact.split(" ")[:2]) in known]


def document():
    return (SOURCE / DOCUMENT).read_text()


def git(*words):
    return subprocess.run(["git", "-C", SOURCE, *words], capture_output=True, text=True, check=False)


def LastReleaseIsStillServed():
    tag = git("describe", "--tags", "--abbrev=0").stdout.strip()
    old = git("show", f"{tag}:{DOCUMENT}") if tag else None
    if not old or old.returncode != 0:
        print("no release has an interface over HTTP yet")
        return
    found = losses(old.stdout, document())
    assert not found, "\n".join(found)


def WhatIsTakenAwayIsSeen():
    text = document()
    assert losses(text, text) == [] and len(facts(text)[0]) > 200, len(facts(text)[0])
    for loss, taken in (("gone: /rules: post:", lambda t: re.sub(r"(  /rules:\n(?:.*\n)*?)    post:\n", r"\1    patch:\n", t, count=1)),
                        ("gone: /rules: post: member priority", lambda t: t.replace('                "priority"', '                "prio"', 1)),
                        ("gone: shape account name", lambda t: t.replace('    account: {type: object, required: ["name"', "    account: {type: object, required: [", 1).replace('"name": {type: string}, "administrator"', '"administrator"', 1)),
                        ("needed now: /configuration-mode/leave: post: member save",
                         lambda t: re.sub(r"(/configuration-mode/leave:\n(?:.*\n)*?              type: object\n)", r'\1              required: ["save"]\n', t, count=1))):
        changed = taken(text)
        assert changed != text, loss
        assert loss in losses(text, changed), (loss, losses(text, changed))


def WhatIsAddedIsTaken():
    text = document()
    more = text.replace("  /save:\n", "  /more:\n    get:\n      summary: \"x\"\n  /save:\n", 1)
    assert more != text and losses(text, more) == []


globals()[sys.argv[2]]()
