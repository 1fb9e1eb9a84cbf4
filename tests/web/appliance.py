# SPDX-License-Identifier: Apache-2.0
"""A sandbox appliance with its page: Apache in front of kestrove-api, two users, some rules and routes."""
import http.client, json, os, pathlib, shutil, ssl, subprocess, sys, time

SHARE = "/usr/share/kestrove/apache"
PASSWORD = "Passw0rd!"
PAGE = "https://127.0.0.1/"
BASE = pathlib.Path("/tmp/base.script")


def ctl(*words, given=None, check=True):
    done = subprocess.run(["/bin/kestrovectl", *words], input=given, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert not check or done.returncode in (0, 4), (words, done)
    return done.stdout


def wait_for(what, true, seconds=300):
    end = time.monotonic() + seconds
    while not true():
        assert time.monotonic() < end, "never: " + what
        time.sleep(0.05)


def answers():
    try:
        connection = http.client.HTTPSConnection("127.0.0.1", timeout=10, context=ssl._create_unverified_context())
        connection.request("GET", "/api/1")
        return connection.getresponse().status == 200
    except (OSError, http.client.HTTPException):
        return False


def start(program):
    for name in ("factory.defaults", "kestrove.conf"):
        shutil.copy("/usr/share/kestrove/examples/" + name, "/etc/config")
    subprocess.run(["/bin/shm-init"], check=True, stdout=subprocess.DEVNULL)
    ctl("set", "httpOperState", "on")
    ctl("set", "snmpVersion", "1")
    ctl("user", "add", "alice", "--admin", given=PASSWORD + "\n")
    ctl("user", "add", "bertha", given=PASSWORD + "\n")
    ctl("save")
    BASE.write_text("".join(line for line in ctl("settings").splitlines(True) if not line.startswith("user ")))
    subprocess.run([SHARE + "/page"], check=True)
    subprocess.run(["/usr/bin/apacheConfig.sh", "127.0.0.1"], check=True)
    subprocess.run([SHARE + "/certificate"], check=True)
    server = subprocess.Popen([program], stdout=sys.stderr)
    subprocess.run(["/usr/sbin/apache2", "-f", SHARE + "/httpd.conf"], check=True)
    wait_for("the page's server answers", answers)
    return server


def again():
    """The settings as they were at first; nothing waits."""
    subprocess.run(["/bin/kestrovectl", "confirm"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for user in json.loads(ctl("user", "list", "--json")):
        if user["name"] not in ("alice", "bertha"):
            ctl("user", "remove", user["name"])
    ctl("apply", "--replace", str(BASE))
    ctl("save")


def rules(count):
    """So many rules in front of the default rule."""
    lines = [f"rule add last --from 10.{i // 256 % 256}.{i % 256}.0/24 --proto tcp --dport {1000 + i % 60000} --kbps 512"
             for i in range(count)]
    kept = [line for line in BASE.read_text().splitlines() if not line.startswith("rule ")]
    ctl("apply", "--replace", "-", given="\n".join(kept + lines) + "\n")


def shown(*words):
    return json.loads(ctl(*words, "--json"))
