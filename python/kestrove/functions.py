# SPDX-License-Identifier: Apache-2.0
"""Every exported function under its name; one that fails raises KestroveError. The variables are those of kestrove.raw.

The code is cleared before each call, so that shm_errno.value tells of this call alone, also where it succeeded.
"""
import os
from typing import Any, Callable

from kestrove import _abi, raw
from kestrove.errors import last_error

# Results that are a failure only with a code. Of all others -1 is one.
_WITH_CODE: dict[str, Any] = {
    "checkIp6": -1,
    "checkStatsCounter": 0,
    "getKestroveProductName": None,
    "getLastLoginTimeStamp": -1,
    "getLastResetTimeStamp": 0xFFFFFFFF,
    "shm_getMessage": None,
    "v4AddressIsLocal": -1,
}
_FURTHER = {"load_shared_memory": -2}
_descriptions: dict[str, str] = {}


def _description(name: str) -> str:
    if not _descriptions:
        with open(os.path.join(os.path.dirname(__file__), "functions.txt"), encoding="utf-8") as file:
            parts = ("\n" + file.read()).split("\n== ")[1:]
        _descriptions.update(part.split("\n", 1) for part in parts)
    return _descriptions.get(name, "").strip()


def _checked(name: str, call: Callable[..., Any]) -> Callable[..., Any]:
    code, further = raw.shm_errno, _FURTHER.get(name, -1)

    def checked(*arguments: Any) -> Any:
        code.value = 0
        result = call(*arguments)
        if result == -1 or result == further:
            raise last_error(name)
        return result

    return checked


def _checked_by_code(name: str, call: Callable[..., Any]) -> Callable[..., Any]:
    code, failure = raw.shm_errno, _WITH_CODE[name]

    def checked(*arguments: Any) -> Any:
        code.value = 0
        result = call(*arguments)
        if result == failure and code.value != 0:
            raise last_error(name)
        return result

    return checked


def _checked_pointer(name: str, call: Callable[..., Any]) -> Callable[..., Any]:
    code = raw.shm_errno

    def checked(*arguments: Any) -> Any:
        code.value = 0
        result = call(*arguments)
        if not result and code.value != 0:
            raise last_error(name)
        return result

    return checked


def _made(name: str) -> Any:
    if name in _abi.VARIABLES:
        return getattr(raw, name)
    make = (_checked_by_code if name in _WITH_CODE else
            _checked_pointer if name == "shm_getMonitoredTaskPointer" else _checked)
    checked = make(name, getattr(raw, name))
    checked.__name__ = checked.__qualname__ = name
    checked.__doc__ = _description(name)
    return checked


def __getattr__(name: str) -> Any:
    if name not in _abi.PROTOTYPES and name not in _abi.VARIABLES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    made = globals()[name] = _made(name)
    return made


def __dir__() -> list[str]:
    return sorted([*_abi.PROTOTYPES, *_abi.VARIABLES])
