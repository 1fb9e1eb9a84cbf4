# SPDX-License-Identifier: Apache-2.0
"""doc/api.yaml as dictionaries and lists: what it has of YAML, for machines without a reader of that."""
import json
import re

TOKEN = re.compile(r'\s*("(?:[^"\\]|\\.)*"|[][{},:]|[^][{},:"\s](?:[^][{},:"]|:(?=\S))*)')


def scalar(text):
    text = text.strip()
    if text.startswith('"'):
        return json.loads(text)
    return {"true": True, "false": False}.get(text, text)


def flow(text):
    """{type: array, items: {}} and the like, on one line."""
    tokens = [match[1] for match in TOKEN.finditer(text)]

    def value():
        token = tokens.pop(0)
        if token == "[":
            made = []
            while tokens[0] != "]":
                made.append(value())
                if tokens[0] == ",":
                    tokens.pop(0)
            tokens.pop(0)
            return made
        if token == "{":
            made = {}
            while tokens[0] != "}":
                key = scalar(tokens.pop(0))
                assert tokens.pop(0) == ":", text
                made[key] = value()
                if tokens[0] == ",":
                    tokens.pop(0)
            tokens.pop(0)
            return made
        return scalar(token)

    made = value()
    assert not tokens, text
    return made


def inline(text):
    return flow(text) if text[0] in "[{" else scalar(text)


def block(lines, indent):
    """The lines from the first on that stand at least that far in; they are taken from the list."""
    made = [] if lines[0][1].startswith("- ") else {}
    while lines and lines[0][0] == indent:
        line = lines.pop(0)[1]
        if line.startswith("- "):
            made.append(element(line[2:]))
            continue
        key, rest = re.fullmatch(r'("[^"]*"|[^"]*?):(?: (.*))?', line).groups()
        made[scalar(key)] = inline(rest) if rest else block(lines, lines[0][0])
    assert not lines or lines[0][0] < indent, lines[0]
    return made


def element(text):
    pair = re.fullmatch(r"(\w+): (.*)", text)
    return {pair[1]: inline(pair[2])} if pair else inline(text)


def read(text):
    lines = [(len(line) - len(line.lstrip()), line.strip()) for line in text.splitlines()]
    return block([line for line in lines if line[1] and not line[1].startswith("#")], 0)
