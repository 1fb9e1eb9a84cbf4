#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A front end in Python: front_end.py show, front_end.py compression on|off, front_end.py rate BITS_PER_SECOND."""
import ctypes, os, pathlib, re, sys

PREFIX = pathlib.Path(os.environ.get("KESTROVE_PREFIX", "/usr/local"))
library = ctypes.CDLL(next(PREFIX.glob("lib/**/libkestrove.so.1")))
library.shm_strerror.restype = library.ipv4_to_a.restype = ctypes.c_char_p
code = ctypes.c_uint32.in_dll(library, "shm_errno")
# The names of the values, from the headers: SHM_ITEM_WAN_LINK_RATE and all the others.
HEADERS = "".join((PREFIX / "include/kestrove" / name).read_text() for name in ("codes.h", "errors.h", "layout.h"))
SHM = {name: int(value) for name, value in re.findall(r"(SHM_\w+) = (\d+)\b(?! <<)", HEADERS)}


class RouteEntry(ctypes.Structure):  # doc/layout.md has the members of every record
    _fields_ = [(name, ctypes.c_uint32) for name in ("destination", "netmask", "gateway", "status", "inUse", "next")]


def check(result, what):
    if result < 0:
        sys.exit(f"{what}: {library.shm_strerror(code.value).decode()}")
    return result


def set_item(name, value):
    code.value = SHM["SHM_OK"]  # no success clears it
    check(library.setKestroveConfigItem(SHM[name], value, SHM["SHM_SOURCE_SSH"], b"admin"), "refused")
    check(-(code.value == SHM["SHM_EIO"]), "applied, not saved")


def get_item(name):
    value = ctypes.c_uint32()
    check(library.getKestroveConfigItem(SHM[name], ctypes.byref(value)), name)
    return value.value


def show():
    print("rate", get_item("SHM_ITEM_WAN_LINK_RATE"))
    print("compression", "on" if get_item("SHM_ITEM_COMPRESSION") == SHM["SHM_ON"] else "off")
    line = ctypes.create_string_buffer(256)
    if library.getEventString(check(library.getEventCount(), "events") - 1, line, len(line), 0) > 0:
        print(line.value.decode())
    route = RouteEntry()
    got = library.getFirstRouteTableEntry(ctypes.byref(route))
    while got == 0:
        to, by = (library.ipv4_to_a(address).decode() for address in (route.destination, route.gateway))
        print(f"route {to}/{library.netMaskCIDRNumber(route.netmask)} by {by}")
        got = library.getNextRouteTableEntry(route.destination, route.netmask, ctypes.byref(route))
    check(-(code.value != SHM["SHM_ENOENT"]), "routes")


check(library.kestrove_hold(), "store")  # over all of it nobody else changes the store; the process's end releases it
match sys.argv[1:]:
    case ["show"]: show()
    case ["rate", rate] if rate.isdigit(): set_item("SHM_ITEM_WAN_LINK_RATE", int(rate))
    case ["compression", word]: set_item("SHM_ITEM_COMPRESSION", SHM.get(f"SHM_{word.upper()}", 0))
    case _: sys.exit(2)
