#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""All documents and manual pages as one tree of HTML: html_tree.py SOURCE MANUAL FOLDER

doc/index.md becomes the page that opens it; its headings are the parts, its links the pages of each. MANUAL is the
share/man of a build. Needs cmark-gfm and mandoc; no page asks another host for anything.
"""
import collections
import html
import pathlib
import posixpath
import re
import shutil
import subprocess
import sys

import header_comments

OUTSIDE = {"README.md": "readme.html", "CONTRIBUTING.md": "contributing.html", "CHANGELOG.md": "changelog.html",
           "sandbox/README.md": "sandbox.html"}  # documents that are not in doc/
STYLE = """\
:root { color-scheme: light dark; --ink: #1c2227; --paper: #fdfdfb; --faint: #5c6670; --line: #d4d8dc; --code: #f0f1ee;
  --link: #14568c; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #dfe3e6; --paper: #16191c; --faint: #98a2ab; --line: #3a4147; --code: #22272b; --link: #86bdf0; } }
* { box-sizing: border-box; }
body { margin: 0; color: var(--ink); background: var(--paper); font: 1rem/1.5 system-ui, sans-serif; }
nav { border-bottom: 1px solid var(--line); padding: .6rem 1rem; }
nav a { margin-right: 1.2rem; }
main { max-width: 60rem; margin: 0 auto; padding: 0 1rem 4rem; overflow-wrap: break-word; }
a { color: var(--link); }
h1, h2, h3 { line-height: 1.25; margin: 1.6em 0 .5em; }
h1 a.permalink, h2 a.permalink, dt a.permalink { color: inherit; text-decoration: none; }
code, pre, dt b { font-family: ui-monospace, monospace; font-size: .92em; }
code, pre { background: var(--code); border-radius: 3px; }
code { padding: .1em .25em; }
pre { padding: .7rem; overflow-x: auto; }
pre code { padding: 0; }
.table { overflow-x: auto; }
table { border-collapse: collapse; }
th, td { border: 1px solid var(--line); padding: .25rem .55rem; text-align: left; vertical-align: top; }
img { max-width: 100%; background: #fff; }
dt { margin-top: .8em; }
dd { margin-left: 2rem; }
table.head, table.foot { width: 100%; color: var(--faint); }
table.head td, table.foot td { border: 0; padding: .3rem 0; }
.head-vol, .foot-date { text-align: center; }
.head-rtitle, .foot-os { text-align: right; }
:target { outline: 2px solid var(--link); outline-offset: 2px; }
"""
PAGE = """\
<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title}</title>
<link rel="stylesheet" href="{up}style.css">
</head>
<body>
<nav><a href="{up}index.html">libkestrove</a>{parts}</nav>
<main>
{body}
</main>
</body>
</html>
"""


def slug(heading, seen):
    """The anchor that a heading has in the documents' links."""
    name = re.sub(r"[^\w\- ]", "", html.unescape(re.sub(r"<[^>]*>", "", heading)).lower()).replace(" ", "-")
    seen[name] += 1
    return name if seen[name] == 1 else f"{name}-{seen[name] - 1}"


def page_name(document):
    return OUTSIDE.get(document) or posixpath.relpath(document, "doc").removesuffix(".md") + ".html"


class Tree:
    def __init__(self, source, manual, folder):
        self.source, self.manual, self.folder = source, manual, folder
        self.interface = header_comments.read(source)
        self.documents = {*(path.relative_to(source).as_posix() for path in source.glob("doc/*.md")), *OUTSIDE}
        self.parts = re.findall(r"^## (.*)$", (source / "doc/index.md").read_text(encoding="utf-8"), re.MULTILINE)
        self.places = self.places_of_pages()

    def places_of_pages(self):
        """Names in section 3 to page and anchor; names of the other sections to their page."""
        places = {}
        for path in sorted(self.manual.glob("man*/*")):
            said = re.match(r"\.so man3/(.*)\n", path.read_text(encoding="utf-8"))
            name, section = path.stem, path.suffix[1:]
            places[name, section] = f"man/{said.group(1)}.html#{name}" if said else f"man/{path.name}.html"
        return places

    def write(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "man").mkdir(parents=True)
        (self.folder / "style.css").write_text(STYLE, encoding="utf-8")
        for document in sorted(self.documents):
            self.write_document(document)
        for path in sorted(self.manual.glob("man*/*")):
            if not path.read_text(encoding="utf-8").startswith(".so "):
                self.write_manual_page(path)

    def put(self, name, title, body):
        up = "../" * name.count("/")
        parts = "".join(f'<a href="{up}index.html#{slug(part, collections.Counter())}">{html.escape(part)}</a>'
                        for part in self.parts)
        page = PAGE.format(title=html.escape(title), up=up, parts=parts, body=body)
        (self.folder / name).write_text(page, encoding="utf-8")

    def write_document(self, document):
        text = (self.source / document).read_text(encoding="utf-8")
        body = subprocess.run(["cmark-gfm", "--unsafe", "-e", "table", "-e", "strikethrough"], input=text,
                              stdout=subprocess.PIPE, check=True, encoding="utf-8").stdout
        body, seen = re.sub(r"<!--.*?-->\n?", "", body, flags=re.DOTALL), collections.Counter()
        body = re.sub(r"<(h[1-6])>(.*?)</h[1-6]>",
                      lambda found: f'<{found[1]} id="{slug(found[2], seen)}">{found[2]}</{found[1]}>', body)
        body = re.sub(r"<table>.*?</table>", r'<div class="table">\g<0></div>', body, flags=re.DOTALL)
        body = re.sub(r'\b(href|src)="([^"]*)"', lambda found: f'{found[1]}="{self.led(found[2], document)}"', body)
        title = re.search(r"^# (.*)$", text, re.MULTILINE).group(1).replace("`", "")
        self.put(page_name(document), title, self.with_manual_links(body, ""))

    def led(self, link, document):
        """Where a document's link leads in the tree; files and folders that are no documents come along."""
        path, _, anchor = link.partition("#")
        if "://" in link or not path:
            return link
        target = posixpath.normpath(posixpath.join(posixpath.dirname(document), path))
        if target in self.documents:
            name = page_name(target)
        elif target.startswith("doc/"):
            name = posixpath.relpath(target, "doc")
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(self.source / target, self.folder / name)
        else:
            name = self.brought(target)
        return name + ("#" + anchor if anchor else "")

    def brought(self, target):
        path, name = self.source / target, f"files/{target}"
        if path.is_dir():
            return self.listed(path, target)
        (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(path, self.folder / name)
        return name

    def listed(self, path, target):
        files = [file.relative_to(path).as_posix() for file in sorted(path.rglob("*"))
                 if file.is_file() and "__pycache__" not in file.parts]
        for file in files:
            self.brought(f"{target}/{file}")
        lines = "\n".join(f'<li><a href="{html.escape(file)}">{html.escape(file)}</a></li>' for file in files)
        self.put(f"files/{target}/index.html", target, f"<h1>{html.escape(target)}</h1>\n<ul>\n{lines}\n</ul>")
        return f"files/{target}/index.html"

    def with_manual_links(self, body, up):
        """kestrovectl(8) and addUserRoute(3) as links, where there is such a page."""
        def linked(found):
            place = self.places.get((found[2], found[4])) or self.places.get((found[2], found[4] + "kestrove"))
            return f'<a href="{up}{place}">{found[0]}</a>' if place else found[0]
        return re.sub(r"(<b>|<code>|\b)([\w.-]+)(</b>|</code>|)\((\d\w*)\)(?![^<]*</a>)", linked, body)

    def write_manual_page(self, path):
        body = subprocess.run(["mandoc", "-T", "html", "-O", "fragment", path], stdout=subprocess.PIPE, check=True,
                              encoding="utf-8").stdout
        body = re.sub(r'<dt id="[^"]*"><a class="permalink" href="[^"]*">(.*?)</a></dt>', r"<dt>\1</dt>", body,
                      flags=re.DOTALL)
        body = re.sub(r"<dt>(.*?)</dt>", self.anchored, body, flags=re.DOTALL) if path.suffix == ".3kestrove" else body
        body = self.with_manual_links(self.with_function_links(body, path), "../")
        self.put(f"man/{path.name}.html", f"{path.stem}({path.suffix[1:]})", body)

    def anchored(self, found):
        """The prototype that a list's entry begins with gets its name as an anchor."""
        said = re.search(r"(\w+)(?:\(|(?:\[\w*\])*;)", html.unescape(re.sub(r"<[^>]*>", "", found[1])))
        known = said and (said[1], "3kestrove") in self.places
        return f'<dt id="{said[1]}">{found[1]}</dt>' if known else found[0]

    def with_function_links(self, body, path):
        def linked(found):
            place = self.places.get((found[1], "3kestrove"))
            if not place or "#" not in place:
                return found[0]
            page, _, anchor = place.partition("#")
            link = f"#{anchor}" if page == f"man/{path.name}.html" else f"../{place}"
            return f'<b><a href="{link}">{found[1]}</a></b>'
        return re.sub(r"<b>(\w+)</b>(?!\()", linked, body)


if __name__ == "__main__":
    Tree(*map(pathlib.Path, sys.argv[1:4])).write()
