#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The page's files, held to what they say of each other: files_test.py SOURCE CASE. No browser is needed."""
import html.parser, pathlib, re, sys

SOURCE = pathlib.Path(sys.argv[1])
PAGE = SOURCE / "tools/api/page"
MODULES = {file.name: file.read_text(encoding="utf-8") for file in sorted((PAGE / "parts").glob("*.js"))}
STYLES = {file.name: file.read_text(encoding="utf-8") for file in sorted((PAGE / "look").glob("*.css"))}
INDEX = (PAGE / "index.html").read_text(encoding="utf-8")
ENDINGS = {".html", ".css", ".js", ".svg", ".png"}


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(map(str, complaints)))


class Tags(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.found = []

    def handle_starttag(self, tag, attributes):
        self.found.append((tag, dict(attributes)))


def tags():
    parser = Tags()
    parser.feed(INDEX)
    assert len(parser.found) > 20
    return parser.found


def every_id_is_there_once():
    ids = [attributes["id"] for _, attributes in tags() if "id" in attributes]
    none(sorted({one for one in ids if ids.count(one) > 1}))
    asked = {(name, one) for name, text in MODULES.items() for one in re.findall(r"byId\('([\w-]+)'\)", text)}
    assert len(asked) > 8, asked
    none([f"{name} asks for #{one}, which is not in index.html" for name, one in sorted(asked) if one not in ids])


def no_other_host_is_named():
    """But for the name of SVG, which nobody asks."""
    texts = {"index.html": INDEX, "icon.svg": (PAGE / "icon.svg").read_text(encoding="utf-8"), **MODULES, **STYLES}
    none([f"{name}: {link}" for name, text in texts.items()
          for link in re.findall(r"(?:https?:)?//[a-z][\w.-]+\.[a-z]+[^\s'\"`)]*|url\([^)]*\)|@import[^;]*", text)
          if link not in ("http://www.w3.org/2000/svg",)])


def nothing_is_inline():
    """The policy takes no script and no style but from files."""
    none([f"<{tag} {name}>" for tag, attributes in tags() for name in attributes if name.startswith("on") or name == "style"])
    none([f"<{tag}> of its own" for tag, attributes in tags() if tag == "style" or (tag == "script" and "src" not in attributes)])
    banned = r"innerHTML|outerHTML|insertAdjacentHTML|document\.write|\beval\(|new Function|setAttribute\('style'|[{,] style: |data:(?:image|text)"
    none([f"{name}: {word}" for name, text in MODULES.items() for word in re.findall(banned, text)])


def every_file_is_given_out_and_used():
    files = [file for file in PAGE.rglob("*") if file.is_file()]
    none([f"{file}: the site gives no such file out" for file in files
          if file.suffix not in ENDINGS or file.name.startswith((".", "config", "state.")) or file.parent.name == "state"])
    linked = {value for _, attributes in tags() for name, value in attributes.items() if name in ("href", "src") and not value.startswith("#")}
    none([f"index.html names {link}" for link in linked if not (PAGE / link).is_file()])
    none([f"look/{name} is used by nobody" for name in STYLES if f"look/{name}" not in linked])
    imported = {"main.js"} | {name for text in MODULES.values() for name in re.findall(r"from './([\w.]+)'", text)}
    none([f"parts/{name}" for name in imported ^ set(MODULES)])


def every_name_that_is_imported_is_exported_and_used():
    exports = {name: set(re.findall(r"^export (?:async )?(?:function|class|const|let) (\w+)", text, re.MULTILINE)) for name, text in MODULES.items()}
    complaints = []
    for name, text in MODULES.items():
        for names, source in re.findall(r"^import \{([^}]*)\} from '\./([\w.]+)';", text, re.MULTILINE):
            for one in re.split(r",\s*", names.strip()):
                if one not in exports[source]:
                    complaints.append(f"{name}: {one} is not in {source}")
                if len(re.findall(rf"\b{one}\b", text)) < 2:
                    complaints.append(f"{name}: {one} is not used")
    assert sum(map(len, exports.values())) > 50
    none(complaints)


def documented():
    """Method and path of each request of doc/api.yaml; what stands in a path is {}."""
    found, path = set(), None
    for line in (SOURCE / "doc/api.yaml").read_text(encoding="utf-8").splitlines():
        if match := re.fullmatch(r"  (/\S*):", line):
            path = re.sub(r"\{\w+\}", "{}", match[1])
        elif path and (match := re.fullmatch(r"    (get|post|put|patch|delete):", line)):
            found.add((match[1], path.rstrip("/")))
    assert len(found) > 50, found
    return found


def asked():
    verbs = {"get": "get", "look": "get", "follow": "get", "post": "post", "put": "put", "remove": "delete"}
    for name, text in MODULES.items():
        for verb, path in re.findall(r"\b(get|look|follow|post|put|remove)\(['`]((?:/[^'`]*)?)['`]", text):
            yield name, verbs[verb], path
        for path in re.findall(r"(?:path: |Table\()['`](/[^'`]*)['`]", text):
            method = re.search(rf"method: '(\w+)', path: ['`]{re.escape(path)}['`]", text)
            yield name, method[1].lower() if method else "get", path


def every_request_is_in_the_document():
    known = documented()

    def is_known(method, path):
        return any(method == other and re.fullmatch(re.escape(pattern).replace(r"\{\}", "[^/]+"), path) for other, pattern in known)

    found = {(name, method, re.sub(r"\$\{[^}]*\}", "{}", path.split("?")[0])) for name, method, path in asked()}
    assert len(found) > 20, found
    whole = {(name, method, path + "{}" if path.endswith("/") else path) for name, method, path in found}
    none([one for one in sorted(whole) if not is_known(*one[1:])])


def every_item_has_its_subject():
    table = set(re.findall(r"^    \['(\w+)', ", MODULES["item_table.js"], re.MULTILINE))
    rows = re.findall(r"^\| [\d, ]+ \| `\w+` \| `([\w\[\]]+)`(?: \(`(\w+)`\))?", (SOURCE / "doc/items.md").read_text(encoding="utf-8"), re.MULTILINE)
    items = {other or field for field, other in rows}
    assert len(items) > 50, items
    none([f"item_table.js lacks {one}" for one in sorted(items - table)] + [f"no item: {one}" for one in sorted(table - items)])


def lightness(colour):
    parts = [int(colour[at:at + 2], 16) / 255 for at in (1, 3, 5)]
    red, green, blue = [one / 12.92 if one <= 0.03928 else ((one + 0.055) / 1.055) ** 2.4 for one in parts]
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one, other):
    low, high = sorted((lightness(one), lightness(other)))
    return (high + 0.05) / (low + 0.05)


TEXT = [(ink, ground) for ink in ("ink", "soft", "deep") for ground in ("ground", "sheet", "sunk", "deep-wash")] + [
    ("deep-ink", "deep"), ("lan", "lan-wash"), ("wan", "wan-wash"), ("wrong", "wrong-wash"), ("wait", "wait-wash"),
    ("lan", "sheet"), ("wan", "sheet"), ("wrong", "sheet"), ("wrong", "sunk"), ("wrong", "ground"), ("wrong", "deep-wash"), ("added", "lan-wash"),
    ("added", "ground"), ("removed", "wrong-wash"), ("removed", "ground"), ("ink", "wrong-wash"), ("soft", "wrong-wash")]
LINES = [("edge", "sheet"), ("edge", "ground"), ("lan", "sheet"), ("wan", "sheet"), ("deep", "sheet"), ("wrong", "wrong-wash")]


def every_text_can_be_read_in_light_and_dark():
    light, dark = [dict(re.findall(r"--([\w-]+): (#[0-9a-f]{6});", part)) for part in STYLES["base.css"].split("@media (prefers-color-scheme: dark)")]
    assert len(light) > 15 and set(light) == set(dark), set(light) ^ set(dark)
    none([f"{scheme} {pair}: {contrast(colours[pair[0]], colours[pair[1]]):.2f}" for scheme, colours in (("light", light), ("dark", dark))
          for pairs, least in ((TEXT, 4.5), (LINES, 3)) for pair in pairs if contrast(colours[pair[0]], colours[pair[1]]) < least])
    none([f"{name}: {colour}" for name, text in STYLES.items() if name != "base.css" for colour in re.findall(r"#[0-9a-f]{3,6}\b", text)])


def every_scenario_is_a_situation():
    names = re.findall(r"^def ([A-Z]\w+)\(page\)", "".join(file.read_text() for file in sorted((SOURCE / "tests/web").glob("*_scenarios.py"))), re.MULTILINE)
    assert len(names) >= 20 and len(set(names)) == len(names), names


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (every_id_is_there_once, no_other_host_is_named, nothing_is_inline, every_file_is_given_out_and_used,
                      every_name_that_is_imported_is_exported_and_used, every_request_is_in_the_document, every_item_has_its_subject,
                      every_text_can_be_read_in_light_and_dark, every_scenario_is_a_situation)}
if __name__ == "__main__":
    CASES[sys.argv[2]]()
