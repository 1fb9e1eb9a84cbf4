#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The appliance's site in a real Apache, in the sandbox: site_test.py CASE."""
import http.client, os, pathlib, shutil, socket, ssl, subprocess, sys, threading, time

HTDOCS = pathlib.Path("/usr/local/apache2/htdocs")
SHARE = "/usr/share/kestrove/apache"
SERVER = ["/usr/sbin/apache2", "-f", SHARE + "/httpd.conf"]
PID = pathlib.Path("/usr/local/apache2/logs/httpd.pid")
ADDRESS = "127.0.0.1"


def run(*words):
    subprocess.run(words, check=True, stdout=subprocess.DEVNULL)


def wait_for(what, true, seconds=60):
    end = time.monotonic() + seconds
    while not true():
        assert time.monotonic() < end, f"never: {what}\n" + errors()
        time.sleep(0.02)


def errors():
    log = PID.parent / "error_log"
    return log.read_text() if log.exists() else ""


def answers(address):
    try:
        with socket.create_connection((address, 443), 5):
            return True
    except OSError:
        return False


def serve(*addresses):
    run("/usr/bin/apacheConfig.sh", *addresses)
    run(SHARE + "/certificate")
    run(*SERVER)
    wait_for("the server answers", lambda: answers(ADDRESS))


def raw(target, method="GET", headers=(), address=ADDRESS):
    """The status, the headers and the body of a request whose target goes out as it stands."""
    context = ssl._create_unverified_context()
    host = f"[{address}]" if ":" in address else address
    connection = http.client.HTTPSConnection(host, timeout=30, context=context)
    connection.putrequest(method, target, skip_accept_encoding=True)
    for name, value in headers:
        connection.putheader(name, value)
    connection.endheaders()
    reply = connection.getresponse()
    found = reply.status, reply.headers, reply.read()
    connection.close()
    return found


def status(target, **more):
    return raw(target, **more)[0]


def served(address):
    """Whether the address has the page; false also while the server starts again and cuts requests off."""
    try:
        return status("/index.html", address=address) == 200
    except (OSError, http.client.HTTPException):
        return False


def refused(*targets):
    for target in targets:
        code, _, body = raw(target)
        assert code in (400, 403, 404), (target, code)
        assert b"root:" not in body and b"PK" not in body and b"secret" not in body, target


def put(path, text="<p>secret</p>"):
    file = HTDOCS / path
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text)
    return file


def SavedStatesAreGivenToNobody():
    shutil.copy("/usr/share/kestrove/examples/factory.defaults", "/etc/config")
    shutil.copy("/usr/share/kestrove/examples/kestrove.conf", "/etc/config")
    run("/bin/shm-init")
    run("/bin/kestrovectl", "state", "save")
    archive, = HTDOCS.glob("config-*.zip")
    script, = HTDOCS.glob("state-*.txt")
    listed = subprocess.run(["unzip", "-l", archive], capture_output=True, text=True, check=True).stdout
    assert "passwd" in listed, listed
    put("state/passwd", "root:x:0:0")
    put("state/page.html")
    put("state/deeper/page.html")
    put("index.html", "the page")
    serve(ADDRESS)
    for name in (archive.name, script.name):
        first = f"%{ord(name[0]):02x}" + name[1:]
        refused("/" + name, "//" + name, "/./" + name, "/x/../" + name, "/" + first, "/" + name + "/more.html",
                "/" + name + "?a.html", "/" + name + ";.html", "/" + name + "%00.html", "/" + name.upper(),
                f"/state/../{name}", f"/%2e/{name}", f"/{name}%2f", f"/{name}.")
    refused("/state", "/state/", "/state/passwd", "//state//passwd", "/%73tate/passwd", "/state%2fpasswd",
            "/./state/passwd", "/a/../state/passwd", "/state/page.html", "/state/deeper/page.html", "/%73tate/page.html",
            "//state/page.html", "/state/./page.html")
    assert raw("/index.html")[2] == b"the page"


def ArchiveThatIsBeingPackedIsGivenToNobody():
    """zip writes under a name of its own beside the archive, and renames at the end."""
    put("zi6sG2kQ")
    put("config-2026-11-22.zip.part")
    put("state-1.txt~")
    put("config-1.zip.html")
    put("state-1.txt.html")
    put(".hidden.html")
    put("notes.txt")
    serve(ADDRESS)
    refused("/zi6sG2kQ", "/config-2026-11-22.zip.part", "/state-1.txt~", "/config-1.zip.html", "/state-1.txt.html",
            "/.hidden.html", "/notes.txt")


def LinksLeadNowhereElse():
    (HTDOCS / "etc").symlink_to("/etc")
    (HTDOCS / "users.html").symlink_to("/etc/passwd")
    serve(ADDRESS)
    refused("/etc/passwd", "/users.html", "/../../../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd")


def PageIsGivenOutWithItsHeaders():
    put("index.html", "the page")
    put("parts/chart.js", "1")
    serve(ADDRESS)
    code, headers, body = raw("/")
    assert (code, body) == (200, b"the page"), code
    assert headers["Content-Security-Policy"].startswith("default-src 'self'"), headers
    assert headers["X-Content-Type-Options"] == "nosniff" and headers["X-Frame-Options"] == "DENY"
    assert headers["Cache-Control"] == "no-cache" and headers["Server"] == "Apache"
    assert raw("/parts/chart.js")[1]["Content-Type"].split(";")[0] in ("text/javascript", "application/javascript")
    refused("/parts/", "/parts")
    assert status("/", method="TRACE") == 405


def OnlyManagementAddressesAreServed():
    put("index.html", "the page")
    serve("127.0.0.2", "::1")
    assert status("/index.html", address="127.0.0.1") == 403
    assert raw("/index.html", address="127.0.0.2")[2] == b"the page"
    assert raw("/index.html", address="::1")[2] == b"the page"
    assert status("/api/1/session", address="127.0.0.1") == 403
    run("/usr/bin/apacheConfig.sh", "127.0.0.3")
    run("/bin/kill", "-s", "SIGHUP", PID.read_text().strip())
    wait_for("the new address is served", lambda: served("127.0.0.3"))
    assert status("/index.html", address="127.0.0.2") == 403


def AddressThatIsOnNoPortYetStopsNothing():
    put("index.html", "the page")
    serve("192.0.2.77", "2001:db8::77", ADDRESS)
    assert raw("/index.html")[2] == b"the page"


def WithoutAddressesTheApplianceItselfRemains():
    put("index.html", "the page")
    serve()
    assert pathlib.Path("/var/etc/apache.addresses").read_text() == "\n"
    assert raw("/index.html")[2] == b"the page"
    assert status("/index.html", address="127.0.0.2") == 403


def proxied():
    """A program behind the socket that gives the request back."""
    path = "/run/kestrove/api.sock"
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(path)
    os.chmod(path, 0o666)
    listener.listen()

    def give_back():
        while True:
            connection, _ = listener.accept()
            request = b""
            while b"\r\n\r\n" not in request:
                request += connection.recv(65536)
            connection.sendall(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n" % len(request) + request)
            connection.close()

    threading.Thread(target=give_back, daemon=True).start()


def ProgramHearsTheNameAndTheClient():
    proxied()
    serve(ADDRESS)
    code, _, body = raw("/api/1/session", headers=[("X-Kestrove-Client", "203.0.113.9"), ("X-Forwarded-For", "203.0.113.9")])
    lines = body.decode().split("\r\n")
    assert code == 200 and lines[0] == "GET /api/1/session HTTP/1.1", lines
    assert f"Host: {ADDRESS}" in lines and "X-Kestrove-Client: 127.0.0.1" in lines, lines
    assert "203.0.113.9" not in body.decode(), lines
    code, headers, body = raw("/api/1/rules?x=%2e", method="DELETE")
    assert code == 200 and body.startswith(b"DELETE /api/1/rules?x=%2e HTTP/1.1"), body
    assert headers["X-Content-Type-Options"] == "nosniff"


def CertificateIsForRootAloneAndStays():
    run(SHARE + "/certificate")
    file = pathlib.Path("/etc/config/apache.pem")
    first = file.read_text()
    assert file.stat().st_mode & 0o777 == 0o600 and "PRIVATE KEY" in first and "CERTIFICATE" in first
    run(SHARE + "/certificate")
    assert file.read_text() == first and [p.name for p in file.parent.glob("apache.pem*")] == ["apache.pem"]


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
globals()[sys.argv[1]]()
