#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The documents, held to what they speak of: documents_test.py SOURCE CASE."""
import html
import pathlib
import re
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(sys.argv[1])
DOCUMENTS = [SOURCE / "README.md", SOURCE / "CONTRIBUTING.md", SOURCE / "sandbox/README.md", *SOURCE.glob("doc/*.md")]


def text_of(name):
    return (SOURCE / name).read_text(encoding="utf-8")


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(complaints))


def drawn(picture):
    """What a picture shows, without where and how: another Graphviz or another font draws the same things otherwise."""
    shown = re.findall(r'<title>(.*?)</title>|<text[^>]*>(.*?)</text>|fill="(#\w+)"', picture)
    return [html.unescape("".join(found)) for found in shown]


def picture_of_the_floors_is_its_source():
    with tempfile.NamedTemporaryFile(suffix=".svg") as fresh:
        subprocess.run([SOURCE / "scripts/floors", fresh.name], check=True)
        now = drawn(pathlib.Path(fresh.name).read_text(encoding="utf-8"))
    kept = drawn(text_of("doc/floors.svg"))
    assert len(kept) > 50, "the picture shows next to nothing"
    none([f"not both drawn and in doc/floors.svg: {line}; run scripts/floors" for line in {*now} ^ {*kept}])
    assert now == kept, "the same things in another order: run scripts/floors"


def rooms():
    """The folders below src that hold sources themselves."""
    folders = {source.parent.relative_to(SOURCE / "src").as_posix() for source in (SOURCE / "src").rglob("*.cpp")}
    assert len(folders) > 12, folders
    return folders


def every_room_is_in_the_picture():
    shown = set(re.findall(r"<title>([^<]*)</title>", text_of("doc/floors.svg")))
    none([f"doc/floors.dot has no box for src/{room}" for room in sorted(rooms() - shown)])
    gone = {name for name in shown if name.startswith("net/")} - rooms()
    none([f"doc/floors.dot has a box for src/{room}, which is gone" for room in sorted(gone)])


def steps(text):
    """`name` (`src/file`), and several names of one file: `a`, `b` (both `src/file`)."""
    text = " ".join(text.split())
    for names, file in re.findall(r"((?:`\w+`,? (?:and )?)*`\w+`) \((?:both |all )?`((?:src|tools)/[^`]+)`\)", text):
        for name in re.findall(r"`(\w+)`", names):
            yield name, file


def every_step_is_in_its_file():
    walked = list(steps(text_of("doc/architecture.md")))
    assert len(walked) >= 30, f"only {len(walked)} steps"
    none([f"{name} is not in {file}" for name, file in walked
          if not (SOURCE / file).is_file() or not re.search(rf"\b{name}\b", text_of(file))])


def exporting_files():
    """Room and file of every exported function's definition."""
    names = re.findall(r"^ +(\w+);", text_of("cmake/kestrove.map"), re.MULTILINE)
    assert len(names) > 250, names
    definition = re.compile(rf"^(?:[\w:<>]+[ *&]+)+(?:{'|'.join(names)})(?:\(.*(?:\{{|,|\}})$|\[| =|;)", re.MULTILINE)
    return {(source.parent.relative_to(SOURCE / "src").as_posix(), source.stem)
            for source in (SOURCE / "src").rglob("*.cpp") if definition.search(source.read_text(encoding="utf-8"))}


def files_of_the_readme():
    """Room and file: `src/room/` ... **file** ..."""
    room = None
    for path, file in re.findall(r"`src/([\w/]+)/`|\*\*(\w+)\*\*", text_of("README.md").split("## Where what is")[1]):
        room = path or room
        if file and file != "file":
            yield room, file


def readme_names_every_file_that_exports():
    named, exporting = set(files_of_the_readme()), exporting_files()
    assert len(exporting) > 50, exporting
    none([f"README.md does not say what is in src/{room}/{file}.cpp" for room, file in sorted(exporting - named)])
    none([f"README.md names src/{room}/{file}.cpp, which exports nothing" for room, file in sorted(named - exporting)])


def every_path_is_there():
    path_below = r"`((?:src|tools|include|tests|scripts|examples)/[^`*<>{} ]*)`"
    named = [(document, path) for document in DOCUMENTS
             for path in re.findall(path_below, document.read_text(encoding="utf-8"))]
    assert len(named) > 30, named
    none([f"{document.relative_to(SOURCE)} names {path}, which is not there" for document, path in named
          if not (SOURCE / path).exists()])


def every_link_leads_somewhere():
    links = [(document, link) for document in DOCUMENTS
             for link in re.findall(r"\]\(([^)#]+)\)", document.read_text(encoding="utf-8")) if "://" not in link]
    assert len(links) > 10, links
    none([f"{document.relative_to(SOURCE)} leads to {link}" for document, link in links
          if not (document.parent / link).exists()])


def every_front_end_is_shorter_than_sixty_lines():
    lengths = {example.name: len(text_of(example).splitlines()) for example in SOURCE.glob("examples/front_end.*")}
    assert len(lengths) == 3, lengths
    none([f"examples/{name} has {length} lines" for name, length in lengths.items() if length >= 60])


def chart_belongs_to_the_table():
    now = subprocess.run([SOURCE / "scripts/benchmarks.py", "--chart", SOURCE / "doc/benchmarks.md"], check=True,
                         stdout=subprocess.PIPE, encoding="utf-8").stdout
    assert now.count("<circle") > 50, "the chart shows next to nothing"
    other = {*now.splitlines()} ^ {*text_of("doc/benchmarks.svg").splitlines()}
    none([f"not both in the table and in doc/benchmarks.svg: {line}" for line in other])


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (picture_of_the_floors_is_its_source, every_room_is_in_the_picture, every_step_is_in_its_file,
                      every_path_is_there, every_link_leads_somewhere, chart_belongs_to_the_table,
                      readme_names_every_file_that_exports, every_front_end_is_shorter_than_sixty_lines)}
CASES[sys.argv[2]]()
