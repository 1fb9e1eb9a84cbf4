# SPDX-License-Identifier: Apache-2.0
"""A running kestrove-api, what asks it, and who holds the store: for the cases in the sandbox. The program is the first word."""
import http.client, json, pathlib, shutil, socket, ssl, subprocess, sys, time

PROGRAM = sys.argv[1]
SOCKET = "/run/kestrove/api.sock"
PASSWORD = "Passw0rd!"
SHARE = "/usr/share/kestrove/apache"


def wait_for(what, true, seconds=60):
    end = time.monotonic() + seconds
    while not true():
        assert time.monotonic() < end, "never: " + what
        time.sleep(0.02)


class Unix(http.client.HTTPConnection):
    def __init__(self):
        super().__init__("localhost", timeout=60)

    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.settimeout(60)
        self.sock.connect(SOCKET)


class Web(http.client.HTTPSConnection):
    def __init__(self):
        super().__init__("127.0.0.1", timeout=60, context=ssl._create_unverified_context())


class Browser:
    def __init__(self, way=Unix):
        self.way, self.headers = way, {}

    def open(self, method, path, body=None, headers={}):
        connection = self.way()
        sent = {**self.headers, **headers}
        if body is not None:
            sent["Content-Type"] = "application/json"
        connection.request(method, "/api/1" + path, None if body is None else json.dumps(body), sent)
        return connection.getresponse()

    def ask(self, method, path, body=None, headers={}):
        reply = self.open(method, path, body, headers)
        text = reply.read()
        return reply.status, json.loads(text) if text else None

    def log_in(self, user="alice"):
        reply = self.open("POST", "/session", {"user": user, "password": PASSWORD})
        facts = json.loads(reply.read())
        assert reply.status == 201, facts
        self.headers = {"Cookie": reply.headers["Set-Cookie"].split(";")[0], "X-CSRF-Token": facts["csrf"]}
        return self


def ctl(*words, given=None):
    return subprocess.run(["/bin/kestrovectl", *words], input=given, text=True, check=True, stdout=subprocess.PIPE).stdout


def appliance():
    for name in ("factory.defaults", "kestrove.conf"):
        shutil.copy("/usr/share/kestrove/examples/" + name, "/etc/config")
    subprocess.run(["/bin/shm-init"], check=True, stdout=subprocess.DEVNULL)
    ctl("set", "httpOperState", "on")
    ctl("user", "add", "alice", "--admin", given=PASSWORD + "\n")


def serve(*options, complaints=None):
    server = subprocess.Popen([PROGRAM, *options], stderr=complaints)
    wait_for("the server answers", answers)
    return server


def answers():
    try:
        return Browser().ask("GET", "")[0] == 200
    except OSError:
        return False


def workers(server):
    return pathlib.Path(f"/proc/{server.pid}/task/{server.pid}/children").read_text().split()


def hold_lock():
    """Another process that holds the store's lock until its pipe ends."""
    code = ("import fcntl,sys; f=open('/var/lock/shm','r+'); fcntl.lockf(f,fcntl.LOCK_EX); print('held',flush=True);"
            "sys.stdin.read()")
    holder = subprocess.Popen([sys.executable, "-c", code], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    assert holder.stdout.readline() == "held\n"
    return holder
