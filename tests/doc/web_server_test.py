#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The examples of doc/web-server in the servers that they are for, in the sandbox:
web_server_test.py SOURCE PROGRAM SERVER CASE. PROGRAM is kestrove-api, SERVER is apache or nginx."""
import http.client
import os
import pathlib
import shutil
import socket
import ssl
import subprocess
import sys
import threading

SOURCE, PROGRAM, SERVER, CASE = pathlib.Path(sys.argv[1]), *sys.argv[2:]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "scripts/live"))
import browser  # noqa: E402

URL = "https://127.0.0.1"
MODULES = ("mpm_event", "authz_core", "ssl", "socache_shmcb", "headers", "proxy", "proxy_http")
AROUND_APACHE = """\
{modules}
ServerRoot /tmp
PidFile /tmp/apache.pid
ErrorLog /tmp/errors
DefaultRuntimeDir /tmp
Mutex file:/tmp default
User www-data
Group www-data
ServerName branch-07.example
Listen 443
Include {example}
"""
AROUND_NGINX = """\
user www-data;
worker_processes 1;
pid /tmp/nginx.pid;
error_log /tmp/errors;
events {{}}
http {{
  access_log off;
  include {example};
}}
"""


def configuration():
    file = pathlib.Path("/tmp/server.conf")
    example = SOURCE / f"doc/web-server/{SERVER}.conf"
    shutil.copy(example, "/tmp/example.conf")  # the place of the source may have blanks
    modules = "\n".join(f"LoadModule {name}_module /usr/lib/apache2/modules/mod_{name}.so" for name in MODULES)
    around = AROUND_APACHE if SERVER == "apache" else AROUND_NGINX
    file.write_text(around.format(modules=modules, example="/tmp/example.conf"), encoding="utf-8")
    return file


def serve():
    os.makedirs("/etc/ssl/private", exist_ok=True)
    os.makedirs("/var/log/nginx", exist_ok=True)
    subprocess.run(["/usr/share/kestrove/apache/certificate", "/etc/ssl/private/branch-07.pem"], check=True)
    file = configuration()
    if SERVER == "apache":
        words = ["/usr/sbin/apache2", "-f", file, "-DFOREGROUND"]
        subprocess.run([*words[:-1], "-t"], check=True)
    else:
        words = ["/usr/sbin/nginx", "-c", file, "-g", "daemon off;"]
        subprocess.run([*words[:-2], "-t"], check=True)
    return subprocess.Popen(words)


def echo():
    """A program behind the socket that gives the request's head back."""
    os.makedirs("/run/kestrove", exist_ok=True)
    listener = socket.socket(socket.AF_UNIX)
    listener.bind("/run/kestrove/api.sock")
    os.chmod("/run/kestrove/api.sock", 0o666)
    listener.listen()

    def give_back():
        while True:
            connection, _ = listener.accept()
            request = b""
            while b"\r\n\r\n" not in request and (more := connection.recv(65536)):
                request += more
            connection.sendall(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n" % len(request) + request)
            connection.close()

    threading.Thread(target=give_back, daemon=True).start()


def ClientSaysNothingOfItsWay():
    echo()
    serve()
    forged = {"X-Kestrove-Client": "203.0.113.9", "X-Forwarded-For": "203.0.113.9", "Host": "branch-07.example"}
    status, _, text = browser.Browser(URL).reach("GET", "/api/1/rules?x=%2e", headers=forged)
    lines = text.split("\r\n")
    assert status == 200 and lines[0].startswith("GET /api/1/rules?x=%2e HTTP/1."), lines
    assert "Host: branch-07.example" in lines and "X-Kestrove-Client: 127.0.0.1" in lines, lines
    assert "203.0.113.9" not in text, lines


def program():
    for name in ("factory.defaults", "kestrove.conf"):
        shutil.copy(f"/usr/share/kestrove/examples/{name}", "/etc/config")
    subprocess.run(["/bin/shm-init"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["/bin/kestrovectl", "set", "httpOperState", "on"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["/bin/kestrovectl", "user", "add", "alice", "--admin"], input="Passw0rd!\n", text=True, check=True,
                   stdout=subprocess.DEVNULL)
    return subprocess.Popen([PROGRAM])


def first_line(alice):
    """Of the stream of events: it comes at once, or somebody on the way keeps it back."""
    connection = http.client.HTTPSConnection("127.0.0.1", timeout=60, context=ssl._create_unverified_context())
    connection.request("GET", "/api/1/events/stream", headers=alice.own)
    return connection.getresponse().readline()


def BrowserLogsInChangesAndHearsEvents():
    program()
    serve()
    alice = browser.Browser(URL)
    assert alice.reach("GET", "/api/1")[0] == 200
    assert alice.log_in("alice", "Passw0rd!") == 201
    status, made = alice.ask("PUT", "/items/compression", {"value": "off"})
    assert status == 200 and made["changed"], made
    assert first_line(alice).startswith(b"retry:")
    alice.origin = "https://other.example"
    assert alice.ask("PUT", "/items/compression", {"value": "on"})[0] == 403


def LongBodiesReachTheProgram():
    program()
    serve()
    alice = browser.Browser(URL)
    alice.reach("GET", "/api/1")
    assert alice.log_in("alice", "Passw0rd!") == 201
    status, made = alice.ask("POST", "/apply", {"script": ("#" * 1000 + "\n") * 1000})
    assert status == 200 and not made["changed"], made


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
globals()[CASE]()
