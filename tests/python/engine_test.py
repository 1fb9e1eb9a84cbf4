# SPDX-License-Identifier: Apache-2.0
"""Python beside the engine, in its own width and, where KESTROVE_OTHER_SIM names one, in the other."""
import os
import subprocess
import unittest

import kestrove
from kestrove import Settings, functions, values
from support import StoreTest


class Engine:
    """The engine's stand-in, and what it says."""

    def __init__(self, program, *arguments):
        self.process = subprocess.Popen([program, *arguments], stdout=subprocess.PIPE, encoding="utf-8")

    def __enter__(self):
        self.first = self.line()
        return self

    def __exit__(self, *error):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()

    def line(self):
        return self.process.stdout.readline().rstrip("\n")


class OwnWidth(StoreTest):
    program, bits = os.environ["KESTROVE_SIM"], 64

    def engine(self, *arguments):
        return Engine(self.program, *arguments)

    def test_it_is_told_of_what_python_changes(self):
        with self.engine() as engine:
            self.assertIn(f"({self.bits} bits)", engine.first)
            Settings().lan_link_rate = 10000000
            self.assertEqual((engine.line(), engine.line()),
                             ("told of: LAN rate", "  LAN rate: 100000000 -> 10000000"))
            kestrove.delete_rule(0)
            self.assertEqual((engine.line(), engine.line()), ("told of: rules", "  rules: 3 -> 2, from rule 1 on"))

    def test_what_it_counts_python_reads(self):
        with self.engine("--interval", "1", "--intervals", "1") as engine:
            self.assertEqual(engine.process.wait(60), 0)
        self.assertEqual(functions.checkStatsCounter(), 1)
        with kestrove.lock() as store:
            self.assertEqual(store.statistics.accumulatedIntervals, 1)

    def test_its_process_is_in_its_slot(self):
        with self.engine() as engine:
            self.assertEqual(functions.shm_getTaskPid(values.SHM_TASK_ENGINE), engine.process.pid)
            self.assertEqual(functions.shm_getMonitoredTaskPointer()[values.SHM_TASK_ENGINE], engine.process.pid)


if os.environ.get("KESTROVE_OTHER_SIM"):
    class OtherWidth(OwnWidth):
        program, bits = os.environ["KESTROVE_OTHER_SIM"], 32


if __name__ == "__main__":
    unittest.main()
