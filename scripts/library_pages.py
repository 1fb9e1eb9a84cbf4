#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Section 3 of the manual, made from the headers' comments: library_pages.py SOURCE FOLDER VERSION

A page for each header, one that names them all, and a link for each exported name. The files end in .3kestrove, so that
none has the name of another package's page; man finds them in section 3 all the same.
"""
import datetime
import os
import pathlib
import re
import sys

import header_comments

SECTION = "3kestrove"
INDEX = "libkestrove"
NOT_A_FAMILY = {"api", "kestrove"}  # the mark of an export, and the header that includes all others
PROGRAM_PAGES = "kestrovectl(8), kestrove.conf(5), kestrove(7)"


def page_of(family):
    return f"kestrove-{family}"


def families_of(interface):
    return [family for family in interface.families.values() if family.name not in NOT_A_FAMILY]


def names_of(interface, family):
    """What the family exports, in the header's order."""
    tables = [*interface.functions.values(), *interface.variables.values()]
    return [entry.name for entry in tables if entry.family == family.name]


def day():
    seconds = os.environ.get("SOURCE_DATE_EPOCH")
    now = datetime.timezone.utc
    return (datetime.datetime.fromtimestamp(int(seconds), now) if seconds else datetime.datetime.now(now)).date()


class Text:
    """Plain text as roff: known names in bold, signs guarded, no line that reads as a request."""

    def __init__(self, interface):
        self.bold = {*interface.exports, *interface.constants, *interface.macros, *interface.records,
                     *interface.callbacks} - {"shm", "fp", "reboot"}

    def guarded(self, text):
        text = text.replace("\\", "\\e")
        return re.sub(r"(?<![\w])-|(?<=\w)-(?=\w*[/.])|(?<=/)-", r"\\-", text)

    def line(self, text):
        text = re.sub(r"\b\w+\b", lambda word: f"\\fB{word[0]}\\fP" if word[0] in self.bold else word[0],
                      self.guarded(text))
        return re.sub(r"^(?=[.'])", r"\\&", text)

    def paragraphs(self, text):
        """Lines of roff, one a sentence."""
        for number, paragraph in enumerate(text.split("\n\n")):
            if number:
                yield ".PP"
            yield from (self.line(part) for part in re.split(r"(?<=[.;:]) (?=[A-Z\"(])", paragraph))

    def inside(self, text):
        """Paragraphs that stay in the place of the one before."""
        return [".IP" if line == ".PP" else line for line in self.paragraphs(text)]


class Page:
    def __init__(self, interface, text, family, version):
        self.interface, self.text, self.family, self.version = interface, text, family, version
        self.title, _, self.more = family.head.partition(".")
        self.lines = []

    def made(self):
        for part in (self.heading, self.synopsis, self.description, self.functions, self.types, self.constants,
                     self.errors, self.see_also):
            part()
        return joined(self.lines)

    def heading(self):
        page = page_of(self.family.name)
        names = ", ".join([page, *names_of(self.interface, self.family)])
        title = self.title if self.title[:2].isupper() else self.title[0].lower() + self.title[1:]
        self.lines += [title_line(page, self.version), ".SH NAME", f"{self.text.guarded(names)} \\- {title}"]

    def synopsis(self):
        self.lines += [".SH SYNOPSIS", ".nf", f"\\fB#include <{self.family.header}>\\fP", ".PP"]
        for entry in self.entries(header_comments.Variable, header_comments.Function):
            self.lines += [f"\\fB{self.text.guarded(line)}\\fP" for line in folded(entry.prototype)]
        self.lines += [".fi", ".PP", "Link with", "\\fI\\-lkestrove\\fP."]

    def description(self):
        if self.more.strip():
            self.lines += [".SH DESCRIPTION", *self.text.paragraphs(self.more.strip())]

    def entries(self, *kinds):
        for together in self.family.entries:
            yield from (entry for entry in together if isinstance(entry, kinds))

    def functions(self):
        """The header's own order: remarks, and what shares a comment together."""
        self.lines += [".SH FUNCTIONS AND VARIABLES"] if names_of(self.interface, self.family) else []
        for together in self.family.entries:
            if isinstance(together, str):
                self.lines += [".PP", *self.text.paragraphs(together)]
            elif isinstance(together[0], (header_comments.Function, header_comments.Variable)):
                self.tagged([entry.prototype for entry in together], together[0].comment)

    def tagged(self, heads, comment):
        for number, head in enumerate(heads):
            self.lines += [".TQ" if number else ".TP", f"\\fB{self.text.guarded(head)}\\fP"]
        self.lines += self.text.inside(comment)

    def types(self):
        records = [*self.entries(header_comments.Record)]
        self.lines += [".SH TYPES"] if records or [*self.entries(header_comments.Callback)] else []
        for callback in self.entries(header_comments.Callback):
            self.tagged([callback.prototype], callback.comment)
        for record in records:
            self.lines += [f".SS {record.name}", *self.text.paragraphs(record.comment)]
            for member in record.members:
                self.tagged([f"{member.type} {member.name}{member.extent}"], member.remark)

    def constants(self):
        constants = [*self.entries(header_comments.Constant)]
        self.lines += [".SH CONSTANTS"] if constants else []
        group = None
        for constant in constants:
            if constant.group != group:
                group = constant.group
                self.lines += [".PP", *self.text.paragraphs(group)]
            self.tagged([f"{constant.name} = {constant.value}"], constant.remark)

    def errors(self):
        """The codes that the page speaks of, by name or by number."""
        said = "\n".join([self.family.head, *(str(entry) for entry in self.family.entries)])
        numbers = {number for run in re.findall(r"\bcodes? ((?:\d+(?:, | or | and )?)+)", said)
                   for number in re.findall(r"\d+", run)}
        codes = [code for code in self.interface.constants.values() if code.family == "errors" and code.remark and
                 (code.value in numbers or re.search(rf"\b{code.name}\b", said))]
        if not names_of(self.interface, self.family) or not codes:
            return
        self.lines += [".SH ERRORS",
                       "A failure leaves one of these codes in \\fBshm_errno\\fP, a success never clears it."]
        for code in codes:
            self.tagged([f"{code.value} {code.name}"], code.remark[0].upper() + code.remark[1:] + ".")

    def see_also(self):
        others = {other.name for other in families_of(self.interface)
                  if re.search(rf"\b{other.name}\.h\b", str(self.family)) and other.name != self.family.name}
        pages = [INDEX, *(page_of(name) for name in sorted({*others, "segment", "errors"} - {self.family.name}))]
        self.lines += see_also(pages, self.text)


def joined(lines):
    """Without a paragraph break where a heading makes one, and without an empty line."""
    kept = [""]
    for line in lines:
        if line and not (line == ".PP" and kept[-1].startswith((".SH", ".SS", ".PP"))):
            kept.append(line)
    return "\n".join(kept[1:]) + "\n"


def see_also(pages, text):
    own = [f"\\fB{text.guarded(page)}\\fP({SECTION})" for page in pages]
    programs = re.sub(r"([\w.]+)(?=\()", r"\\fB\1\\fP", PROGRAM_PAGES)
    return [".SH SEE ALSO", ", ".join(own + [programs])]


def title_line(page, version):
    return f'.TH {page.upper()} {SECTION} {day()} "libkestrove {version}" "libkestrove"\n.nh\n.ad l'


def folded(prototype, width=76):
    """The prototype in lines, its parameters below one another where it is long."""
    lines, indent = [prototype], " " * (prototype.index("(") + 1 if "(" in prototype else 8)
    while len(lines[-1]) > width and ", " in lines[-1][:width].strip():
        head, tail = lines[-1][:width].rsplit(", ", 1)
        lines[-1:] = [head + ",", indent + tail + lines[-1][width:]]
    return lines


def index(interface, text, version):
    lines = [title_line(INDEX, version), ".SH NAME", f"{INDEX} \\- configuration and management of the appliance",
             ".SH SYNOPSIS", ".nf", "\\fB#include <kestrove/kestrove.h>\\fP", ".fi", ".PP", "Link with",
             "\\fI\\-lkestrove\\fP.", ".SH DESCRIPTION",
             "The interface in families, a header and a page each, with all that they export."]
    for family in families_of(interface):
        names = ", ".join(f"\\fB{name}\\fP" for name in names_of(interface, family))
        lines += [".TP", f"\\fB{text.guarded(page_of(family.name))}\\fP({SECTION})",
                  text.line(family.head.partition(".")[0] + "."), *([".br", names] if names else [])]
    return "\n".join(lines + see_also(["kestrove-segment", "kestrove-errors"], text)) + "\n"


def write(source, folder, version):
    interface = header_comments.read(source)
    text = Text(interface)
    folder.mkdir(parents=True, exist_ok=True)
    pages = {INDEX: index(interface, text, version)}
    for family in families_of(interface):
        pages[page_of(family.name)] = Page(interface, text, family, version).made()
        for name in names_of(interface, family):
            pages[name] = f".so man3/{page_of(family.name)}.{SECTION}\n"
    for old in {path.name for path in folder.iterdir()} - {f"{page}.{SECTION}" for page in pages}:
        (folder / old).unlink()
    for page, content in pages.items():
        (folder / f"{page}.{SECTION}").write_text(content, encoding="utf-8")


if __name__ == "__main__":
    write(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3])
