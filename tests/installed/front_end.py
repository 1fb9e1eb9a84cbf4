"""A front end in Python: front_end.py LIBRARY. Reads a setting, is refused a wrong one, and makes a right one."""
import ctypes
import sys

library = ctypes.CDLL(sys.argv[1])
code = ctypes.c_uint32.in_dll(library, "shm_errno")
library.shm_strerror.restype = ctypes.c_char_p
rate = ctypes.c_uint32()

assert library.setKestroveConfigItem(2, 5, 4, b"admin") == -1, "a WAN rate of 5 was accepted"
assert code.value == 12, library.shm_strerror(code.value)
assert library.setKestroveConfigItem(2, 3072000, 4, b"admin") == 0, library.shm_strerror(code.value)
assert library.getKestroveConfigItem(2, ctypes.byref(rate)) == 0
assert rate.value == 3072000, rate.value
print("WAN rate", rate.value)
