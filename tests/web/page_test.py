#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The page in a browser, in front of a real Apache and kestrove-api, in the sandbox:
page_test.py PROGRAM BROWSER FOLDER PLAYS [SCENARIO...]. PLAYS is a text like "1440:0/2 360:1/2": at each width one hand
of so many into which the scenarios are dealt. FOLDER gets a picture of how each scenario ended."""
import pathlib, sys, time, traceback

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import appliance
import hand_scenarios
import look_scenarios
import settings_scenarios
import table_scenarios
import way_scenarios
from browser import Page

SCENARIOS = {name: call for module in (way_scenarios, look_scenarios, hand_scenarios, settings_scenarios, table_scenarios)
             for name, call in vars(module).items() if name[0].isupper() and callable(call) and call.__module__ == module.__name__}


def play(page, name):
    """Whether it went well; how it ended is in a picture either way."""
    began = time.monotonic()
    fault = ""
    try:
        appliance.again()
        SCENARIOS[name](page)
        complaints = page.complaints()
        assert not complaints, complaints
    except Exception:
        fault = traceback.format_exc()
    page.picture(name)
    verdict = "FAILED" if fault else "passed"
    print(f"{page.name} {page.width}: {verdict} {name} ({time.monotonic() - began:.1f} s)\n{fault}", end="", flush=True)
    return not fault


def dealt(plays, names):
    """Width and name of each scenario to be played."""
    for width, _, hand in (one.partition(":") for one in plays.split()):
        number, count = map(int, hand.split("/"))
        yield from ((int(width), name) for name in names[number::count])


def main(program, browser, folder, plays, *wanted):
    assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
    unknown = set(wanted) - set(SCENARIOS)
    assert not unknown, unknown
    hand = list(dealt(plays, [name for name in SCENARIOS if not wanted or name in wanted]))
    appliance.start(program)
    page = Page(browser, f"/tmp/browser-{browser}", pathlib.Path(folder))
    went_well = 0
    for width, name in hand:
        page.be_wide(width)
        page.be_coloured("light")
        went_well += play(page, name)
    page.close()
    print(f"{browser}: {went_well} of {len(hand)} went well", flush=True)
    return 0 if went_well == len(hand) else 1


sys.exit(main(*sys.argv[1:]))
