#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Somebody who means harm, over the socket: hostile_test.py PROGRAM SOURCE [REQUESTS].

REQUESTS of them (5000), of every kind: each is refused, no process of the server ends, and the store and the files are
the same to the byte afterwards.
"""
import collections
import concurrent.futures
import ctypes
import hashlib
import json
import os
import pathlib
import random
import re
import signal
import socket
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from served import PROGRAM, SOCKET, Browser, appliance, ctl, serve, wait_for, workers  # noqa: E402
import api_document  # noqa: E402

SOURCE = pathlib.Path(sys.argv[2])
REQUESTS = int(sys.argv[3]) if len(sys.argv) > 3 else 5000
KEY, SIZE = (int(re.search(rf"{name} = (\d+)", (SOURCE / "include/kestrove/layout.h").read_text())[1]) for name in ("SHM_KEY", "SHM_SIZE"))
LOG = [int(number) for number in re.search(r"TABLE\(ShmData, eventLog, (\d+), (\d+)", (SOURCE / "src/store/layout.def").read_text()).groups()]
# What a change could reach; the server's own sessions and failures, and the sandbox's notes, are none of it.
PLACES = "/etc", "/usr/local/apache2", "/var/lib", "/var/log", "/var/etc", "/tmp"
EVENT_LOG = "/var/log/kestrove/event.log"
LOG_IN_FAILED = "Web interface login failed"
AT_ONCE = 8
MEGABYTE = b"x" * 1048576
PATHS = api_document.read((SOURCE / "doc/api.yaml").read_text())["paths"]
METHODS = "GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "TRACE", "PROPFIND"
CHANGES = (("PUT", "/items/compression", {"value": "off"}), ("POST", "/rules", {"position": 0, "target": "drop", "matchAll": True}),
           ("DELETE", "/users/alice", None), ("POST", "/factory-reset", {}), ("POST", "/reboot", {}),
           ("POST", "/apply", {"script": "set compression off\n", "replace": True}), ("DELETE", "/events", None),
           ("POST", "/batch", {"operations": [{"method": "PUT", "path": "/items/compression", "body": {"value": "off"}}]}))
chance = random.Random(20261122)


def request(method, path, headers=(), body=b""):
    """Its bytes; the headers as they are given, also twice."""
    lines = [f"{method} /api/1{path} HTTP/1.1", *headers, f"Content-Length: {len(body)}", "", ""]
    return "\r\n".join(lines).encode("latin-1") + body


def change(secrets, host="Host: localhost", more=()):
    method, path, body = chance.choice(CHANGES)
    text = b"" if body is None else json.dumps(body).encode()
    return request(method, path, [host, "Content-Type: application/json", *secrets, *more], text)


def letters(length):
    return "".join(chance.choice("0123456789abcdef") for _ in range(length))


def foreign_origin(admin, _):
    origin = chance.choice(("https://evil.example", "null", "http://localhost", "https://localhost:444", "https://localhost.evil.example", ""))
    return change(admin, more=[f"Origin: {origin}"]), (403,)


def foreign_page(admin, _):
    return change(admin, more=["Sec-Fetch-Site: " + chance.choice(("cross-site", "same-site", "x"))]), (403,)


def foreign_host(admin, _):
    host = chance.choice(("evil.example", "", "[::1", "localhost, evil", "a:b:c", "localhost:99999999", "x" * 300))
    return change(admin, host=f"Host: {host}"), (400, 421)


def two_hosts(admin, _):
    return change(admin, more=["Host: evil.example"]), (400,)


def forged_token(*_):
    return change(["Authorization: Bearer " + chance.choice((letters(64), "", "x" * 4000, "../../../etc/passwd"))]), (401,)


def forged_cookie(admin, _):
    cookie = chance.choice((letters(64), "../../../../etc/passwd", admin[0][-64:-1], "", admin[0][-64:] + "; __Host-kestrove=" + letters(64)))
    return change(["Cookie: __Host-kestrove=" + cookie, admin[1]]), (401,)


def no_word(admin, reader):
    return change([admin[0], *chance.choice(((), (reader[1],), ("X-CSRF-Token: ",), ("X-CSRF-Token: " + letters(64),)))]), (403,)


def reader_changes(_, reader):
    return change(reader), (403,)


def nobody(*_):
    path = chance.choice(list(PATHS))
    named = re.sub(r"\{\w+\}", lambda _: chance.choice(("0", "compression", "10.0.0.0", "..", "%2e%2e%2f", "%00", "alice")), path).rstrip("/")
    method = chance.choice([one for one in METHODS if (one, path) not in (("GET", "/"), ("POST", "/session"))])
    return request(method, named, ["Host: localhost"]), (401,)


def guess(*_):
    body = json.dumps({"user": chance.choice(("alice", "root", "ali", "")), "password": letters(12)}).encode()
    return request("POST", "/session", ["Host: localhost", "Content-Type: application/json"], body), (401, 429)


def broken_body(admin, _):
    method, path, body = chance.choice([one for one in CHANGES if one[2]])
    whole = json.dumps(body).encode()
    broken = chance.choice((whole[:-1], b"[" * 5000, b"{\"a\":" * 2000, b"\xff\xfe", b"null", b"[]", whole + b"x", b'{"value":{}}', b'{"__proto__":1}',
                            b'{"position":"--json"}', b'{"script":1e999}', b"{\"operations\":[{}]}", whole.replace(b'"', b"'")))
    return request(method, path, ["Host: localhost", "Content-Type: application/json", *admin], broken), (400,)


def other_type(admin, _):
    kind = chance.choice(("text/plain", "application/x-www-form-urlencoded", "multipart/form-data", ""))
    body = b'{"value":"off"}'
    return request("PUT", "/items/compression", ["Host: localhost", f"Content-Type: {kind}", *admin], body), (415,)


def foreign_path(admin, _):
    path = chance.choice(("/../../etc/passwd", "/items/%2e%2e%2fusers", "/rules/%00", "/rules/%zz", "/state/../..", "//etc", "/users/alice%0a", "/" + "a" * 8000,
                          "/items/--user=root", "/items/$(reboot)", "/diff?from=/etc/passwd&to=saved", "/history/-1", "/rules/99999999999999999999"))
    return request("GET", path, ["Host: localhost", *admin]), (400, 404, 422)


def ten_megabytes(admin, _):
    head = f"POST /api/1/apply HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n{admin[0]}\r\n{admin[1]}\r\n"
    if chance.random() < 0.5:
        return (head.encode() + b"Content-Length: 10485760\r\n\r\n", *[MEGABYTE] * 10), (413, None)
    chunk = b"100000\r\n", MEGABYTE, b"\r\n"
    return (head.encode() + b"Transfer-Encoding: chunked\r\n\r\n", *chunk * 10, b"0\r\n\r\n"), (413, None)


def broken_http(admin, _):
    head = f"PUT /api/1/items/compression HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n{admin[0]}\r\n".encode()
    return chance.choice((
        b"\x00" * 100, b"\r\n" * 1000, b"GET\r\n\r\n", b"GET /api/1/items HTTP/9.9\r\n\r\n", b"GET /api/1/items\r\n\r\n", bytes(chance.randbytes(300)) + b"\r\n\r\n",
        head + b"Content-Length: -1\r\n\r\n", head + b"Content-Length: 5\r\nContent-Length: 6\r\n\r\n{\"a\":", head + b"Content-Length: 99999999999999999999\r\n\r\n",
        head + b"Transfer-Encoding: chunked\r\nContent-Length: 3\r\n\r\nzz\r\n", head + b"Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\nx",
        head + b"A: b\r\n" * 20000 + b"\r\n", head + b"A: " + b"b" * 100000 + b"\r\n\r\n", head + b" folded: x\r\n\r\n", head + b"No-Colon\r\n\r\n",
        b"GET /api/1/" + b"%41" * 30000 + b" HTTP/1.1\r\n\r\n")), (400, 401, 403, 404, 405, 411, 413, 414, 421, 431, 501, 505, None)


def begun(*_):
    """A head that comes in part and never ends: the connection is left open."""
    return chance.choice((b"", b"P", b"PUT /api/1/items", b"PUT /api/1/items/compression HTTP/1.1\r\nHost: localhost\r\nX: ")), ()


KINDS = {foreign_origin: 8, foreign_page: 4, foreign_host: 8, two_hosts: 2, forged_token: 8, forged_cookie: 8, no_word: 8, reader_changes: 4,
         nobody: 20, guess: 2, broken_body: 4, other_type: 2, foreign_path: 4, broken_http: 12, begun: 2, ten_megabytes: 0.4}


def answer(parts, whole):
    """The status; nothing where the connection was closed without one. Behind what is no whole request nothing comes."""
    with socket.socket(socket.AF_UNIX) as raw:
        raw.settimeout(60)
        raw.connect(SOCKET)
        try:
            for part in parts:
                raw.sendall(part)
            if not whole:
                raw.shutdown(socket.SHUT_WR)
        except OSError:
            pass  # it was closed before it had all
        try:
            reply = raw.recv(64)
        except ConnectionResetError:
            return None
    return int(reply.split()[1]) if reply.startswith(b"HTTP/1.1 ") else None


def leave_open(sent):
    raw = socket.socket(socket.AF_UNIX)
    raw.settimeout(60)
    raw.connect(SOCKET)
    raw.sendall(sent)
    return raw


def ask(made):
    kind, parts, _ = made
    return leave_open(parts[0]) if kind is begun else answer(parts, kind is not broken_http)


def store():
    """To the byte, but for the event log, which has the log-ins that failed."""
    library = ctypes.CDLL(None, use_errno=True)
    library.shmat.restype = ctypes.c_void_p
    place = library.shmat(library.shmget(KEY, 0, 0), None, 0o10000)
    assert place != ctypes.c_void_p(-1).value
    content = ctypes.string_at(place, SIZE)
    library.shmdt(ctypes.c_void_p(place))
    return content[:LOG[0]] + content[sum(LOG):]


def files():
    """But for the event log's, which has the log-ins that failed."""
    found = {}
    for place in PLACES:
        for folder, _, names in os.walk(place):
            for name in names:
                path = os.path.join(folder, name)
                if path == EVENT_LOG:
                    continue
                facts = os.lstat(path)
                plain = os.path.isfile(path) and not os.path.islink(path) and facts.st_size < 1 << 20
                digest = hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest() if plain else ""
                found[path] = facts.st_ino, facts.st_mode, facts.st_size, facts.st_mtime_ns, digest
    return found


def names_of_events():
    return [event["description"] for event in json.loads(ctl("--json", "events"))["events"]]


def requests(admin, reader):
    """Each kind at least once: the kind, the bytes, and what may be answered."""
    kinds = list(KINDS)
    kinds += chance.choices(kinds, KINDS.values(), k=REQUESTS - len(kinds))
    made = [(kind, *kind(admin, reader)) for kind in kinds]
    return [(kind, parts if isinstance(parts, tuple) else (parts,), expected) for kind, parts, expected in made]


def secrets_of(browser):
    return [f"{name}: {value}" for name, value in browser.headers.items()]


def main():
    appliance()
    ctl("user", "add", "guest", given="Passw0rd!\n")
    complaints = open("/run/complaints", "w+")
    server = serve("--workers", "2", complaints=complaints)
    admin, reader = secrets_of(Browser().log_in()), secrets_of(Browser().log_in("guest"))
    before, present, serving = store(), files(), workers(server)
    assert len(present) > 100 and "/etc/passwd" in present and "/etc/config/kestrove.conf" in present
    events = names_of_events()
    made = requests(admin, reader)
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as askers:
        replies = list(askers.map(ask, made))
    for (kind, sent, expected), reply in zip(made, replies, strict=True):
        assert kind is begun or reply in expected, (kind.__name__, reply, sent[0][:400])
    for raw in (reply for reply in replies if isinstance(reply, socket.socket)):
        assert raw.recv(64)[:12] in (b"", b"HTTP/1.1 408", b"HTTP/1.1 400"), "a head that never ends is ended"
    print(collections.Counter(kind.__name__ for kind, _, _ in made))
    assert set(names_of_events()[len(events):]) == {LOG_IN_FAILED}, "nothing but log-ins that failed is told"
    assert store() == before, "the store is another one"
    now = files()
    assert now == present, {path for path in {*now, *present} if now.get(path) != present.get(path)}
    assert workers(server) == serving, "a worker has ended"
    browser = Browser()
    browser.headers = dict(line.split(": ", 1) for line in admin)
    assert browser.ask("PUT", "/items/compression", {"value": "off"})[1]["changed"], "still served"
    assert store() != before, "what is changed is seen"
    server.send_signal(signal.SIGTERM)
    assert server.wait(60) == 0
    complaints.seek(0)
    assert not complaints.read(), "complaints"


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
main()
