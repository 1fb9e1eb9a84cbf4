# SPDX-License-Identifier: Apache-2.0
# Programs of the other width (32-bit beside a 64-bit build and the reverse), for tests in which both share one store.
# Sets KESTROVE_OTHER_WIDTH to its folder, or leaves it empty, and says so, where its packages are missing.
include(CheckCXXSourceCompiles)
include(ExternalProject)

if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(kestrove_other_flag -m32)
else()
  set(kestrove_other_flag -m64)
endif()

set(CMAKE_REQUIRED_FLAGS ${kestrove_other_flag})
set(CMAKE_REQUIRED_LIBRARIES crypt)
string(REPLACE "-" "_" kestrove_other_check "KESTROVE_BUILDS${kestrove_other_flag}")
if(NOT ${kestrove_other_check})
  unset(${kestrove_other_check} CACHE) # asked again: the packages may have come since
endif()
check_cxx_source_compiles("#include <crypt.h>\n#include <string>\nint main() { return !crypt(\"a\", \"b\"); }"
                          ${kestrove_other_check})
unset(CMAKE_REQUIRED_FLAGS)
unset(CMAKE_REQUIRED_LIBRARIES)

set(KESTROVE_OTHER_WIDTH "")
if(NOT ${kestrove_other_check})
  message(STATUS "No packages for ${kestrove_other_flag}: the tests that cross widths are left out")
elseif(KESTROVE_SANITIZE)
  message(STATUS "The tests that cross widths are left out of sanitized builds")
elseif(TARGET kestrove-other-width)
  set(KESTROVE_OTHER_WIDTH ${CMAKE_BINARY_DIR}/other-width)
elseif(NOT KESTROVE_WIDTH_OF_A_TEST)
  set(KESTROVE_OTHER_WIDTH ${CMAKE_BINARY_DIR}/other-width)
  ExternalProject_Add(kestrove-other-width
    SOURCE_DIR ${PROJECT_SOURCE_DIR}
    BINARY_DIR ${KESTROVE_OTHER_WIDTH}
    CMAKE_ARGS -DCMAKE_BUILD_TYPE=Debug -DKESTROVE_TESTS=OFF -DKESTROVE_WIDTH_OF_A_TEST=ON --no-warn-unused-cli
               -DCMAKE_C_FLAGS=${kestrove_other_flag} -DCMAKE_CXX_FLAGS=${kestrove_other_flag}
               -DCMAKE_C_COMPILER=${CMAKE_C_COMPILER} -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}
               -DCMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER}
               -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}
    BUILD_COMMAND ${CMAKE_COMMAND} --build . --parallel 2 --target kestrove-sim
    BUILD_BYPRODUCTS ${KESTROVE_OTHER_WIDTH}/libkestrove.so
    INSTALL_COMMAND ""
    LOG_CONFIGURE ON
    LOG_BUILD ON
    LOG_OUTPUT_ON_FAILURE ON
    BUILD_ALWAYS ON
    EXCLUDE_FROM_ALL ON)
endif()
