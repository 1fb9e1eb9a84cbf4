# SPDX-License-Identifier: Apache-2.0
"""Finds the library, refuses another width and another layout, and gives its functions their prototypes."""
import ctypes
import os
import sys
from typing import Any

from kestrove import _abi
from kestrove.values import KESTROVE_CHECK_BYTES

NAME = "libkestrove.so.1"
BITS = 8 * ctypes.sizeof(ctypes.c_void_p)
_WIDTHS = {1: 32, 2: 64}  # the fifth byte of a library


def _places() -> list[str]:
    """Where an installation has the library, seen from PREFIX/lib/python3/dist-packages/kestrove."""
    folder = os.path.dirname(os.path.abspath(__file__))
    for _ in range(3):
        folder = os.path.dirname(folder)
    architecture = getattr(sys.implementation, "_multiarch", "")
    return [os.path.join(folder, architecture, NAME), os.path.join(folder, NAME)] if folder.endswith("/lib") else []


def _path() -> str:
    named = os.environ.get("KESTROVE_LIBRARY")
    if named:
        return named
    return next((place for place in _places() if os.path.exists(place)), NAME)


def _refusal(path: str, reason: str) -> ImportError:
    return ImportError(f"kestrove cannot be imported: {reason}", name="kestrove", path=path)


def _width(path: str) -> "int | None":
    try:
        with open(path, "rb") as file:
            head = file.read(5)
    except OSError:
        return None
    return _WIDTHS.get(head[4]) if head[:4] == b"\x7fELF" and len(head) == 5 else None


def _opened(path: str) -> ctypes.PyDLL:
    width = _width(path)
    if width not in (None, BITS):
        raise _refusal(path, f"{path} is a {width}-bit library, and this Python needs the {BITS}-bit one")
    try:
        # A call keeps the interpreter: the library is for one thread at a time.
        return ctypes.PyDLL(path, use_errno=True)
    except OSError as error:
        raise _refusal(path, f"{path} cannot be loaded ({error})") from None


def _checked(library: ctypes.PyDLL, path: str) -> ctypes.PyDLL:
    message = ctypes.create_string_buffer(KESTROVE_CHECK_BYTES)
    try:
        check = library.kestrove_check_layout
    except AttributeError:
        raise _refusal(path, f"{path} is not libkestrove, or too old to tell its layout") from None
    check.argtypes = ctypes.c_char_p, ctypes.c_uint64, ctypes.c_char_p, ctypes.c_int
    if check(_abi.VERSION.encode(), _abi.LAYOUT_HASH, message, KESTROVE_CHECK_BYTES) != 0:
        raise _refusal(path, f"{path}: {message.value.decode()}")
    return library


PATH = _path()
LIBRARY = _checked(_opened(PATH), PATH)


def variable(name: str) -> Any:
    return _abi.VARIABLES[name].in_dll(LIBRARY, name)


def function(name: str) -> Any:
    """An exported function with its prototype; AttributeError where the library is older than this package."""
    made = LIBRARY[name] if name in _abi.PROTOTYPES and hasattr(LIBRARY, name) else None
    if made is None:
        raise AttributeError(f"{NAME} has no function {name}")
    made.restype, made.argtypes = _abi.PROTOTYPES[name]
    return made
