# SPDX-License-Identifier: Apache-2.0
# Fails when what TOOL makes of HEADER is not the text of FILE.
execute_process(COMMAND ${TOOL} ${HEADER} OUTPUT_VARIABLE actual COMMAND_ERROR_IS_FATAL ANY)
file(READ ${FILE} expected)
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "${FILE} is not what ${TOOL} prints: write it anew with '${TOOL} ${HEADER} > ${FILE}'")
endif()
