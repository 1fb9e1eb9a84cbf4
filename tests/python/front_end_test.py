# SPDX-License-Identifier: Apache-2.0
"""The front end that doc/python.md shows: short, typed, and doing what it says."""
import os
import pathlib
import re
import subprocess
import sys
import unittest

from support import new_store

SOURCE = pathlib.Path(os.environ["KESTROVE_SOURCE"])
PROGRAM = re.search(r"```python\n(.*?)```", (SOURCE / "doc/python.md").read_text(encoding="utf-8"), re.DOTALL).group(1)
SHOWN = r"""refused: setKestroveConfigItem: The given value does not fall in the allowed range SHM_ERANGE
rate 4096000 compression off
route 172\.21\.0\.0/16 by 192\.168\.10\.3
route 172\.20\.0\.0/16 by 192\.168\.10\.3
rule 1 from 10\.1\.0\.0/16 to 0\.0\.0\.0/0 ports 80 80
rule 2 from 0\.0\.0\.0/0 to 0\.0\.0\.0/0 ports 53 53
rule 3 from 0\.0\.0\.0/0 to 0\.0\.0\.0/0 ports 0 0
.*
.*
\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\+00:00 admin System Compression Off
"""


class FrontEnd(unittest.TestCase):
    def test_it_has_at_most_thirty_lines(self):
        self.assertLessEqual(len(PROGRAM.splitlines()), 30)

    def test_it_does_what_it_says(self):
        new_store()
        done = subprocess.run([sys.executable, "-c", PROGRAM], check=True, capture_output=True, encoding="utf-8")
        self.assertRegex(done.stdout, rf"\A{SHOWN}\Z")
        self.assertIn("4096000", pathlib.Path("/etc/config/kestrove.conf").read_text(encoding="utf-8"))

    def test_strict_types_have_nothing_to_say_of_it(self):
        done = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir", "/tmp/mypy", "-c", PROGRAM], check=False,
                              capture_output=True, encoding="utf-8", env={**os.environ, "MYPYPATH": str(SOURCE / "python")})
        self.assertEqual((done.returncode, done.stdout), (0, "Success: no issues found in 1 source file\n"))

    def test_strict_types_have_nothing_to_say_of_the_package(self):
        done = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir", "/tmp/mypy", "kestrove"], check=False,
                              capture_output=True, encoding="utf-8", cwd=SOURCE / "python")
        self.assertRegex(done.stdout, r"\ASuccess: no issues found in \d+ source files\n\Z")

    def test_wrong_types_are_seen(self):
        wrong = "import kestrove\nkestrove.Settings().compression = 'on'\nkestrove.functions.getUserCount(5)\n"
        done = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir", "/tmp/mypy", "-c", wrong], check=False,
                              capture_output=True, encoding="utf-8", env={**os.environ, "MYPYPATH": str(SOURCE / "python")})
        self.assertIn("Found 2 errors", done.stdout)


if __name__ == "__main__":
    unittest.main()
