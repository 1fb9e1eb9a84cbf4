# SPDX-License-Identifier: Apache-2.0
# libedit is loaded when a shell starts: a build needs its header alone, which is the same in both widths. What the shell
# will lack is said here.
include(CheckCXXSourceCompiles)

find_path(KESTROVE_HISTEDIT histedit.h)
if(NOT KESTROVE_HISTEDIT)
  message(STATUS "histedit.h is missing (Debian: libedit-dev): kestrovectl shell will read plain lines")
  return()
endif()

set(CMAKE_REQUIRED_LIBRARIES -l:libedit.so.2)
if(NOT KESTROVE_LIBEDIT_RUNS)
  unset(KESTROVE_LIBEDIT_RUNS CACHE) # asked again: the package may have come since
endif()
check_cxx_source_compiles("extern \"C\" void el_end(void*); int main() { el_end(nullptr); }" KESTROVE_LIBEDIT_RUNS)
unset(CMAKE_REQUIRED_LIBRARIES)
if(NOT KESTROVE_LIBEDIT_RUNS)
  message(STATUS "libedit.so.2 is missing in this width (Debian: libedit2): kestrovectl shell will read plain lines")
endif()
