#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Opens the appliance's doors on this machine and becomes the sandbox with the appliance: door.py BUILD

Doors are sockets of this machine's own network, bound to its loopback. They are handed into the sandbox, where
relay.py alone has them: so nothing of this machine's network is set up or changed for the appliance to be reached.
"""
import os
import pathlib
import socket
import sys

LIVE = pathlib.Path(__file__).resolve().parent
WEB, SNMP = 8, 9  # the descriptors by which the sandbox's first program finds them


def door(kind, wanted, number):
    """A socket at the wanted port of the loopback, or at any where somebody has that, as descriptor NUMBER."""
    opened = socket.socket(socket.AF_INET, kind)
    if kind == socket.SOCK_STREAM:
        opened.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    try:
        opened.bind(("127.0.0.1", wanted))
    except OSError:
        opened.bind(("127.0.0.1", 0))
    if kind == socket.SOCK_STREAM:
        opened.listen(64)
    os.dup2(opened.fileno(), number, inheritable=True)
    return opened.getsockname()[1]


def doors(web, snmp):
    """The two, whose ports the appliance's greeting finds in its environment."""
    os.environ["KESTROVE_WEB_PORT"] = str(door(socket.SOCK_STREAM, web, WEB))
    os.environ["KESTROVE_SNMP_PORT"] = str(door(socket.SOCK_DGRAM, snmp, SNMP))


def sandbox(build, *foreground):
    return [f"{build}/sandbox/kestrove-sandbox", "--real", "--ports", "--", str(LIVE / "boot"), f"{build}/tools", *foreground]


if __name__ == "__main__":
    doors(int(os.environ.get("PORT") or 8443), int(os.environ.get("SNMP_PORT") or 1161))
    os.environ["KESTROVE_LAUNCHER"] = str(os.getpid())
    words = sandbox(sys.argv[1])
    os.execv(words[0], words)
