#!/usr/bin/env python3
"""Writes the table of measurements and floors: benchmarks.py MEASUREMENTS.json ROWS.txt"""
import json
import re
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


class Best:
    """The quickest repetition of a benchmark.

    Processor time, which other processes of the machine do not lengthen, but for what is timed by the clock.
    """

    def __init__(self, run):
        by_clock = re.search("/(real|manual)_time", run["run_name"])
        self.seconds = run["real_time" if by_clock else "cpu_time"] * SECONDS[run["time_unit"]]
        self.floor = run.get("floor")
        self.fairness = run.get("fairness")


def best(measurements):
    quickest = {}
    for run in measurements["benchmarks"]:
        if run.get("run_type") == "aggregate" or "error_occurred" in run:
            continue
        name = re.sub(r"/(real_time|manual_time|process_time|iterations:\d+|repeats:\d+)", "", run["run_name"])
        candidate = Best(run)
        if name not in quickest or candidate.seconds < quickest[name].seconds:
            quickest[name] = candidate
    return quickest


def floor_of(quickest, name, floor):
    if floor == "its own":
        return quickest[name].floor
    return quickest[floor].seconds if floor in quickest else None


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


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        measurements = json.load(file)
    quickest = best(measurements)
    context = measurements["context"]
    print("# Benchmarks\n")
    print("Each measurement beside its floor: the work that cannot be avoided, done the best way, in the same run.")
    print("The quickest of the repetitions counts, on both sides; processor time, and time of the clock for what runs in")
    print("several processes. `make bench` writes this file.\n")
    print(f"Measured on {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, {context['date'][:10]}.\n")
    print("| What | Time | Floor | Ratio | Aim | | The floor |")
    print("|---|---:|---:|---:|---:|---|---|")
    missing = []
    for name, floor, aim, what, words in rows(sys.argv[2]):
        floor_seconds = floor_of(quickest, name, floor) if name in quickest else None
        if not floor_seconds:
            missing.append(name)
            continue
        row = quickest[name]
        ratio = row.seconds / floor_seconds
        verdict = "reached" if ratio <= float(aim) else "missed"
        if row.fairness:
            what += f" (busiest over laziest {row.fairness:.2f})"
        print(f"| {what} | {shown(row.seconds)} | {shown(floor_seconds)} | {ratio:.3f} | {aim} | {verdict} | {words} |")
    if missing:
        sys.exit("not measured: " + ", ".join(missing))


main()
