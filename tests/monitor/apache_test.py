#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The monitor and a real Apache, in the sandbox with its ports: apache_test.py SOURCE CASE."""
import http.client, pathlib, shutil, ssl, subprocess, sys, time

SOURCE = pathlib.Path(sys.argv[1])
HTDOCS = pathlib.Path("/usr/local/apache2/htdocs")
FIRST, SECOND = "192.168.10.9", "192.168.31.1"  # the example's own; another at the management port


def run(*words):
    subprocess.run(words, check=True, stdout=subprocess.DEVNULL)


def status(address):
    """Of the page at that address; None while nobody answers there or the server starts again."""
    connection = http.client.HTTPSConnection(address, timeout=10, context=ssl._create_unverified_context())
    try:
        connection.request("GET", "/index.html")
        return connection.getresponse().status
    except (OSError, http.client.HTTPException):
        return None
    finally:
        connection.close()


def wait_for(address, wanted, seconds=120):
    end = time.monotonic() + seconds
    while (found := status(address)) != wanted:
        assert time.monotonic() < end, (address, found, pathlib.Path("/run/kestrove/syslog").read_text()[-2000:])
        time.sleep(0.1)


def appliance():
    for file in pathlib.Path("/usr/share/kestrove/examples").iterdir():
        shutil.copy(file, "/etc/config")
    run("/bin/shm-init")
    run("/bin/kestrovectl", "set", "httpOperState", "on")
    HTDOCS.mkdir(parents=True, exist_ok=True)
    (HTDOCS / "index.html").write_text("the page")
    run("/usr/share/kestrove/apache/certificate")
    shutil.copy(SOURCE / "scripts/live/apache", "/tmp/apache")
    return subprocess.Popen(["/bin/kestrove-monitor", "--metrics", "", "--task", "httpd=/tmp/apache -DFOREGROUND",
                             "--task", "kestrove=", "--task", "snmpd=", "--task", "sshd="])


def TheSiteFollowsTheAddressesWhileItIsServed():
    """The monitor fills it before anybody else did, too."""
    appliance()
    wait_for(FIRST, 200)
    run("/bin/kestrovectl", "address", "add", SECOND + "/24", "--interface", "management")
    wait_for(SECOND, 200)
    run("/bin/kestrovectl", "address", "remove", SECOND)
    run("/sbin/ip", "address", "add", SECOND + "/32", "dev", "lo")
    wait_for(SECOND, 403)
    wait_for(FIRST, 200)


def WhatIsChangedWithoutAMonitorIsServedWhenOneComes():
    monitor = appliance()
    wait_for(FIRST, 200)
    monitor.kill()
    monitor.wait()
    run("/bin/kestrovectl", "address", "add", SECOND + "/24", "--interface", "management")
    wait_for(SECOND, 403)
    subprocess.Popen(monitor.args)
    wait_for(SECOND, 200)


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
globals()[sys.argv[2]]()
