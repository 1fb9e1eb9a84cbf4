# SPDX-License-Identifier: Apache-2.0
# Fails when the output of TOOL ARGUMENT does not stand in FILE between the marks that are its first and last lines. With WRITE
# it is put there.
execute_process(COMMAND ${TOOL} ${ARGUMENT} OUTPUT_VARIABLE actual COMMAND_ERROR_IS_FATAL ANY)
file(READ ${FILE} text)
string(FIND "${text}" "${actual}" at)
if(NOT at EQUAL -1)
  return()
elseif(NOT WRITE)
  message(FATAL_ERROR "${FILE} has not what ${TOOL} prints: write it anew with "
                      "'cmake -DTOOL=${TOOL} -DARGUMENT=${ARGUMENT} -DFILE=${FILE} -DWRITE=ON -P ${CMAKE_CURRENT_LIST_FILE}'")
endif()
string(REGEX MATCH "^[^\n]*\n" begin "${actual}")
string(REGEX MATCH "[^\n]*\n$" end "${actual}")
string(FIND "${text}" "${begin}" from)
string(FIND "${text}" "${end}" to)
if(from EQUAL -1 OR to LESS from)
  message(FATAL_ERROR "${FILE} lacks the marks of its part")
endif()
string(LENGTH "${end}" length)
math(EXPR to "${to} + ${length}")
string(SUBSTRING "${text}" 0 ${from} before)
string(SUBSTRING "${text}" ${to} -1 behind)
file(WRITE ${FILE} "${before}${actual}${behind}")
