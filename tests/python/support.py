# SPDX-License-Identifier: Apache-2.0
"""What the tests of the Python package share. They run inside the sandbox alone."""
import os
import pathlib
import shutil
import subprocess
import sys
import unittest

if not os.path.exists("/run/kestrove/inside"):
    sys.exit("the tests of the Python package: only inside the sandbox")

EXAMPLES = "/usr/share/kestrove/examples"
PACKAGE = pathlib.Path(os.environ["PYTHONPATH"].split(":")[0]) / "kestrove"
NEEDS_STORE = "import kestrove; kestrove.functions.getUserCount()"


# What a sanitized library needs in this process is not for the start-up program and what that runs.
_PLAIN = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}


def _start_up():
    subprocess.run(["shm-init", "--replace"], check=True, capture_output=True, env=_PLAIN)


def new_store():
    """A store of the examples' configuration, with nobody's changes in it."""
    shutil.copytree(EXAMPLES, "/etc/config", dirs_exist_ok=True)
    _start_up()


def last_line(script, **environment):
    """What another Python says last on its standard error; empty when it ends well."""
    done = subprocess.run([sys.executable, "-c", script], env={**os.environ, **environment}, capture_output=True,
                          encoding="utf-8", check=False)
    return "" if done.returncode == 0 else done.stderr.strip().splitlines()[-1]


def restarted():
    """The store as the start-up program builds it from what was saved."""
    import kestrove  # pylint: disable=import-outside-toplevel
    kestrove.raw.shm_detach()
    kestrove.raw.delete_shared_memory()
    _start_up()


class StoreTest(unittest.TestCase):
    """A test on a new store."""

    def setUp(self):
        import kestrove  # pylint: disable=import-outside-toplevel
        if kestrove.raw.shm:
            kestrove.raw.shm_detach()
            kestrove.raw.delete_shared_memory()
        new_store()
