# SPDX-License-Identifier: Apache-2.0
"""A sanitized library loaded by Python sees what it is there to see: else the other tests under it would prove nothing."""
import os
import subprocess
import sys
import unittest

from support import StoreTest

TOO_SMALL = ("import ctypes, kestrove; kestrove.functions.setShmString(1, b'x' * 256); "
             "kestrove.functions.getShmString(1, ctypes.create_string_buffer(SIZE), 256)")


class Sanitized(StoreTest):
    def end(self, size):
        return subprocess.run([sys.executable, "-c", TOO_SMALL.replace("SIZE", str(size))], env=os.environ, check=False,
                              capture_output=True, encoding="utf-8")

    def test_a_write_behind_a_buffer_of_python_is_seen(self):
        done = self.end(64)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("AddressSanitizer: heap-buffer-overflow", done.stderr)

    def test_a_buffer_that_is_large_enough_is_not_complained_of(self):
        done = self.end(256)
        self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
