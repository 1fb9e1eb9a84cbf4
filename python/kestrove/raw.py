# SPDX-License-Identifier: Apache-2.0
"""Every exported function and variable as C has it: results are numbers, the code of a failure stays in shm_errno."""
from typing import Any

from kestrove import _abi, _library


def __getattr__(name: str) -> Any:
    made = _library.variable(name) if name in _abi.VARIABLES else _library.function(name)
    globals()[name] = made
    return made


def __dir__() -> list[str]:
    return sorted([*_abi.PROTOTYPES, *_abi.VARIABLES])
