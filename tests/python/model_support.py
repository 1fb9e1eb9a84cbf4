# SPDX-License-Identifier: Apache-2.0
"""Random walks over the operations beside a model: as many as KESTROVE_EXAMPLES says, always the same ones without it."""
import os
import pathlib

from hypothesis import HealthCheck, settings
from hypothesis.stateful import RuleBasedStateMachine

import kestrove
from kestrove import values
from support import new_store

EXAMPLES = os.environ.get("KESTROVE_EXAMPLES")
WALKS = settings(max_examples=int(EXAMPLES or 8), derandomize=EXAMPLES is None, database=None, deadline=None,
                 stateful_step_count=25, print_blob=True, suppress_health_check=list(HealthCheck))
PASSWORDS = pathlib.Path("/etc/passwd")
_passwords = PASSWORDS.read_text(encoding="utf-8")


def fresh_store():
    """A new store in Debug Mode, which leaves the kernel and the engine alone and saves all the same."""
    if kestrove.raw.shm:
        kestrove.raw.shm_detach()
        kestrove.raw.delete_shared_memory()
    PASSWORDS.write_text(_passwords, encoding="utf-8")
    new_store()
    kestrove.functions.setShmOperationalState(values.SHM_STATE_DEBUG)


class Walk(RuleBasedStateMachine):
    def __init__(self):
        super().__init__()
        fresh_store()

    @staticmethod
    def expect(code, operation, *arguments):
        """The operation ends with that code: with an exception that names it, or well when it is none."""
        try:
            operation(*arguments)
        except kestrove.KestroveError as error:
            assert error.name == code, f"{error} ({error.name}) instead of {code}"
        else:
            assert code is None, f"{operation.__name__}{arguments} was taken instead of refused with {code}"


def case(machine):
    machine.TestCase.settings = WALKS
    return machine.TestCase
