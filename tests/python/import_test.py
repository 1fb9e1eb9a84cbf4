# SPDX-License-Identifier: Apache-2.0
"""What the import refuses, and what a first call says where there is no store to use: one sentence each."""
import ctypes
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from support import EXAMPLES, NEEDS_STORE, PACKAGE, last_line, new_store

LIBRARY = os.environ["KESTROVE_LIBRARY"]
REFUSED = "ImportError: kestrove cannot be imported: "


class Import(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, content):
        path = self.folder / "other.so"
        path.write_bytes(content)
        return str(path)

    def refusal(self, path):
        said = last_line("import kestrove", KESTROVE_LIBRARY=path)
        self.assertTrue(said.startswith(REFUSED), said)
        return said[len(REFUSED):]

    def test_a_library_that_is_not_there(self):
        self.assertEqual(self.refusal("/nowhere/libkestrove.so.1"),
                         "/nowhere/libkestrove.so.1 cannot be loaded (/nowhere/libkestrove.so.1: cannot open shared object "
                         "file: No such file or directory)")

    def test_a_library_of_the_other_width(self):
        image = bytearray(pathlib.Path(LIBRARY).read_bytes())
        image[4] = 1
        path = self.file(image)
        self.assertEqual(self.refusal(path), f"{path} is a 32-bit library, and this Python needs the 64-bit one")

    if os.environ.get("KESTROVE_OTHER_LIBRARY"):
        def test_the_library_as_it_is_built_for_the_other_width(self):
            path = os.environ["KESTROVE_OTHER_LIBRARY"]
            self.assertEqual(self.refusal(path), f"{path} is a 32-bit library, and this Python needs the 64-bit one")

    def test_a_file_that_is_no_library(self):
        path = self.file(b"no library")
        self.assertIn(f"{path} cannot be loaded (", self.refusal(path))

    def test_another_library(self):
        path = "libcrypt.so.1"
        self.assertEqual(self.refusal(path), f"{path} is not libkestrove, or too old to tell its layout")

    def copy(self, name, value):
        """The package as it is made from another interface."""
        shutil.copytree(PACKAGE, self.folder / "kestrove")
        path = self.folder / "kestrove/_abi.py"
        text = path.read_text()
        import kestrove  # pylint: disable=import-outside-toplevel
        old = f"{name} = {getattr(kestrove._abi, name)!r}" if name == "VERSION" else f"{name} = 0x{kestrove._abi.LAYOUT_HASH:x}"
        old = old.replace("'", '"')
        self.assertIn(old, text)
        path.write_text(text.replace(old, f"{name} = {value}"))
        said = last_line("import kestrove", PYTHONPATH=str(self.folder))
        self.assertTrue(said.startswith(f"{REFUSED}{LIBRARY}: "), said)
        return said

    def test_a_library_of_another_layout(self):
        said = self.copy("LAYOUT_HASH", "0x123456789abcdef0")
        self.assertIn("123456789abcdef0", said)
        self.assertIn(f"{ctypes.c_uint64(__import__('kestrove').raw.kestrove_layout_hash()).value:016x}", said)

    def test_a_library_older_than_the_package(self):
        self.assertIn("1.999.0", self.copy("VERSION", '"1.999.0"'))


class NoStore(unittest.TestCase):
    def tearDown(self):
        subprocess.run(["ipcrm", "-M", "6001"], check=False, capture_output=True)

    def said(self, before=""):
        return last_line(before + NEEDS_STORE).removeprefix("kestrove.errors.KestroveError: getUserCount: ")

    def test_no_segment(self):
        self.assertEqual(self.said(), "Error attaching to shared memory: there is no store, shm-init makes it")

    def test_a_segment_of_another_system(self):
        self.assertNotEqual(ctypes.CDLL(None).shmget(6001, 4096, 0o1600), -1)
        self.assertEqual(self.said(), "Error attaching to shared memory: the segment is another system's, its size is not "
                         "that of the store")

    def test_no_right_to_the_lock(self):
        new_store()
        self.assertEqual(self.said("import os; os.setgid(65534); os.setuid(65534); "), "System error: Permission denied")

    def test_no_right_to_the_segment(self):
        new_store()
        os.chmod("/var/lock/shm", 0o666)
        identifier = ctypes.CDLL(None).shmget(6001, 0, 0)
        subprocess.run(["/usr/bin/python3", "-c", MODE, str(identifier)], check=True)
        self.assertEqual(self.said("import os; os.setgid(65534); os.setuid(65534); "),
                         "Error attaching to shared memory: this user has no right to it")


# IPC_STAT and IPC_SET with the mode 0600; the mode stands behind four numbers and two identifiers in ipc_perm.
MODE = """
import ctypes, sys
libc, record = ctypes.CDLL(None), (ctypes.c_uint8 * 256)()
assert libc.shmctl(int(sys.argv[1]), 2, record) == 0
ctypes.c_uint16.from_buffer(record, 20).value = 0o600
assert libc.shmctl(int(sys.argv[1]), 1, record) == 0
"""

if __name__ == "__main__":
    unittest.main()
