# SPDX-License-Identifier: Apache-2.0
# Section 3 of the manual, made from the headers' comments, where python3 is there.
find_program(KESTROVE_PYTHON python3)
if(NOT KESTROVE_PYTHON)
  message(STATUS "python3 is missing: section 3 of the manual is left out")
  return()
endif()

file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/kestrove/*.h)
set(section_3 ${PROJECT_BINARY_DIR}/share/man/man3)
set(library_pages ${PROJECT_SOURCE_DIR}/scripts/library_pages.py)
add_custom_command(OUTPUT ${section_3}/libkestrove.3kestrove
  COMMAND ${KESTROVE_PYTHON} -B ${library_pages} ${PROJECT_SOURCE_DIR} ${section_3} ${PROJECT_VERSION}
  DEPENDS ${library_pages} ${PROJECT_SOURCE_DIR}/scripts/header_comments.py ${PROJECT_SOURCE_DIR}/cmake/kestrove.map
          ${headers} VERBATIM)
add_custom_target(library-manual ALL DEPENDS ${section_3}/libkestrove.3kestrove)
install(DIRECTORY ${section_3} DESTINATION ${CMAKE_INSTALL_MANDIR} FILES_MATCHING PATTERN "*.3kestrove")
