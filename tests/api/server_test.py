#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""kestrove-api over its socket, in the sandbox: server_test.py PROGRAM CASE."""
import json, os, pathlib, signal, socket, subprocess, sys, threading, time

sys.dont_write_bytecode = True
from served import PASSWORD, PROGRAM, SHARE, SOCKET, Browser, Web, answers, appliance, ctl, hold_lock, serve, wait_for, workers  # noqa: E402


def RequestsAreAnsweredOverTheSocket():
    server = serve()
    browser = Browser()
    assert browser.ask("GET", "/rules")[0] == 401
    browser.log_in()
    assert browser.ask("PUT", "/items/compression", {"value": "off"})[1]["changed"]
    assert ctl("--json", "show", "compression").find('"off"') > 0
    assert browser.ask("PUT", "/items/wanLinkRate", {"value": 1})[1]["error"]["code"] == 12
    assert browser.ask("GET", "/diff?from=running&to=saved")[0] == 200
    assert browser.ask("GET", "/diff?from=running&from=saved&to=saved")[0] == 400
    assert browser.ask("GET", "/rules/%30")[0] == 200 and browser.ask("GET", "/rules/%2")[0] == 400
    assert Browser().ask("POST", "/session", {"user": "alice", "password": "x"})[0] == 401
    for failure in pathlib.Path("/run/kestrove/failures").glob("[!.]*"):
        os.utime(failure, (time.time() + 3600,) * 2)  # however slow the machine is
    early = Browser().open("POST", "/session", {"user": "alice", "password": "x"})
    assert early.status == 429 and int(early.headers["Retry-After"]) > 0
    server.terminate()
    assert server.wait(60) == 0 and not os.path.exists(SOCKET)


def DeadWorkersAreStartedAgain():
    server = serve("--workers", "2")
    browser = Browser().log_in()
    for _ in range(3):
        before = workers(server)
        for worker in before:
            os.kill(int(worker), signal.SIGKILL)
        wait_for("two new workers", lambda: len(set(workers(server)) - set(before)) == 2)
        assert browser.ask("GET", "/rules")[0] == 200, "sessions outlive workers"
    server.terminate()
    assert server.wait(60) == 0


def serve_with_one_at_work():
    """Of its two workers: the other is stopped, so that whoever is held up is seen. Not while it has the store."""
    server = serve("--workers", "2")

    def stopped():
        worker = int(workers(server)[0])
        os.kill(worker, signal.SIGSTOP)
        wait_for("it is stopped", lambda: pathlib.Path(f"/proc/{worker}/stat").read_text().rpartition(")")[2].split()[0] == "T")
        if json.loads(ctl("status", "--json"))["lockHeldBy"] == "nobody":
            return True
        os.kill(worker, signal.SIGCONT)
        return False

    wait_for("a worker is stopped without the store", stopped)


def WhoWaitsForTheStoreHoldsUpNobody():
    serve_with_one_at_work()
    browser = Browser().log_in()
    holder = hold_lock()
    found = []
    waiting = [threading.Thread(target=lambda: found.append(browser.ask("GET", "/check"))) for _ in range(5)]
    for thread in waiting:
        thread.start()
    assert Browser().ask("GET", "")[0] == 200 and not found, "the only worker answers meanwhile"
    for path in "/session", "/status", "/events/stream":
        assert browser.open("GET", path).status == 200, path
    for thread in waiting:
        thread.join()
    assert [status for status, _ in found] == [503] * 5, found
    assert all(f"process {holder.pid}" in body["error"]["message"] for _, body in found), found
    holder.communicate("")
    assert browser.ask("GET", "/check")[0] == 200


TABLES = ("/rules", "/rules/0", "/items", "/items/compression", "/users", "/users/alice", "/routes", "/routes6", "/addresses", "/mode")


def TableIsThereForWhoNeverAskedWhileOthersHaveTheStore():
    serve_with_one_at_work()
    browser = Browser().log_in()
    ctl("rule", "add", "0", "--from", "10.7.0.0/16")

    pause = iter(range(1, 60))

    def answered():
        time.sleep(next(pause))  # an idle worker looks once a second
        holder = hold_lock()
        replies = [browser.ask("GET", path) for path in TABLES]
        holder.communicate("")
        return [status for status, _ in replies] == [200] * len(TABLES) and replies[0][1][0]["source"] == "10.7.0.0/16"

    wait_for("the server has looked itself", answered)


def LookOfAMomentAgoIsGoodWhileOthersHaveTheStore():
    serve_with_one_at_work()
    browser = Browser().log_in()
    for path in ("/engine", "/tasks", "/statistics", "/notifications", "/interfaces"):
        def again():
            before = browser.ask("GET", path)
            holder = hold_lock()
            seen = browser.ask("GET", path)
            if seen[0] != 503:
                time.sleep(1.1)
                assert browser.ask("GET", path)[0] == 503, "it is too old by then"
            holder.communicate("")
            assert before[0] == 200
            return seen == before

        wait_for(f"{path} is answered", again, 120)


def EventsComeAsTheyHappenAndEndWithTheSession():
    serve_with_one_at_work()
    browser = Browser().log_in()
    stream = browser.open("GET", "/events/stream")
    assert stream.status == 200 and stream.headers["Content-Type"] == "text/event-stream"
    assert stream.readline().startswith(b"retry:") and stream.readline() == b"\n"
    other = Browser().open("GET", "/events/stream")
    assert other.status == 401
    ctl("set", "compression", "off", "--source", "4", "--user", "bertha")
    line = stream.readline()
    while not line.startswith(b"data: "):
        line = stream.readline()
    event = json.loads(line[6:])
    assert event["user"] == "bertha" and event["source"] == "SSH", event
    assert browser.ask("GET", "/rules")[0] == 200, "a stream holds up nobody"
    browser.ask("DELETE", "/session")
    while stream.readline():
        pass


def BodiesThatAreTooLongAreRefused():
    serve()
    browser = Browser().log_in()
    assert browser.ask("POST", "/apply", {"script": "#" * (1 << 19)})[0] in (200, 400)
    for chunked in (False, True):
        with socket.socket(socket.AF_UNIX) as raw:
            raw.settimeout(60)
            raw.connect(SOCKET)
            head = "Transfer-Encoding: chunked" if chunked else "Content-Length: 10485760"
            raw.sendall(f"POST /api/1/apply HTTP/1.1\r\nHost: localhost\r\n{head}\r\n\r\n".encode())
            try:
                for _ in range(160):
                    raw.sendall((b"10000\r\n" if chunked else b"") + b"x" * 65536 + (b"\r\n" if chunked else b""))
                raw.sendall(b"0\r\n\r\n")
            except (BrokenPipeError, ConnectionResetError):
                pass
            try:
                assert raw.recv(65536).startswith(b"HTTP/1.1 413"), "too long"
            except ConnectionResetError:
                pass
    announced = {"Content-Length": str(17 << 20)}
    for asker, path, most in ((browser, "/apply", 4), (browser, "/preview", 4), (browser, "/save", 1), (Browser(), "/apply", 1)):
        status, reply = asker.ask("POST", path, headers=announced)
        assert (status, reply["error"]["message"]) == (413, f"a body has {most} MiB at most"), (path, status, reply)


def RequestThatComesByteByByteIsEnded():
    serve()
    with socket.socket(socket.AF_UNIX) as raw:
        raw.settimeout(60)
        raw.connect(SOCKET)
        began = time.monotonic()
        with_bytes = iter(b"GET /api/1 HTTP/1.1\r\n" + b"X: y\r\n" * 1000)
        try:
            while not raw.recv(1, socket.MSG_DONTWAIT | socket.MSG_PEEK) == b"":
                pass
        except BlockingIOError:
            pass
        ended = False
        while not ended:
            assert time.monotonic() - began < 60, "never ended"
            try:
                raw.sendall(bytes([next(with_bytes)]))
                ended = raw.recv(1, socket.MSG_DONTWAIT) == b""
            except BlockingIOError:
                time.sleep(0.2)
            except (BrokenPipeError, ConnectionResetError):
                ended = True
    assert answers()


def RequestThatItsSenderGivesUpIsEnded():
    """Its end often comes together with the last bytes; a sender that is silent would be heard for 15 seconds."""
    serve()
    head = b"PUT /api/1/items/compression HTTP/1.1\r\nHost: localhost\r\n"
    for sent in (b"", b"PUT /api", b"\r\n" * 1000, head, head + b"Content-Length: 50\r\n\r\n{}", head + b"Transfer-Encoding: chunked\r\n\r\nff\r\nx") * 10:
        with socket.socket(socket.AF_UNIX) as raw:
            raw.settimeout(10)
            raw.connect(SOCKET)
            raw.sendall(sent)
            raw.shutdown(socket.SHUT_WR)
            assert raw.recv(1) == b"", sent


def WholeRequestIsAnsweredToWhoSendsNothingMore():
    serve()
    browser = Browser().log_in()
    secrets = "".join(f"{name}: {value}\r\n" for name, value in browser.headers.items())
    script = json.dumps({"script": "# a long script\n" * 100000, "check": True})
    whole = (f"GET /api/1/rules HTTP/1.1\r\nHost: localhost\r\n{secrets}\r\n",
             f"POST /api/1/apply HTTP/1.1\r\nHost: localhost\r\n{secrets}Content-Type: application/json\r\n"
             f"Content-Length: {len(script)}\r\n\r\n{script}")
    for sent in whole * 10:
        with socket.socket(socket.AF_UNIX) as raw:
            raw.settimeout(60)
            raw.connect(SOCKET)
            raw.sendall(sent.encode())
            raw.shutdown(socket.SHUT_WR)
            assert raw.recv(64).startswith(b"HTTP/1.1 200"), sent[:200]


def ArchiveForSupportComesAndStaysNowhere():
    serve()
    reply = Browser().log_in().open("GET", "/support")
    text = reply.read()
    assert reply.status == 200 and text[:2] == b"\x1f\x8b" and reply.headers["Content-Type"] == "application/gzip", text[:300]
    assert list(pathlib.Path("/run/kestrove/support").iterdir()) == []


def PreviewTriesAChangeOnACopy():
    serve()
    browser = Browser().log_in()
    store, file = ctl("dump"), pathlib.Path("/etc/config/kestrove.conf").read_text()

    def preview(method, path, body):
        status, result = browser.ask("POST", "/preview", {"method": method, "path": path, "body": body})
        assert status == 200, result
        return result

    mode = preview("PUT", "/mode/single", {"lan": 10, "wan": 20})
    assert mode["exit"] == 0 and "mode single 10 20" in json.dumps(mode["store"]), mode
    assert [one["path"] for one in mode["files"]] == ["/etc/config/kestrove.conf"], mode
    script = preview("POST", "/apply", {"script": "set wanLinkRate 4096000\n"})
    assert script["exit"] == 0 and "4096" in json.dumps(script["store"]), script
    script = preview("POST", "/apply", {"script": "# a long script\n" * 100000 + "set wanLinkRate 4096000\n"})
    assert script["exit"] == 0 and "4096" in json.dumps(script["store"]), script
    assert preview("PUT", "/items/wanLinkRate", {"value": 1})["exit"] == 1
    assert ctl("dump") == store and pathlib.Path("/etc/config/kestrove.conf").read_text() == file
    assert not list(pathlib.Path("/tmp").glob("kestrovectl-*"))


def SecondServerLeavesTheFirstAlone():
    serve()
    second = subprocess.run([PROGRAM], stderr=subprocess.PIPE, text=True)
    assert second.returncode == 5 and "another process listens there" in second.stderr, second
    assert answers()


def WorkersAreTwoToFour():
    for number in "0", "1", "5", "16", "-2", "x", "2.5", "":
        refused = subprocess.run([PROGRAM, "--workers", number], stderr=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        assert (refused.returncode, refused.stdout) == (2, ""), refused
        assert "--workers" in refused.stderr, refused
        assert not os.path.exists(SOCKET), number
    for number in "2", "3", "4":
        server = serve("--workers", number)
        wait_for("all of them", lambda: len(workers(server)) == int(number))
        server.terminate()
        assert server.wait(60) == 0


def SocketIsForRootAndTheWebServer():
    serve()
    facts = os.stat(SOCKET)
    import grp
    assert facts.st_mode & 0o777 == 0o660 and facts.st_gid == grp.getgrnam("www-data").gr_gid, facts


def TokensAreShownOnce():
    token = subprocess.run([PROGRAM, "token", "add", "deploy", "--role", "admin"], stdout=subprocess.PIPE, text=True,
                           check=True).stdout.strip()
    listed = subprocess.run([PROGRAM, "token", "list"], stdout=subprocess.PIPE, text=True, check=True).stdout
    assert json.loads(listed)[0]["name"] == "deploy" and token not in listed
    serve()
    program = Browser()
    program.headers = {"Authorization": "Bearer " + token}
    assert program.ask("PUT", "/items/compression", {"value": "off"})[0] == 200
    subprocess.run([PROGRAM, "token", "remove", "deploy"], check=True)
    assert program.ask("GET", "/rules")[0] == 401


def BrowserComesInThroughTheWebServer():
    subprocess.run(["/usr/bin/apacheConfig.sh", "127.0.0.1"], check=True)
    subprocess.run([SHARE + "/certificate"], check=True)
    serve()
    subprocess.run(["/usr/sbin/apache2", "-f", SHARE + "/httpd.conf"], check=True)
    browser = Browser(Web)

    def there():
        try:
            return browser.ask("GET", "")[0] == 200
        except OSError:
            return False

    wait_for("the web server answers", there)
    browser.log_in()
    assert browser.ask("PUT", "/items/compression", {"value": "off"}, {"Origin": "https://127.0.0.1"})[0] == 200
    assert browser.ask("PUT", "/items/compression", {"value": "on"}, {"Origin": "https://evil.example"})[0] == 403
    stream = browser.open("GET", "/events/stream")
    assert stream.readline().startswith(b"retry:")
    ctl("set", "compression", "on")
    line = stream.readline()
    while not line.startswith(b"data: "):
        line = stream.readline()
    assert browser.ask("POST", "/apply", {"script": "# a long script\n" * 100000, "check": True})[0] == 200
    reply = browser.open("POST", "/apply", {"script": "#" * (4 << 20)})
    assert reply.status == 413, reply.status


def memory_of(process):
    with open(f"/proc/{process}/maps") as maps, open(f"/proc/{process}/mem", "rb", 0) as memory:
        for line in maps:
            ends, rights, *_ = line.split()
            if not rights.startswith("rw"):
                continue
            begin, end = (int(number, 16) for number in ends.split("-"))
            memory.seek(begin)
            yield memory.read(end - begin)


def holds(process, secret):
    return any(secret.encode() in part for part in memory_of(process))


def PasswordsStayNowhere():
    server = serve("--workers", "2")
    browser = Browser().log_in()
    guess, first, second, wrong = "Gu3ssed-Secret!", "F1rst-Secret!", "0ther~Words?7", "N0t-The-Old-One!"
    assert Browser().ask("POST", "/session", {"user": "alice", "password": guess})[0] == 401
    assert browser.ask("POST", "/users", {"name": "bertha", "password": first})[0] == 201
    change = {"oldPassword": wrong, "newPassword": second}
    assert browser.ask("PUT", "/users/bertha/password", change)[0] == 422
    change["oldPassword"] = first
    assert browser.ask("PUT", "/users/bertha/password", change)[0] == 200
    assert browser.ask("POST", "/users", {"name": "carola", "password": second, "padding": "x" * 40000})[0] == 400
    secrets = PASSWORD, guess, first, second, wrong
    for process in [server.pid, *workers(server)]:
        for secret in secrets:
            wait_for(f"{secret} is out of process {process}", lambda: not holds(process, secret))
    patterns = [word for secret in secrets for word in ("-e", secret)]
    places = "/etc", "/run", "/tmp", "/usr/local/apache2", "/var/lib/kestrove", "/var/log"
    found = subprocess.run(["grep", "-rlF", "--devices=skip", *patterns, *places], stdout=subprocess.PIPE, text=True)
    assert found.returncode == 1 and not found.stdout, found


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
appliance()
globals()[sys.argv[2]]()
