#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The tree of HTML that scripts/html_tree.py makes: tree_test.py SOURCE BUILD CASE."""
import collections
import html.parser
import pathlib
import posixpath
import re
import subprocess
import sys
import tempfile

SOURCE, BUILD = map(pathlib.Path, sys.argv[1:3])
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "scripts"))
import header_comments  # noqa: E402

VOID = {"meta", "link", "img", "br", "hr", "input", "col"}


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(complaints))


class Page(html.parser.HTMLParser):
    """What a page leads to, what it loads, what can be led to, and tags that are not closed as they were opened."""

    def __init__(self, text):
        super().__init__()
        self.links, self.loads, self.anchors, self.opened, self.unsound = [], [], collections.Counter(), [], []
        self.feed(text)
        self.close()
        self.unsound += self.opened

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        if tag not in VOID:
            self.opened.append(tag)
        self.anchors.update([values["id"]] if values.get("id") else [])
        (self.links if tag == "a" else self.loads).extend(values[key] for key in ("href", "src") if values.get(key))

    def handle_startendtag(self, tag, attrs):
        self.handle_starttag(tag, attrs)
        if tag not in VOID:
            self.handle_endtag(tag)

    def handle_endtag(self, tag):
        if not self.opened or self.opened.pop() != tag:
            self.unsound.append(f"</{tag}>")


def tree(folder):
    """Path below the folder to page, or to None for a file of another kind."""
    files = [path for path in sorted(folder.rglob("*")) if path.is_file()]
    return {path.relative_to(folder).as_posix():
            Page(path.read_text(encoding="utf-8")) if path.suffix == ".html" else None for path in files}


def led(place, link):
    """Place and anchor that a link leads to; no place where it is another host's."""
    path, _, anchor = link.partition("#")
    if re.match(r"\w+:|//", link):
        return None, ""
    return posixpath.normpath(posixpath.join(posixpath.dirname(place), path)) if path else place, anchor


def dead_links(pages):
    for place, page in pages.items():
        for link in page.links + page.loads if page else []:
            target, anchor = led(place, link)
            if target and (target not in pages or anchor and anchor not in pages[target].anchors):
                yield f"{place} leads to {link}"


def made(folder):
    maker = SOURCE / "scripts/html_tree.py"
    subprocess.run([sys.executable, "-B", maker, SOURCE, BUILD / "share/man", folder], check=True)
    pages = tree(pathlib.Path(folder))
    assert len(pages) > 50 and sum(len(page.links) for page in pages.values() if page) > 1000, pages
    return pages


def every_page_is_sound(pages):
    none([f"{place}: {page.unsound[:3]}" for place, page in pages.items() if page and page.unsound])
    none([f"{place} has {anchor} twice" for place, page in pages.items() if page
          for anchor, times in page.anchors.items() if times > 1 and anchor])


def every_link_and_anchor_leads_somewhere(pages):
    none([*dead_links(pages)])
    planted = {**pages, "planted.html": Page('<a href="index.html#nowhere"></a><a href="gone.html"></a>')}
    assert len([*dead_links(planted)]) == 2


def no_page_asks_another_host(pages):
    none([f"{place} loads {link}" for place, page in pages.items() if page for link in page.loads
          if led(place, link)[0] is None])
    style = next(path for path in pages if path.endswith("style.css"))
    assert style == "style.css" and all(page.loads for page in pages.values() if page)


def every_page_is_reached(pages):
    reached, ahead = set(), ["index.html"]
    while ahead:
        place = ahead.pop()
        if place in reached or not pages.get(place):
            continue
        reached.add(place)
        ahead += [led(place, link)[0] for link in pages[place].links]
    none([f"nothing leads to {place}" for place, page in pages.items() if page and place not in reached])


def every_export_has_its_place(pages):
    index = {led("man/libkestrove.3kestrove.html", link) for link in pages["man/libkestrove.3kestrove.html"].links}
    none([f"libkestrove(3) does not lead to {name}" for name in header_comments.read(SOURCE).exports
          if not any(anchor == name for _, anchor in index)])


def every_document_is_in_one_part(_pages):
    text = (SOURCE / "doc/index.md").read_text(encoding="utf-8")
    parts = re.split(r"^## ", text, flags=re.MULTILINE)
    assert [part.split("\n")[0] for part in parts[1:]] == ["Tutorial", "How-to", "Reference", "Explanation"]
    listed = collections.Counter(re.findall(r"\]\(([\w-]+\.md)\)", text))
    documents = {path.name for path in (SOURCE / "doc").glob("*.md")} - {"index.md"}
    none([f"doc/index.md names doc/{name} {listed[name]} times" for name in sorted(documents) if listed[name] != 1])


def luminance(colour):
    digits = colour * 2 if len(colour) == 3 else colour
    parts = [int(digits[i:i + 2], 16) / 255 for i in (0, 2, 4)]
    linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


def text_can_be_read_in_light_and_dark(_pages):
    style = subprocess.run([sys.executable, "-B", "-c", "import html_tree; print(html_tree.STYLE)"], check=True,
                           stdout=subprocess.PIPE, encoding="utf-8", cwd=SOURCE / "scripts").stdout
    themes = [dict(re.findall(r"--(\w+): #(\w+)", block)) for block in re.findall(r":root \{(.*?)\}", style, re.DOTALL)]
    assert len(themes) == 2 and themes[0].keys() == themes[1].keys() and "color-scheme: light dark" in style, themes
    assert luminance(themes[0]["paper"]) > 0.8 and luminance(themes[1]["paper"]) < 0.05
    pairs = [(theme[ink], theme[paper]) for theme in themes for ink in ("ink", "link", "faint")
             for paper in ("paper", "code")]
    none([f"{ink} on {paper} has a contrast of {contrast(ink, paper):.1f}" for ink, paper in pairs
          if contrast(ink, paper) < 4.5])


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (every_page_is_sound, every_link_and_anchor_leads_somewhere, no_page_asks_another_host,
                      every_page_is_reached, every_export_has_its_place, every_document_is_in_one_part,
                      text_can_be_read_in_light_and_dark)}
with tempfile.TemporaryDirectory() as made_here:
    every_page = made(made_here)
    for case in sys.argv[3:] or CASES:
        CASES[case](every_page)
