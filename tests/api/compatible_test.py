#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""doc/api.yaml beside the record of it in abi/ and that of the last release: compatible_test.py SOURCE CASE.

Programs that know the recorded interface go on as they are: what there is stays, of the type that it has; what a request
could leave out still can; what a result always has it always has. Breaks are planted to see that each is found.
"""
import copy
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True
import api_document  # noqa: E402

SOURCE = pathlib.Path(sys.argv[1])
DOCUMENT = "doc/api.yaml"
RECORD = "abi/api.yaml"
WORDS = {"summary", "description", "version", "title"}  # for people


def losses(old, new, place=(), sent=False):
    """What somebody who knows the old would miss; sent is true in what goes to the appliance."""
    if isinstance(old, dict) and isinstance(new, dict):
        yield from lost_members(old, new, place, sent)
    elif isinstance(old, list) and isinstance(new, list):
        yield from lost_elements(old, new, place, sent)
    elif old != new and not (place[-1] == "required" and new is False):
        yield told("changed", place)


def told(what, place):
    return f"{what}: " + " ".join(str(step) for step in place)


def lost_members(old, new, place, sent):
    for name, value in old.items():
        if name in WORDS and not isinstance(value, dict):
            continue
        inside = sent or name in ("requestBody", "parameters")
        if name in new:
            yield from losses(value, new[name], (*place, name), inside)
        elif not (name == "required" and inside):
            yield told("gone", (*place, name))
    if "nullable" in new and "nullable" not in old and old:
        yield told("changed", (*place, "nullable"))
    if sent and "required" in new and "required" not in old:
        nothing = [] if isinstance(new["required"], list) else False
        yield from losses(nothing, new["required"], (*place, "required"), sent)


def named(element):
    """A parameter by its name, a part of a choice by itself."""
    return element.get("name", str(element)) if isinstance(element, dict) else element


def lost_elements(old, new, place, sent):
    known, present = ({named(one): one for one in both} for both in (old, new))
    needs = sent and place[-1] == "required"
    for name, element in known.items():
        if name in present:
            yield from losses(element, present[name], (*place, name), sent)
        elif not needs:
            yield told("gone", (*place, name))
    for name, element in present.items():
        fresh = name not in known
        if fresh and (needs or (place[-1] == "parameters" and element.get("required"))):
            yield told("needed now", (*place, name))


def document(name=DOCUMENT):
    return api_document.read((SOURCE / name).read_text())


def git(*words):
    return subprocess.run(["git", "-C", SOURCE, *words], capture_output=True, text=True, check=False)


def expect_none(found):
    assert not found, "\n".join([f"programs that know {RECORD} would miss:", *found])


def RecordIsStillServed():
    expect_none(list(losses(document(RECORD), document())))


def LastReleaseIsStillServed():
    tag = git("describe", "--tags", "--abbrev=0").stdout.strip()
    old = git("show", f"{tag}:{DOCUMENT}") if tag else None
    if not old or old.returncode != 0:
        print("no release has an interface over HTTP yet")
        return
    expect_none(list(losses(api_document.read(old.stdout), document())))


def body(made, path, method):
    return made["paths"][path][method]["requestBody"]["content"]["application/json"]["schema"]


def result(made, path):
    return made["paths"][path]["get"]["responses"]["200"]["content"]


def needs_parameter(made):
    made["paths"]["/diff"]["get"]["parameters"].append({"name": "depth", "in": "query", "required": True})


def needs_first_parameter(made):
    made["paths"]["/save"]["post"]["parameters"][0]["required"] = True


def other_media(made):
    content = result(made, "/metrics")
    content["text/html"] = content.pop("text/plain")


def fewer_words(made):
    made["components"]["schemas"]["switch"]["oneOf"].pop(0)


BREAKS = (
    ("gone: paths /save", lambda made: made["paths"].pop("/save")),
    ("gone: paths /rules post", lambda made: made["paths"]["/rules"].pop("post")),
    ("gone: paths / get security", lambda made: made["paths"]["/"]["get"].pop("security")),
    ("gone: paths /diff get parameters to", lambda made: made["paths"]["/diff"]["get"]["parameters"].pop()),
    ("needed now: paths /diff get parameters depth", needs_parameter),
    ("changed: paths /save post parameters comment required", needs_first_parameter),
    ("gone: paths /rules post requestBody content application/json schema properties priority",
     lambda made: body(made, "/rules", "post")["properties"].pop("priority")),
    ("changed: paths /rules post requestBody content application/json schema properties priority type",
     lambda made: body(made, "/rules", "post")["properties"]["priority"].update(type="string")),
    ("needed now: paths /rules post requestBody content application/json schema required target",
     lambda made: body(made, "/rules", "post")["required"].append("target")),
    ("needed now: paths /configuration-mode/leave post requestBody content application/json schema required save",
     lambda made: body(made, "/configuration-mode/leave", "post").update(required=["save"])),
    ("gone: paths /metrics get responses 200 content text/plain", other_media),
    ("changed: paths /rules get responses 200 content application/json schema type",
     lambda made: result(made, "/rules")["application/json"]["schema"].update(type="object")),
    ("gone: components schemas rule", lambda made: made["components"]["schemas"].pop("rule")),
    ("gone: components schemas account properties name",
     lambda made: made["components"]["schemas"]["account"]["properties"].pop("name")),
    ("gone: components schemas account required name",
     lambda made: made["components"]["schemas"]["account"]["required"].remove("name")),
    ("changed: components schemas account properties administrator type",
     lambda made: made["components"]["schemas"]["account"]["properties"]["administrator"].update(type="string")),
    ("changed: components schemas account properties name nullable",
     lambda made: made["components"]["schemas"]["account"]["properties"]["name"].update(nullable=True)),
    ("gone: components schemas switch oneOf {'type': 'string', 'enum': ['on']}", fewer_words),
    ("gone: components securitySchemes token", lambda made: made["components"]["securitySchemes"].pop("token")),
)


def more_parameters(made):
    made["paths"]["/diff"]["get"]["parameters"].append({"name": "depth", "in": "query", "required": False})


ADDITIONS = (
    lambda made: made["paths"].update({"/more": {"post": {"summary": "x", "parameters": [{"name": "y", "required": True}]}}}),
    lambda made: made["paths"]["/save"].update({"get": {"summary": "x"}}),
    more_parameters,
    lambda made: body(made, "/rules", "post")["properties"].update(comment={"type": "string"}),
    lambda made: body(made, "/rules", "post").pop("required"),
    lambda made: made["components"]["schemas"]["account"]["properties"].update(shell={"type": "string", "nullable": True}),
    lambda made: made["components"]["schemas"]["account"]["required"].append("shell"),
    lambda made: made["components"]["schemas"]["switch"]["oneOf"].append({"type": "string", "enum": ["perhaps"]}),
    lambda made: made["paths"]["/save"]["post"].update(summary="other words"),
)


def planted(change):
    known = document()
    made = copy.deepcopy(known)
    change(made)
    assert made != known, "nothing was planted"
    return list(losses(known, made))


def PlantedBreaksAreSeen():
    for name, change in BREAKS:
        assert planted(change) == [name], (name, planted(change))


def AdditionsAreTaken():
    for change in ADDITIONS:
        assert planted(change) == [], planted(change)


def EveryPartOfTheDocumentIsRead():
    made = document()
    text = (SOURCE / DOCUMENT).read_text()
    assert text.count("\n  /") == len(made["paths"]) > 50, len(made["paths"])
    assert text.count("      responses:\n") == sum(map(len, made["paths"].values())), "methods"
    assert set(made["components"]) == {"securitySchemes", "responses", "schemas"} and made["openapi"] == "3.0.3"


globals()[sys.argv[2]]()
