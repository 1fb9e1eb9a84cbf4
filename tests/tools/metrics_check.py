#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reads metrics in the text format 0.0.4 from standard input, strictly, and prints them as JSON.

What a scraper would refuse or misunderstand, and what the naming rules forbid, ends with 1 and a line number.
"""
import json
import re
import sys

NAME = r"[a-zA-Z_:][a-zA-Z0-9_:]*"
LABEL = r'([a-zA-Z_][a-zA-Z0-9_]*)="((?:[^"\\\n]|\\\\|\\"|\\n)*)"'
VALUE = r"[-+]?(?:[0-9]+(?:\.[0-9]+)?(?:e[-+]?[0-9]+)?|Inf|NaN)"
METRIC = re.compile(rf"({NAME})(?:\{{({LABEL}(?:,{LABEL})*)\}})? ({VALUE})")
BASE_UNITS = ("seconds", "bytes", "ratio", "total", "info", "bytes_per_second")
OTHER_UNITS = ("milliseconds", "minutes", "hours", "bits", "kilobytes", "megabytes", "percent", "hundredths")


def wrong(number, text):
    sys.exit(f"line {number}: {text}")


def unescaped(value):
    return re.sub(r"\\(.)", lambda match: "\n" if match[1] == "n" else match[1], value)


def check_name(number, name, kind):
    if (kind == "counter") != name.endswith("_total"):
        wrong(number, f"{name}: counters alone end in _total")
    if kind not in ("counter", "gauge"):
        wrong(number, f"{name}: {kind} is not used here")
    if any(re.search(rf"_{unit}(_|$)", name) for unit in OTHER_UNITS):
        wrong(number, f"{name}: not a base unit")


class Reader:
    def __init__(self):
        self.families = {}
        self.family = None
        self.help = None

    def comment(self, number, line):
        match = re.fullmatch(rf"# (HELP|TYPE) ({NAME}) (.+)", line)
        if not match:
            wrong(number, "neither HELP nor TYPE")
        keyword, name, rest = match.groups()
        if keyword == "HELP":
            if name in self.families:
                wrong(number, f"{name}: a second time")
            if self.family and not self.family["metrics"]:
                wrong(number, "the family before has no metric")
            self.help = (name, rest)
            self.family = None
            return
        if not self.help or self.help[0] != name or self.family:
            wrong(number, f"{name}: TYPE without its HELP in front")
        check_name(number, name, rest)
        self.family = self.families[name] = {"help": self.help[1], "type": rest, "metrics": []}
        self.name = name

    def metric(self, number, line):
        match = METRIC.fullmatch(line)
        if not match:
            wrong(number, f"no metric: {line}")
        name, inside, value = match[1], match[2], match.groups()[-1]
        if not self.family or name != self.name:
            wrong(number, f"{name}: outside its family")
        pairs = re.findall(LABEL, inside or "")
        labels = {key: unescaped(text) for key, text in pairs}
        if len(labels) != len(pairs) or any(key.startswith("__") for key in labels):
            wrong(number, "labels")
        if any(metric["labels"] == labels for metric in self.family["metrics"]):
            wrong(number, "the same series a second time")
        if name.endswith("_info") and value != "1":
            wrong(number, f"{name}: its value is always 1")
        if self.family["type"] == "counter" and value.startswith("-"):
            wrong(number, f"{name}: a negative counter")
        self.family["metrics"].append({"labels": labels, "value": float(value), "text": value})


def main():
    text = sys.stdin.buffer.read().decode("utf-8")
    if not text.endswith("\n"):
        sys.exit("the last line has no end")
    reader = Reader()
    for number, line in enumerate(text[:-1].split("\n"), 1):
        (reader.comment if line.startswith("#") else reader.metric)(number, line)
    if not reader.family or not reader.family["metrics"]:
        sys.exit("the last family has no metric")
    json.dump(reader.families, sys.stdout)


main()
