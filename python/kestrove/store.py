# SPDX-License-Identifier: Apache-2.0
"""The lock, and changes that say when they are not saved."""
import ctypes
from types import TracebackType
from typing import Any, Callable, Optional

from kestrove import functions, raw
from kestrove._abi import ShmData
from kestrove.errors import NotSaved, last_error
from kestrove.values import SHM_EIO, SHM_ESYSTEM


class Lock:
    """Holds the store: nobody else gets in before the end of the block, whatever operations are called in it.

    Locks nest. The block is given the store itself, which is to be read and written in it alone.
    """

    def __enter__(self) -> ShmData:
        functions.kestrove_hold()
        return raw.shm.contents

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        if raw.kestrove_release() == -1 and error is None:
            raise last_error("kestrove_release")


def lock() -> Lock:
    """with kestrove.lock() as store: ..."""
    return Lock()


def in_file(function: str) -> None:
    """NotSaved when the change that was just made did not reach the configuration file.

    The code alone may be that of another step, such as a route that the kernel refused: a second save tells.
    """
    if raw.shm_errno.value not in (SHM_ESYSTEM, SHM_EIO):
        return
    code = raw.shm_errno.value
    raw.shm_errno.value = 0
    ctypes.set_errno(0)
    if raw.save_shared_memory() != 0 or raw.shm_errno.value != 0:
        raise NotSaved(function, code, ctypes.get_errno())


def change(operation: Callable[..., Any], *arguments: Any) -> Any:
    """Calls an operation that saves what it changes."""
    result = operation(*arguments)
    in_file(operation.__name__)
    return result


def text_of(field: bytes) -> str:
    """Text of the store: UTF-8, and what is none comes back as the same bytes."""
    return field.decode("utf-8", "surrogateescape")


def bytes_of(text: str) -> bytes:
    written = text.encode("utf-8", "surrogateescape")
    if b"\0" in written:
        raise ValueError("a text for the store has no null character")
    return written
