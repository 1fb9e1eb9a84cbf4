#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The installed headers as data: what they declare, and what their comments say of it.

    import header_comments
    interface = header_comments.read(SOURCE)          # the root of the sources
    interface.families["routes"].head                 # paragraphs, a blank line between two
    interface.functions["addUserRoute"].comment       # of the function, or of the group that it stands in
    interface.records["RouteEntry"].members[0].remark

A comment right above declarations is that of all of them, up to the next blank line. A comment with a blank line behind
it is a remark on what follows in its header, up to the next such remark. header_comments.py [SOURCE] prints it as JSON.
"""
import dataclasses
import json
import pathlib
import re
import sys


@dataclasses.dataclass
class Parameter:
    """type: as in "const RouteEntry*"; extent: "[180]" of an array, else empty; both empty but for text "..."."""
    type: str
    name: str
    extent: str = ""
    text: str = ""


@dataclasses.dataclass
class Function:
    name: str
    result: str
    parameters: list  # of Parameter; empty for (void)
    prototype: str  # in one line, with its semicolon, without KESTROVE_API
    comment: str
    group: list  # names of all functions under the same comment, itself included
    section: str  # the remark that it stands under, or empty
    family: str
    exported: bool = True


@dataclasses.dataclass
class Variable:
    name: str
    type: str
    extent: str
    prototype: str
    comment: str
    group: list
    section: str
    family: str


@dataclasses.dataclass
class Callback:
    """A typedef of a pointer to function."""
    name: str
    result: str
    parameters: list
    prototype: str
    comment: str
    family: str


@dataclasses.dataclass
class Member:
    type: str
    name: str
    extent: str  # "[16]", as written
    remark: str


@dataclasses.dataclass
class Record:
    name: str
    members: list  # of Member
    comment: str
    family: str


@dataclasses.dataclass
class Constant:
    """value: as written, or what the enum counts up to; group: the comment of its enum, empty for a macro."""
    name: str
    value: str
    remark: str
    group: str
    family: str


@dataclasses.dataclass
class Family:
    name: str  # "routes"
    header: str  # "kestrove/routes.h"
    head: str
    entries: list = dataclasses.field(default_factory=list)  # in order: str (a remark), lists of what shares a comment


@dataclasses.dataclass
class Interface:
    families: dict = dataclasses.field(default_factory=dict)
    functions: dict = dataclasses.field(default_factory=dict)
    variables: dict = dataclasses.field(default_factory=dict)
    callbacks: dict = dataclasses.field(default_factory=dict)
    records: dict = dataclasses.field(default_factory=dict)
    constants: dict = dataclasses.field(default_factory=dict)
    macros: dict = dataclasses.field(default_factory=dict)
    exports: list = dataclasses.field(default_factory=list)  # names of the export list: functions and variables


COMMENT = re.compile(r"/\*(.*?)\*/", re.DOTALL)
SKIPPED = re.compile(r'extern "C" \{|\}|#(?!define \w+ )[^\n]*(?:\\\n[^\n]*)*')
FUNCTION = re.compile(r"(.*?[\s*])(\w+)\((.*)\);", re.DOTALL)
INLINE = re.compile(r"^static inline ([^;{]*\)) \{\n.*?^\}", re.DOTALL | re.MULTILINE)
VARIABLE = re.compile(r"extern (.*?[\s*])(\w+)((?:\[\w*\])*);", re.DOTALL)
CALLBACK = re.compile(r"typedef (.*?)\(\*(\w+)\)\((.*)\);", re.DOTALL)
RECORD = re.compile(r"typedef struct \w+ \{(.*)\} (\w+);", re.DOTALL)
ENUM = re.compile(r"enum \{(.*)\};", re.DOTALL)
MACRO = re.compile(r"#define (\w+) (.*)", re.DOTALL)
DECLARED = re.compile(r"([\w\s*]+?[\s*])(\w+)((?:\[\w*\])*)", re.DOTALL)


def plain(comment):
    """The text of a comment: paragraphs of one line each, a blank line between two."""
    lines = [re.sub(r"^\s*\* ?", "", line).strip() for line in comment.strip().splitlines()]
    return "\n\n".join(" ".join(part.split()) for part in re.split(r"\n\s*\n", "\n".join(lines)))


def one_line(text):
    return re.sub(r"\( ", "(", " ".join(text.split()))


def pieces(text):
    """Comments, blank lines and declarations of a header: (kind, text, remark behind it)."""
    place = 0
    while place < len(text):
        blank = re.compile(r"\s*\n\s*\n\s*|\s+").match(text, place)
        comment = COMMENT.match(text, place)
        skipped = SKIPPED.match(text, place)
        if blank:
            if blank.group().count("\n") > 1:
                yield "blank", "", ""
            place = blank.end()
        elif comment:
            yield "comment", plain(comment.group(1)), ""
            place = comment.end()
        elif skipped:
            yield "skipped", "", ""
            place = skipped.end()
        else:
            end = end_of_declaration(text, place)
            remark = re.compile(r"[ \t]*/\*(.*?)\*/[ \t]*(?=\n)").match(text, end)
            yield "declaration", text[place:end], plain(remark.group(1)) if remark else ""
            place = remark.end() if remark else end


def end_of_declaration(text, place):
    """Behind the ";" that is in no braces; of a macro, its value's end."""
    if text.startswith("#define", place):
        return re.compile(r"#define[^\n]*?(?=\s*(?:/\*|\n))").match(text, place).end()
    depth = 0
    for found in re.compile(r"/\*.*?\*/|[{};]", re.DOTALL).finditer(text, place):
        depth += {"{": 1, "}": -1}.get(found.group(), 0)
        if found.group() == ";" and depth == 0:
            return found.end()
    raise ValueError(f"a declaration without end: {text[place:place + 60]!r}")


def split_parameters(text):
    depth, parts = 0, [""]
    for letter in text:
        depth += {"(": 1, ")": -1}.get(letter, 0)
        if letter == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += letter
    return [one_line(part) for part in parts]


def parameter_of(text):
    declared = DECLARED.fullmatch(text)
    if text == "..." or not declared:
        return Parameter("", "", "", text)
    return Parameter(one_line(declared.group(1)), declared.group(2), declared.group(3), text)


def parameters_of(text):
    return [] if text.strip() == "void" else [parameter_of(part) for part in split_parameters(text)]


def remarked_lines(body):
    """(what stands before a remark, the remark) for each member or constant; a remark may stand on its next lines."""
    for declared, remark in re.findall(r"([^/]+?)[,;]?[ \t]*(?:/\*(.*?)\*/)?[ \t]*(?:\n|$)", body, re.DOTALL):
        for part in re.split(r"[,;]", declared):
            if part.strip():
                yield one_line(part), plain(remark)


def members_of(body):
    for declared, remark in remarked_lines(body):
        found = DECLARED.fullmatch(declared)
        yield Member(one_line(found.group(1)), found.group(2), found.group(3), remark)


def constants_of(body, comment, family):
    following = 0
    for declared, remark in remarked_lines(body):
        name, _, value = (part.strip() for part in declared.partition("="))
        value = value or str(following)
        following = number(value) + 1
        yield Constant(name, value, remark, comment, family)


def number(value):
    shifted = re.fullmatch(r"(\d+) << (\d+)", value)
    return int(shifted.group(1)) << int(shifted.group(2)) if shifted else int(value.rstrip("uUlL"), 0)


class Reader:
    def __init__(self, family, interface):
        self.family, self.interface = family, interface
        self.comment, self.section, self.together = "", "", []

    def read(self, text):
        kinds = list(pieces(INLINE.sub(r"\1;", text)))
        assert kinds[0][1].startswith("SPDX"), self.family.header
        for kind, what, remark in kinds[1:]:
            getattr(self, "on_" + kind)(what, remark)
        self.close()

    def close(self):
        if self.together:
            for entry in self.together:
                if isinstance(entry, (Function, Variable)):
                    entry.group = [other.name for other in self.together if isinstance(other, (Function, Variable))]
            self.family.entries.append(self.together)
        self.comment, self.together = "", []

    def comment_alone(self):
        if not self.comment or self.together:
            return
        if self.family.head:
            self.section = self.comment
            self.family.entries.append(self.comment)
        else:
            self.family.head = self.comment

    def on_comment(self, text, _remark):
        self.comment_alone()
        self.close()
        self.comment = text

    def on_blank(self, _what, _remark):
        self.comment_alone()
        self.close()

    def on_skipped(self, _what, _remark):
        self.comment_alone()
        self.close()

    def on_declaration(self, text, remark):
        for pattern, take in ((RECORD, self.record), (ENUM, self.enum), (MACRO, self.macro), (CALLBACK, self.callback)):
            found = pattern.fullmatch(text)
            if found:
                return take(found, text, remark)
        text = text.replace("KESTROVE_API ", "")
        found = VARIABLE.fullmatch(text)
        return self.variable(found, text) if found else self.function(FUNCTION.fullmatch(text), text)

    def add(self, entry, table):
        table[entry.name] = entry
        self.together.append(entry)

    def record(self, found, _text, _remark):
        members = list(members_of(found.group(1)))
        self.add(Record(found.group(2), members, self.comment, self.family.name), self.interface.records)

    def enum(self, found, _text, _remark):
        for constant in constants_of(found.group(1), self.comment, self.family.name):
            self.add(constant, self.interface.constants)

    def macro(self, found, _text, remark):
        self.add(Constant(found.group(1), found.group(2), remark or self.comment, "", self.family.name),
                 self.interface.macros)

    def callback(self, found, text, _remark):
        self.add(Callback(found.group(2), one_line(found.group(1)), parameters_of(found.group(3)), one_line(text),
                          self.comment, self.family.name), self.interface.callbacks)

    def variable(self, found, text):
        self.add(Variable(found.group(2), one_line(found.group(1)), found.group(3), one_line(text), self.comment, [],
                          self.section, self.family.name), self.interface.variables)

    def function(self, found, text):
        assert found, f"{self.family.header}: not understood: {text}"
        self.add(Function(found.group(2), one_line(found.group(1)), parameters_of(found.group(3)), one_line(text),
                          self.comment, [], self.section, self.family.name), self.interface.functions)


def exports_of(text):
    """The names of the export list, of all its versions."""
    return re.findall(r"^ +(\w+);", re.sub(r"/\*.*?\*/|#[^\n]*", "", text, flags=re.DOTALL), re.MULTILINE)


def read(source):
    """All of include/kestrove and cmake/kestrove.map below a root."""
    source = pathlib.Path(source)
    interface = Interface(exports=exports_of((source / "cmake/kestrove.map").read_text(encoding="utf-8")))
    for path in sorted((source / "include/kestrove").glob("*.h")):
        family = Family(path.stem, f"kestrove/{path.name}", "")
        interface.families[family.name] = family
        Reader(family, interface).read(path.read_text(encoding="utf-8"))
    for function in interface.functions.values():
        function.exported = function.name in interface.exports
    return interface


if __name__ == "__main__":
    root = sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent
    json.dump(dataclasses.asdict(read(root)), sys.stdout, indent=1)
