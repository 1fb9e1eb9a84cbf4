#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the tables of measurements and floors: benchmarks.py ROWS.txt TITLE=MEASUREMENTS.json...

Ends with 1 when a row misses its aim by more than its noise, or was not measured. benchmarks.py --chart DOCUMENT draws
the tables that were written as an SVG.
"""
import html
import json
import re
import statistics
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
HEAD = """# Benchmarks

Each measurement beside its floor: the work that cannot be avoided, done the best way. Both take turns within one
process: the floor, the work and the floor again, many times; the middle of all counts, and the ratio is that of
neighbouring turns. Processor time, and time of the clock for what runs in several processes. The noise is how far the
floor was from itself and the ratio from its own middle, in the middle of the repetitions; a row that misses its aim by
more than that makes `make bench` fail. `make bench` writes this file and its chart.

![Every row's ratio to its floor in both widths, with noise and aim](benchmarks.svg)
"""


class Row:
    """The repetitions of one benchmark."""

    def __init__(self, runs):
        self.seconds = statistics.median(run["real_time"] * SECONDS[run["time_unit"]] for run in runs)
        self.floor = statistics.median(run["floor"] for run in runs)
        self.ratio = statistics.median(run["ratio"] for run in runs)
        off_itself = statistics.median(abs(run["self"] - 1) for run in runs)
        off_middle = statistics.median(abs(run["ratio"] / self.ratio - 1) for run in runs)
        self.noise = max(off_itself, off_middle)
        fair = [run["fairness"] for run in runs if "fairness" in run]
        self.fairness = statistics.median(fair) if fair else None

    def verdict(self, aim):
        if self.ratio <= aim:
            return "reached"
        return "within noise" if self.ratio <= aim * (1 + self.noise) else "missed"


def measured(measurements):
    runs = {}
    for run in measurements["benchmarks"]:
        if run.get("run_type") == "aggregate" or "error_occurred" in run:
            continue
        name = re.sub(r"/(manual_time|iterations:\d+|repeats:\d+)", "", run["run_name"])
        runs.setdefault(name, []).append(run)
    return {name: Row(of_name) for name, of_name in runs.items()}


def rows(path):
    with open(path, encoding="ascii") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                yield [column.strip() for column in line.split("|")]


def shown(seconds):
    for unit, factor in (("ns", 1e-9), ("us", 1e-6), ("ms", 1e-3)):
        if seconds < 1000 * factor:
            return f"{seconds / factor:.1f} {unit}"
    return f"{seconds:.2f} s"


def load_of(context):
    averages = context.get("load_avg")
    return f", load average {averages[0]:.1f} at the beginning" if averages else ""


def print_table(title, measurements, wanted):
    """Returns the complaints."""
    context = measurements["context"]
    print(f"\n## {title}\n")
    print(f"Measured on {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, {context['date'][:10]}"
          f"{load_of(context)}.\n")
    print("| What | Time | Floor | Ratio | Noise | Aim | | The floor |")
    print("|---|---:|---:|---:|---:|---:|---|---|")
    complaints = []
    table = measured(measurements)
    for name, aim, what, words in wanted:
        if name not in table:
            complaints.append(f"{title}: {name} was not measured")
            continue
        row = table[name]
        verdict = row.verdict(float(aim))
        if row.fairness:
            what += f" (busiest over laziest {row.fairness:.2f})"
        print(f"| {what} | {shown(row.seconds)} | {shown(row.floor)} | {row.ratio:.3f} | {100 * row.noise:.1f} % | {aim} "
              f"| {verdict} | {words} |")
        if verdict == "missed":
            complaints.append(f"{title}: {name} is {row.ratio:.3f} of its floor, not {aim} (noise {row.noise:.3f})")
    return complaints


# The chart: a line for each row of the tables, in it a mark for each width at its ratio, its noise, a tick at the aim.
LEFT, RIGHT, STEP, TOP, SCALE = 470, 40, 20, 60, 480  # pixels; SCALE of one whole ratio
LOWEST, HIGHEST, LONGEST_LABEL = 0.8, 2.1, 76
COLOURS = ("#2b6cb0", "#dd6b20")


def cells(line):
    return [cell.strip() for cell in line.strip("| ").split("|")]


def charted(what, _time, _floor, ratio, noise, aim, verdict, *_):
    """Of a row of the table; what it is called in one width alone is left out."""
    return re.sub(r" \(busiest.*\)", "", what), float(ratio), float(noise.split()[0]) / 100, float(aim), verdict


def read_tables(document):
    with open(document, encoding="utf-8") as file:
        parts = file.read().split("\n## ")[1:]
    for part in parts:
        title, *lines = part.splitlines()
        head_and_rows = [cells(line) for line in lines if line.startswith("|")]
        yield title, [charted(*row) for row in head_and_rows[2:]]


def across(ratio):
    return LEFT + (min(max(ratio, LOWEST), HIGHEST) - LOWEST) * SCALE


def text(x, y, words, anchor="start"):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}">{html.escape(words)}</text>'


def line(x1, y1, x2, y2, colour, width):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" stroke-width="{width}"/>'


def shortened(label):
    return label if len(label) <= LONGEST_LABEL else label[:LONGEST_LABEL - 1] + "\u2026"


def draw_mark(y, colour, row):
    _, ratio, noise, aim, verdict = row
    yield line(across(aim), y - 4, across(aim), y + 4, "#111111", 1.5)
    yield line(across(ratio * (1 - noise)), y, across(ratio * (1 + noise)), y, colour, 1)
    ring = "#c53030" if verdict == "missed" else colour
    yield f'<circle cx="{across(ratio):.1f}" cy="{y:.1f}" r="3" fill="{colour}" stroke="{ring}" stroke-width="2"/>'


def draw_frame(titles, height):
    yield text(LEFT, 20, "time over the floor's time; bar: noise, tick: aim, red ring: missed")
    for place, title in enumerate(titles):
        yield f'<circle cx="{LEFT + 6 + 90 * place}" cy="36" r="4" fill="{COLOURS[place]}"/>'
        yield text(LEFT + 14 + 90 * place, 40, title)
    for tenth in range(round(10 * LOWEST), round(10 * HIGHEST) + 1):
        x, colour = across(tenth / 10), "#999999" if tenth == 10 else "#e2e2e2"
        yield line(x, TOP - 8, x, height - 10, colour, 1)
        yield text(x, TOP - 10, f"{tenth / 10:.1f}", "middle")


def draw(tables):
    titles = [title for title, _ in tables]
    height = TOP + STEP * len(tables[0][1]) + 10
    width = across(HIGHEST) + RIGHT
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width:.0f} {height}" '
           'font-family="sans-serif" font-size="11">')
    yield f'<rect width="{width:.0f}" height="{height}" fill="white"/>'
    yield from draw_frame(titles, height)
    for place, rows_of_widths in enumerate(zip(*(table for _, table in tables), strict=True)):
        middle = TOP + STEP * place + STEP / 2
        yield text(LEFT - 20, middle + 4, shortened(rows_of_widths[0][0]), "end")
        for width_place, row in enumerate(rows_of_widths):
            assert row[0] == rows_of_widths[0][0], f"{row[0]}: the widths have other rows"
            yield from draw_mark(middle - 4 + 8 * width_place, COLOURS[width_place], row)
    yield "</svg>"


def main():
    if sys.argv[1] == "--chart":
        print("\n".join(draw(list(read_tables(sys.argv[2])))))
        return
    wanted = list(rows(sys.argv[1]))
    print(HEAD, end="")
    complaints = []
    for argument in sys.argv[2:]:
        title, path = argument.split("=", 1)
        with open(path, encoding="utf-8") as file:
            complaints += print_table(title, json.load(file), wanted)
    if complaints:
        sys.exit("\n".join(complaints))


main()
