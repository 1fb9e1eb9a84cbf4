# SPDX-License-Identifier: Apache-2.0
"""What a failed operation raises."""
import ctypes
import errno as _errno
import os

from kestrove import raw
from kestrove.values import ERROR_NAMES, SHM_EATTACH, SHM_EIO, SHM_EOPEN, SHM_ESYSTEM

_OF_SYSTEM = (SHM_ESYSTEM, SHM_EOPEN, SHM_EIO)
_ATTACHING = {
    _errno.ENOENT: "there is no store, shm-init makes it",
    _errno.EACCES: "this user has no right to it",
    _errno.EINVAL: "the segment is another system's, its size is not that of the store",
}


def _explanation(code: int, number: int) -> str:
    if code == SHM_EATTACH:
        return _ATTACHING.get(number, os.strerror(number) if number else "")
    return os.strerror(number) if code in _OF_SYSTEM and number else ""


class KestroveError(Exception):
    """An operation failed.

    function: its name. code: what it left in shm_errno, 0 where it gives none. name: of the code, as the headers have
    it. text: what the library says of the code. errno: of the system where it had the last word, else 0.
    """

    def __init__(self, function: str, code: int = 0, errno: int = 0) -> None:
        super().__init__(function, code, errno)
        said = raw.shm_strerror(code) if code else b"failed without a code"
        self.function = function
        self.code = code
        self.name = ERROR_NAMES.get(code, "")
        self.text = said.decode() if said else f"Unknown error {code}"
        self.errno = errno if code in (SHM_EATTACH, *_OF_SYSTEM) else 0

    def __str__(self) -> str:
        explanation = _explanation(self.code, self.errno)
        return f"{self.function}: {self.text}" + (f": {explanation}" if explanation else "")


class NotSaved(KestroveError):
    """The change is made, in the store and with the engine, but the configuration file does not have it."""

    def __str__(self) -> str:
        return f"{super().__str__()}; the change is made and not saved"


def last_error(function: str) -> KestroveError:
    """The error of the function that has just failed."""
    return KestroveError(function, raw.shm_errno.value, ctypes.get_errno())
