#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What doc/grafana ships, held to the metrics that kestrovectl prints, in the sandbox: watching_test.py SOURCE CTL CASE."""
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE, CTL, CASE = pathlib.Path(sys.argv[1]), *sys.argv[2:]
FOLDER = SOURCE / "doc/grafana"
OF_OTHERS = {"node_textfile_mtime_seconds"}  # of the node exporter, about the file of metrics
OF_THE_SCRAPE = {"instance", "job", "file", "__name__"}  # labels that Prometheus and the node exporter give
DASHBOARD = json.loads((FOLDER / "kestrove.json").read_text(encoding="utf-8"))
PANELS = DASHBOARD["panels"]


def none(complaints):
    if complaints:
        sys.exit("FAILED:\n" + "\n".join(complaints))


def targets():
    return [(panel["title"], target["expr"]) for panel in PANELS for target in panel.get("targets", [])]


def rules():
    """Name and expression of each alert, also of one that goes on in the next lines."""
    text = re.sub(r">-\n +(.*)\n +(.*)\n", r"\1 \2\n", (FOLDER / "alerts.yml").read_text(encoding="utf-8"))
    return re.findall(r"- alert: (\w+)\n +expr: (.*)\n", text)


def printed():
    """Name of a family to the labels and values that it is printed with on an appliance that just started."""
    for name in ("factory.defaults", "kestrove.conf"):
        shutil.copy(f"/usr/share/kestrove/examples/{name}", "/etc/config")
    subprocess.run(["/bin/shm-init"], check=True, stdout=subprocess.DEVNULL)
    text = subprocess.run([CTL, "--json", "metrics"], check=True, stdout=subprocess.PIPE).stdout
    families = {}
    for family in json.loads(text)["families"]:
        labels = families.setdefault(family["name"], {})
        for metric in family["metrics"]:
            for label, value in metric["labels"].items():
                labels.setdefault(label, set()).add(value)
    return families


def wrong_with(expression, families):
    for name in set(re.findall(r"\b(?:kestrove|node)_\w+", expression)) - OF_OTHERS:
        if name not in families:
            yield f"{name} is printed by nobody"
    for name, inside in re.findall(r"(\w+)\{([^}]*)\}", expression):
        for label, sign, value in re.findall(r'(\w+)(=~|!~|!=|=)"((?:[^"\\]|\\.)*)"', inside):
            if label in OF_THE_SCRAPE or name not in families:
                continue
            known = families[name].get(label, set())
            if not any(re.fullmatch(value, one) if "~" in sign else value == one for one in known):
                yield f"{name} has no {label} {value}"


def complaints(places, families):
    return [f"{place}: {wrong}" for place, expression in places for wrong in wrong_with(expression, families)]


def dashboard_asks_for_what_is_printed():
    families = printed()
    assert len(families) > 50 and len(targets()) > 40, targets()
    none(complaints(targets(), families))


def alerts_ask_for_what_is_printed():
    assert len(rules()) > 10 and len(rules()) == (FOLDER / "alerts.yml").read_text(encoding="utf-8").count("- alert:")
    none(complaints(rules(), printed()))


def unknown_names_and_labels_are_found():
    planted = [("a", "rate(kestrove_gone_total[5m])"), ("b", 'kestrove_task_up{task="nobody"}'),
               ("c", 'kestrove_task_up{tusk="kestrove"}'), ("d", 'kestrove_task_up{task=~"kest.*",instance="$appliance"}')]
    assert [line[0] for line in complaints(planted, printed())] == ["a", "b", "c"]


def every_panel_says_what_it_shows():
    none([f"{panel['title']} has no description" for panel in PANELS
          if panel["type"] != "row" and not panel.get("description", "").endswith(".")])
    numbers = [panel["id"] for panel in PANELS]
    assert len(numbers) == len(set(numbers)), numbers
    source = {"type": "prometheus", "uid": "${datasource}"}
    none([f"{panel['title']} asks a source of its own" for panel in PANELS
          for asked in [panel, *panel.get("targets", [])] if panel["type"] != "row" and asked["datasource"] != source])


def panels_stand_beside_one_another():
    taken = {}
    for panel in PANELS:
        place = panel["gridPos"]
        assert place["x"] + place["w"] <= 24, panel["title"]
        for x in range(place["x"], place["x"] + place["w"]):
            for y in range(place["y"], place["y"] + place["h"]):
                assert (x, y) not in taken, f"{panel['title']} lies over {taken[x, y]}"
                taken[x, y] = panel["title"]


def no_other_host_is_asked():
    for file in sorted(FOLDER.iterdir()):
        assert "//" not in file.read_text(encoding="utf-8"), file


def prometheus_takes_every_expression():
    """Where promtool is installed: the alerts, the example, and what the dashboard asks, as rules of a file."""
    subprocess.run(["promtool", "check", "config", "--syntax-only", FOLDER / "prometheus.yml"], check=True)
    expressions = [expression.replace("$__rate_interval", "1m").replace("$appliance", "a:9100") for _, expression in targets()]
    asked = [{"record": "one", "expr": expression, "labels": {"number": str(number)}}
             for number, expression in enumerate(expressions)]
    with tempfile.NamedTemporaryFile("w", suffix=".yml") as file:
        json.dump({"groups": [{"name": "dashboard", "rules": asked}]}, file)
        file.flush()
        subprocess.run(["promtool", "check", "rules", file.name], check=True)


CASES = {"".join(word.capitalize() for word in case.__name__.split("_")): case
         for case in (dashboard_asks_for_what_is_printed, alerts_ask_for_what_is_printed,
                      unknown_names_and_labels_are_found, every_panel_says_what_it_shows,
                      panels_stand_beside_one_another, no_other_host_is_asked,
                      prometheus_takes_every_expression)}
CASES[CASE]()
