#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""kestrove-api beside others at the store: web.py SERVER LOAD [REQUESTS]. Inside the sandbox alone.

Requests a second for the items, beside 1,000 locked operations a second of another process; what 99 of 100 wait at most,
100 asked a second, while another process has the store for 200 ms of every 2 s; and the memory of a worker at the end,
after that many requests at least. Ends with 1 when an aim is missed.
"""
import http.client
import json
import pathlib
import shutil
import socket
import subprocess
import sys
import time

SERVER, LOAD = sys.argv[1:3]
REQUESTS = int(sys.argv[3]) if len(sys.argv) > 3 else 100_000
SOCKET = "/run/kestrove/api.sock"
PASSWORD = "Passw0rd!"
CLIENTS = 8
TABLES = ("/items", "/items/compression", "/rules", "/mode", "/users")
MOMENTS = ("/statistics", "/engine", "/interfaces")


class Unix(http.client.HTTPConnection):
    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.connect(SOCKET)


def ctl(*words, given=None):
    subprocess.run(["/bin/kestrovectl", *words], input=given, text=True, check=True, stdout=subprocess.DEVNULL)


def appliance():
    for name in ("factory.defaults", "kestrove.conf"):
        shutil.copy("/usr/share/kestrove/examples/" + name, "/etc/config")
    subprocess.run(["/bin/shm-init"], check=True, stdout=subprocess.DEVNULL)
    ctl("set", "httpOperState", "on")
    ctl("user", "add", "alice", given=PASSWORD + "\n")


def serve():
    server = subprocess.Popen([SERVER, "--workers", "2"])
    while not pathlib.Path(SOCKET).exists():
        time.sleep(0.05)
    return server


def log_in():
    connection = Unix("localhost")
    connection.request("POST", "/api/1/session", json.dumps({"user": "alice", "password": PASSWORD}),
                       {"Content-Type": "application/json"})
    return "Cookie: " + connection.getresponse().headers["Set-Cookie"].split(";")[0]


def asked(way, seconds, number, path, cookie):
    words = [LOAD, way, SOCKET, str(seconds), str(number), "/api/1" + path, cookie]
    said = subprocess.run(words, check=True, capture_output=True, text=True).stdout
    count, failures, median, most = said.split()
    assert failures == "0", said
    return int(count), float(median), float(most)


def memory(server):
    workers = pathlib.Path(f"/proc/{server.pid}/task/{server.pid}/children").read_text().split()
    def private(worker):
        rows = pathlib.Path(f"/proc/{worker}/smaps_rollup").read_text().splitlines()
        return sum(int(row.split()[1]) for row in rows if row.startswith(("Rss:")))
    return max(private(worker) for worker in workers) / 1024


def rates(cookie):
    others = subprocess.Popen([LOAD, "locked", "1000"], stdout=subprocess.PIPE, text=True)
    count, _, most = asked("load", 10, CLIENTS, "/items", cookie)
    others.terminate()
    seen = [int(line) for line in others.communicate()[0].split()]
    yield "GET /items a second", count / 10, 1000, "at least"
    yield "  what 99 of 100 took then", most, None, "ms"
    yield "  locked operations of others a second", sum(seen[1:-1]) / max(1, len(seen[1:-1])), None, ""


def waits(cookie):
    holder = subprocess.Popen([LOAD, "hold", "200", "2000"])
    for path in TABLES + MOMENTS:
        if path in MOMENTS:
            asked("pace", 2, 100, path, cookie)  # by a page that is open
        _, median, most = asked("pace", 8, 100, path, cookie)
        yield f"GET {path} while the store is held, 50 of 100 within (ms)", median, None, ""
        yield f"GET {path} while the store is held, 99 of 100 within (ms)", most, 5, "at most"
    holder.terminate()


def sizes(server, cookie):
    done = 0
    while done < REQUESTS:
        done += asked("load", 10, CLIENTS, "/items", cookie)[0]
    yield f"memory of a worker after {done} requests (MiB)", memory(server), 16, "at most"


def missed(measured, aim, kind):
    return aim is not None and (measured < aim if kind == "at least" else measured > aim)


def main():
    appliance()
    server = serve()
    cookie = log_in()
    bad = 0
    for part in (rates(cookie), waits(cookie), sizes(server, cookie)):
        for what, measured, aim, kind in part:
            wrong = missed(measured, aim, kind)
            bad += wrong
            print(f"{what:60} {measured:10.2f}" + (f"  {kind} {aim}" if aim else "") + ("  MISSED" if wrong else ""), flush=True)
    server.terminate()
    return 1 if bad else 0


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
sys.exit(main())
