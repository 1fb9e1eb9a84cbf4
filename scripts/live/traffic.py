#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Traffic through the appliance: traffic.py serve on the host at the WAN, traffic.py fetch ADDRESS on that at the LAN.

A branch office fetches files of all sizes, more at one time than at another, and sends some back. Each connection
begins with two numbers: how many bytes are wanted, and how many come.
"""
import math
import random
import signal
import socket
import struct
import sys
import threading
import time

PORTS = (80, 443, 5001)
REQUEST = struct.Struct("!II")
TEXT = b"The quick brown fox jumps over the lazy dog. " * 1456
WAVE = 120  # seconds from the busiest moment to the next


def take(connection, size):
    while size > 0 and (chunk := connection.recv(min(size, 65536))):
        size -= len(chunk)
    return size == 0


def give(connection, size):
    for begin in range(0, size, len(TEXT)):
        connection.sendall(TEXT[:size - begin])


def answer(connection):
    with connection:
        try:
            wanted, coming = REQUEST.unpack(connection.recv(REQUEST.size, socket.MSG_WAITALL))
            if take(connection, coming):
                give(connection, wanted)
        except (OSError, struct.error):
            pass  # the other end has gone


def listen(port):
    with socket.create_server(("", port), backlog=64) as server:
        while True:
            threading.Thread(target=answer, args=(server.accept()[0],), daemon=True).start()


def fetch(address):
    wanted, coming = int(random.paretovariate(1.2) * 4000) % 400000, int(random.paretovariate(1.5) * 1000) % 100000
    with socket.create_connection((address, random.choice(PORTS)), 5) as connection:
        connection.sendall(REQUEST.pack(wanted, coming))
        give(connection, coming)
        take(connection, wanted)


def pause():
    busy = (1 + math.sin(time.monotonic() * 2 * math.pi / WAVE)) / 2
    return random.expovariate(2 + 18 * busy)


def fetch_for_ever(address):
    while True:
        try:
            fetch(address)
            time.sleep(pause())
        except OSError:
            time.sleep(1)  # while a mode changes nothing passes


if __name__ == "__main__":
    signal.signal(signal.SIGINT, signal.SIG_DFL)  # ends without a word
    if sys.argv[1] == "serve":
        for port in PORTS[1:]:
            threading.Thread(target=listen, args=(port,), daemon=True).start()
        listen(PORTS[0])
    else:
        fetch_for_ever(sys.argv[2])
