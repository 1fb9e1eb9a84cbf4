#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The page in a browser, in front of a real Apache and kestrove-api, in the sandbox:
page_test.py PROGRAM BROWSER WIDTH FOLDER [SCENARIO...]. FOLDER gets a picture of how each scenario ended."""
import pathlib, sys, time, traceback

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import appliance
import settings_scenarios
import table_scenarios
import way_scenarios
from browser import Page

SCENARIOS = {name: call for module in (way_scenarios, settings_scenarios, table_scenarios)
             for name, call in vars(module).items() if name[0].isupper() and callable(call) and call.__module__ == module.__name__}


def play(page, name, folder):
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
    page.shot(folder / f"{name}.png")
    print(f"{'FAILED' if fault else 'passed'} {name} ({time.monotonic() - began:.1f} s)\n{fault}", end="", flush=True)
    return not fault


def main(program, browser, width, folder, *wanted):
    assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
    appliance.start(program)
    page = Page(browser, int(width), f"/tmp/browser-{browser}")
    names = [name for name in SCENARIOS if not wanted or name in wanted]
    assert names, wanted
    failed = [name for name in names if not play(page, name, pathlib.Path(folder))]
    page.close()
    print(f"{browser} {width}: {len(names) - len(failed)} of {len(names)} scenarios")
    return 1 if failed else 0


sys.exit(main(*sys.argv[1:]))
