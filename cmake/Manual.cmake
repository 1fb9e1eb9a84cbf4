# SPDX-License-Identifier: Apache-2.0
# The manual pages, where scdoc is there. Those with lists of the program's own tables come through the program that
# prints them.
find_program(KESTROVE_SCDOC scdoc)
if(NOT KESTROVE_SCDOC OR NOT TARGET kestrovectl-reference)
  message(STATUS "scdoc or the programs are missing: the manual pages are left out")
  return()
endif()

set(manual_folder ${PROJECT_BINARY_DIR}/share/man)
set(manual_pages)
foreach(page IN ITEMS kestrove-sandbox.1 kestrove.conf.5 kestrove-script.5 kestrove.7 kestrove-api.8 kestrove-monitor.8
                      kestrove-sim.8 kestrove-snmp.8 kestrovectl.8 shm-init.8)
  set(source ${PROJECT_SOURCE_DIR}/doc/man/${page}.scd)
  set(more)
  if(page STREQUAL kestrovectl.8)
    set(printing $<TARGET_FILE:kestrovectl-reference> man)
  elseif(page STREQUAL kestrove.conf.5)
    set(more ${PROJECT_SOURCE_DIR}/doc/configuration-file.md)
    set(printing $<TARGET_FILE:kestrovectl-reference> keywords ${more} ${source})
  else()
    set(printing cat ${source})
  endif()
  string(REGEX MATCH "[0-9]$" section ${page})
  set(built ${manual_folder}/man${section}/${page})
  add_custom_command(OUTPUT ${built}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${manual_folder}/man${section}
    COMMAND sh -c "\"$@\" >$0.scd" ${built} ${printing}
    COMMAND sh -c "$0 <$1.scd >$1.new && mv $1.new $1 && rm $1.scd" ${KESTROVE_SCDOC} ${built}
    DEPENDS ${source} ${more} kestrovectl-reference VERBATIM)
  list(APPEND manual_pages ${built})
endforeach()
add_custom_target(manual ALL DEPENDS ${manual_pages})
install(DIRECTORY ${manual_folder}/ DESTINATION ${CMAKE_INSTALL_MANDIR} FILES_MATCHING PATTERN "*.[1-8]")
