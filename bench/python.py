#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Import and an item read from Python beside their floors: python.py ITEM-PROGRAM. Inside the sandbox alone.

The best of many rounds is taken, each beside its floor in turns: what else the machine does can only add to it.
"""
import ctypes
import subprocess
import sys
import time

ROUNDS = 30
READS = 2000


def seconds(script):
    begin = time.perf_counter()
    subprocess.run([sys.executable, "-c", script], check=True)
    return time.perf_counter() - begin


def import_milliseconds():
    pairs = [(seconds("import kestrove"), seconds("pass")) for _ in range(ROUNDS)]
    return 1000 * (min(pair[0] for pair in pairs) - min(pair[1] for pair in pairs))


def read_microseconds(read):
    best = float("inf")
    for _ in range(ROUNDS):
        begin = time.perf_counter()
        for _ in range(READS):
            read()
        best = min(best, time.perf_counter() - begin)
    return 1e6 * best / READS


def reads():
    import kestrove  # pylint: disable=import-outside-toplevel
    value, settings = ctypes.c_uint32(), kestrove.Settings()
    item = kestrove.values.SHM_ITEM_LAN_LINK_RATE
    yield "raw.getKestroveConfigItem", lambda: kestrove.raw.getKestroveConfigItem(item, value)
    yield "functions.getKestroveConfigItem", lambda: kestrove.functions.getKestroveConfigItem(item, value)
    yield "Settings().lan_link_rate", lambda: settings.lan_link_rate


def rows(program):
    """What, measured, at most, unit."""
    yield "import kestrove, above an empty Python", import_milliseconds(), 50, "ms"
    for name, read in reads():
        own = int(subprocess.run([program], check=True, capture_output=True, encoding="utf-8").stdout) / 1000
        yield f"{name}, above the {own:.2f} us from C", read_microseconds(read) - own, 3, "us"


def main():
    missed = False
    for what, measured, most, unit in rows(sys.argv[1]):
        verdict = "reached" if measured <= most else "missed"
        missed = missed or verdict == "missed"
        print(f"{what}: {measured:.2f} {unit}, at most {most} {unit}: {verdict}", flush=True)
    sys.exit(missed)


main()
