# SPDX-License-Identifier: Apache-2.0
# Section 3 of the manual, made from the headers' comments, where python3 is there, and all documents as one tree of
# HTML, made by the target doc where cmark-gfm and mandoc are there, too.
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

find_program(KESTROVE_CMARK cmark-gfm)
find_program(KESTROVE_MANDOC mandoc)
if(KESTROVE_CMARK AND KESTROVE_MANDOC AND TARGET manual)
  set(html_tree ${PROJECT_BINARY_DIR}/doc/html)
  add_custom_target(doc
    COMMAND ${KESTROVE_PYTHON} -B ${PROJECT_SOURCE_DIR}/scripts/html_tree.py ${PROJECT_SOURCE_DIR}
            ${PROJECT_BINARY_DIR}/share/man ${html_tree}
    COMMENT "The documents are in ${html_tree}/index.html" VERBATIM)
  add_dependencies(doc manual library-manual)
  install(DIRECTORY ${html_tree} DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
endif()
