# SPDX-License-Identifier: Apache-2.0
"""Files of Python for the functions that take a stream of C."""
import ctypes
import os
from collections.abc import Iterator
from contextlib import contextmanager
from typing import IO, Any

_LIBC = ctypes.CDLL(None, use_errno=True)
_LIBC.fdopen.restype = ctypes.c_void_p
_LIBC.fclose.argtypes = [ctypes.c_void_p]


@contextmanager
def stream(file: "IO[Any]") -> Iterator[int]:
    """with kestrove.stream(file) as stream: kestrove.functions.dumpSharedMemory(stream)"""
    file.flush()
    descriptor = os.dup(file.fileno())
    opened = _LIBC.fdopen(descriptor, b"r+" if file.readable() and file.writable() else b"w" if file.writable() else b"r")
    if not opened:
        os.close(descriptor)
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
    try:
        yield opened
    finally:
        if _LIBC.fclose(opened) != 0:
            raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
