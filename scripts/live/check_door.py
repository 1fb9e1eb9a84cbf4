#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Boots an appliance as door.py does, looks at each of its parts and ends it: check_door.py BUILD

What a browser and a manager see is asked through the doors; what is inside is asked of a shell that runs there.
"""
import json
import pathlib
import re
import signal
import socket
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import browser  # noqa: E402
import door  # noqa: E402

PAGE = pathlib.Path(__file__).resolve().parents[2] / "tools/api/page"
PATIENCE = 120  # seconds, for a machine with other work
MODULE = ".1.3.6.1.4.1.32473.1.1"
WAN_RATE = MODULE + ".1.2.0"
MARK = "that was all: "


def wait_for(what, true):
    end = time.monotonic() + PATIENCE
    while not (found := true()):
        if time.monotonic() > end:
            sys.exit(f"check: never: {what}")
        time.sleep(0.1)
    return found


def told(text):
    print(f"  {text}", flush=True)


class Inside:
    """The shell that runs in the appliance in place of its greeting's events."""

    def __init__(self, build):
        self.process = subprocess.Popen(door.sandbox(build, "bash"), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        pass_fds=(door.WEB, door.SNMP), start_new_session=True)

    def wait_until_up(self):
        greeting = []
        for line in self.process.stdout:
            greeting.append(line)
            if line.startswith("  metrics"):
                return "".join(greeting)
        sys.exit(f"check: it ended with {self.process.wait()} before it was up\n{''.join(greeting)}")

    def run(self, command):
        self.process.stdin.write(f"{command} </dev/null\necho \"{MARK}$?\"\n")
        self.process.stdin.flush()
        lines = []
        for line in self.process.stdout:
            if line.startswith(MARK):
                return int(line.removeprefix(MARK)), "".join(lines)
            lines.append(line)
        sys.exit(f"check: the appliance ended during: {command}")


class Check:
    def __init__(self, inside):
        self.inside = inside
        self.browser = browser.Browser(f"https://127.0.0.1:{door.os.environ['KESTROVE_WEB_PORT']}")

    def snmp(self, program, place):
        words = [program, "-v2c", "-c", "public", "-t", "5", "-r", "5", "-Oqvn",
                 f"127.0.0.1:{door.os.environ['KESTROVE_SNMP_PORT']}", place]
        return subprocess.run(words, stdout=subprocess.PIPE, text=True, env={**door.os.environ, "MIBS": ""}).stdout

    def engine(self):
        """Process number of an engine that lives, or None."""
        status, engine = self.browser.ask("GET", "/engine")
        return engine["pid"] if status == 200 and engine["process"] == "alive" else None

    def the_page_is_there(self):
        status, headers, text = self.browser.reach("GET", "/")
        assert status == 200 and "<title>" in text.lower(), (status, text)
        assert "default-src 'self'" in headers["Content-Security-Policy"], headers
        files = [path.relative_to(PAGE).as_posix() for path in sorted(PAGE.rglob("*")) if path.is_file()]
        missing = [file for file in files if self.browser.reach("GET", "/" + file)[0] != 200]
        assert files and not missing, missing
        told(f"the page and its {len(files)} files come over HTTPS, through the management port")

    def somebody_logs_in(self):
        assert self.browser.ask("GET", "/rules")[0] == 401
        assert self.browser.log_in("admin", "Passw0rd!") == 201
        told("admin is logged in")

    def a_change_is_seen_everywhere(self):
        status, made = self.browser.ask("PUT", "/items/wanLinkRate", {"value": 3072000})
        assert status == 200 and made["changed"], (status, made)
        status, shown = self.inside.run("kestrovectl --json show wanLinkRate")
        assert status == 0 and re.search(r'"value": 3072000\b', shown), shown
        wait_for("the agent shows the change", lambda: self.snmp("snmpget", WAN_RATE).strip() == "3072000")
        told("the WAN rate set there is seen by kestrovectl and over SNMP")

    def the_agent_shows_the_whole(self):
        lines = self.snmp("snmpbulkwalk", MODULE).splitlines()
        assert len(lines) > 200, lines
        told(f"a walk over the agent gives {len(lines)} values")

    def traffic_is_counted(self):
        file = "/run/kestrove/kestrove.prom"
        counted = ['kestrove_queue_bytes_total{queue="wan"}'] + [
            f'kestrove_port_bytes_total{{port="{port}",direction="{way}"}}' for port in ("lan", "wan") for way in ("sent", "received")]

        def grown():
            text = self.inside.run(f"cat {file}")[1]
            return all((found := re.search(re.escape(one) + r" (\d+)", text)) and int(found[1]) > 0 for one in counted)
        wait_for("the engine counts traffic in both directions, and the metrics have it", grown)
        status, _, text = self.browser.reach("GET", "/api/1/metrics", headers=self.browser.own)
        assert status == 200 and "kestrove_up 1\n" in text, (status, text)
        told("traffic passes, the engine counts it in both directions, the metrics tell of it")

    def a_killed_engine_comes_back(self):
        before = wait_for("an engine", self.engine)
        assert self.inside.run(f"kill -9 {before}")[0] == 0
        after = wait_for("another engine", lambda: (now := self.engine()) and now != before and now)
        told(f"engine {before} was killed, and the monitor started {after}")

    def every_event_is_told(self):
        status, events = self.browser.ask("GET", "/events")
        named = {event["user"] for event in events["events"]}
        assert status == 200 and "admin" in named, named
        told(f"{len(events['events'])} events are in the log")

    def nothing_is_left(self):
        """As a person ends it: the launcher alone is told, and whatever was in there goes with it."""
        self.inside.process.send_signal(signal.SIGTERM)
        self.inside.process.wait()
        port = int(door.os.environ["KESTROVE_WEB_PORT"])
        for number in (door.WEB, door.SNMP):
            door.os.close(number)

        def refused():
            try:
                socket.create_connection(("127.0.0.1", port), 1).close()
            except ConnectionRefusedError:
                return True
            except OSError:
                pass
            return False
        wait_for("the door is gone with the appliance", refused)
        told("it ended, and nothing of it is left")

    def all(self):
        for look in (self.the_page_is_there, self.somebody_logs_in, self.a_change_is_seen_everywhere,
                     self.the_agent_shows_the_whole, self.traffic_is_counted, self.a_killed_engine_comes_back,
                     self.every_event_is_told, self.nothing_is_left):
            look()


if __name__ == "__main__":
    door.doors(0, 0)
    appliance = Inside(sys.argv[1])
    try:
        print(appliance.wait_until_up(), flush=True)
        Check(appliance).all()
    finally:
        appliance.process.kill()
    print("Every part of it answers.")
