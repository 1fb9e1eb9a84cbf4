#!/usr/bin/env python3
"""Writes the tables of measurements and floors: benchmarks.py ROWS.txt TITLE=MEASUREMENTS.json...

Ends with 1 when a row misses its aim by more than its noise, or was not measured.
"""
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
more than that makes `make bench` fail. `make bench` writes this file.
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


def main():
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
