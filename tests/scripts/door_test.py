#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The doors of an appliance and what leads through them, in the sandbox: door_test.py SOURCE CASE"""
import pathlib
import socket
import subprocess
import sys
import threading

LIVE = pathlib.Path(sys.argv[1]) / "scripts/live"
sys.dont_write_bytecode = True
sys.path.insert(0, str(LIVE))
import door  # noqa: E402

HOME = "127.0.0.1"


def relay():
    """The relay behind two open doors; the ports of these."""
    ports = door.door(socket.SOCK_STREAM, 0, door.WEB), door.door(socket.SOCK_DGRAM, 0, door.SNMP)
    subprocess.Popen([sys.executable, "-B", LIVE / "relay.py", HOME], pass_fds=(door.WEB, door.SNMP))
    return ports


def twice_as_much(connection):
    """Says everything again once the other end has said it all."""
    with connection:
        heard = b""
        while more := connection.recv(65536):
            heard += more
        connection.sendall(heard + heard)


def web_server():
    server = socket.create_server((HOME, 443))

    def serve():
        while True:
            threading.Thread(target=twice_as_much, args=(server.accept()[0],), daemon=True).start()
    threading.Thread(target=serve, daemon=True).start()


def agent():
    server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    server.bind((HOME, 161))

    def serve():
        while True:
            text, asker = server.recvfrom(65536)
            server.sendto(b"heard " + text, asker)
    threading.Thread(target=serve, daemon=True).start()


def everything_from(connection):
    heard = b""
    while more := connection.recv(65536):
        heard += more
    return heard


def asker(port):
    made = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    made.settimeout(60)
    made.connect((HOME, port))
    return made


def TakenPortIsReplacedByAnother():
    for kind in (socket.SOCK_STREAM, socket.SOCK_DGRAM):
        first = door.door(kind, 0, 20)
        assert door.door(kind, first, 21) != first


def ConnectionsAreLedThereAndBack():
    web_server()
    port, _ = relay()
    visitors = [socket.create_connection((HOME, port), 60) for _ in range(20)]
    for number, visitor in enumerate(visitors):
        visitor.sendall(str(number).encode() * 10000)
        visitor.shutdown(socket.SHUT_WR)
    for number, visitor in enumerate(visitors):
        assert everything_from(visitor) == str(number).encode() * 20000, number


def WithoutAServerAConnectionIsClosed():
    port, _ = relay()
    with socket.create_connection((HOME, port), 60) as visitor:
        visitor.settimeout(60)
        assert everything_from(visitor) == b""


def EachAskerGetsItsOwnAnswers():
    agent()
    _, port = relay()
    askers = [asker(port) for _ in range(100)]
    for turn in range(2):
        for number, one in enumerate(askers):
            text = f"{turn} {number}".encode()
            one.send(text)
            assert one.recv(100) == b"heard " + text


def AgentThatCameLateIsAsked():
    _, port = relay()
    one = asker(port)
    one.send(b"too early")
    agent()
    one.settimeout(0.5)
    for _ in range(100):
        one.send(b"again")
        try:
            assert one.recv(100).startswith(b"heard ")
            return
        except TimeoutError:
            pass
    sys.exit("never heard")


assert pathlib.Path("/run/kestrove/inside").exists(), "only in the sandbox"
globals()[sys.argv[2]]()
