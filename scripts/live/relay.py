#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Leads what comes through the doors to the appliance: relay.py ADDRESS, on a host of the sandbox.

Descriptors 8 and 9 are the doors (see door.py). A connection at the first goes on to port 443, a datagram at the second
to port 161 of the address, and their answers back.
"""
import selectors
import signal
import socket
import sys
import threading

CHUNK = 65536
MOST_ASKERS = 64  # of datagrams: the one who asked the longest ago is forgotten for a new one


def pour(source, target):
    """Until the source ends; then the target hears so."""
    try:
        while chunk := source.recv(CHUNK):
            target.sendall(chunk)
        target.shutdown(socket.SHUT_WR)
    except OSError:
        for end in (source, target):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # it has ended already


def lead(visitor, address):
    """A connection whose appliance is not there is closed, as by an appliance that starts anew."""
    with visitor:
        try:
            inner = socket.create_connection((address, 443), 30)
        except OSError:
            return
        with inner:
            inner.settimeout(None)
            back = threading.Thread(target=pour, args=(inner, visitor), daemon=True)
            back.start()
            pour(visitor, inner)
            back.join()


def connections(door, address):
    while True:
        visitor, _ = door.accept()
        threading.Thread(target=lead, args=(visitor, address), daemon=True).start()


class Datagrams:
    """Each asker has a socket of its own, so that an answer finds back to the one who asked."""

    def __init__(self, door, address):
        self.door, self.address, self.sockets = door, address, {}
        self.ready = selectors.DefaultSelector()
        self.ready.register(door, selectors.EVENT_READ)

    def socket_of(self, asker):
        known = self.sockets.pop(asker, None)
        if not known:
            if len(self.sockets) >= MOST_ASKERS:
                self.forget(next(iter(self.sockets)))
            known = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            known.connect((self.address, 161))
            self.ready.register(known, selectors.EVENT_READ, asker)
        self.sockets[asker] = known
        return known

    def forget(self, asker):
        old = self.sockets.pop(asker)
        self.ready.unregister(old)
        old.close()

    def pass_on(self, source, asker):
        if asker:
            self.door.sendto(source.recv(CHUNK), asker)
        else:
            datagram, sender = source.recvfrom(CHUNK)
            self.socket_of(sender).send(datagram)

    def run(self):
        while True:
            for key, _ in self.ready.select():
                try:
                    self.pass_on(key.fileobj, key.data)
                except OSError:
                    pass  # nobody hears there now; who asked asks again


if __name__ == "__main__":
    signal.signal(signal.SIGINT, signal.SIG_DFL)  # ends without a word
    threading.Thread(target=connections, args=(socket.socket(fileno=8), sys.argv[1]), daemon=True).start()
    Datagrams(socket.socket(fileno=9), sys.argv[1]).run()
