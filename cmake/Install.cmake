# SPDX-License-Identifier: Apache-2.0
# What an installation holds. Everything lies below the prefix, and the parts find each other by relative paths.
set(kestrove_home ${CMAKE_INSTALL_LIBEXECDIR}/kestrove)

# A symbolic link at PATH to TARGET, both relative to the prefix.
function(kestrove_install_link path target)
  get_filename_component(folder ${path} DIRECTORY)
  file(RELATIVE_PATH relative /${folder} /${target})
  install(CODE "
    set(link \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${path}\")
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
    message(STATUS \"Installing: \${link}\")
    file(CREATE_LINK ${relative} \"\${link}\" SYMBOLIC)")
endfunction()

install(TARGETS kestrove EXPORT kestrove LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/kestrove DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT library)
include(Package)

if(TARGET kestrovectl)
  install(TARGETS kestrovectl kestrove-monitor kestrove-sim shm-init RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES tools/ctl/shell/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          RENAME kestrovectl)
  install(FILES tools/ctl/shell/completion.zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
          RENAME _kestrovectl)
endif()

# Debian's place for packages of every version of Python; they look for the library beside it (python/kestrove/_library.py).
install(DIRECTORY python/kestrove DESTINATION lib/python3/dist-packages PATTERN __pycache__ EXCLUDE)
if(TARGET kestrove-api)
  install(TARGETS kestrove-api RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET kestrove-snmp)
  install(TARGETS kestrove-snmp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES doc/mib/KESTROVE-MIB DESTINATION ${CMAKE_INSTALL_DATADIR}/snmp/mibs RENAME KESTROVE-MIB.txt)
endif()
if(TARGET kestrove-hints)
  install(TARGETS kestrove-hints LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/kestrove)
endif()
install(DIRECTORY tools/api/apache tools/api/page DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrove USE_SOURCE_PERMISSIONS)

install(TARGETS kestrove-sandbox kestrove-recorder RUNTIME DESTINATION ${kestrove_home})
install(DIRECTORY ${PROJECT_BINARY_DIR}/sandbox/image DESTINATION ${kestrove_home} USE_SOURCE_PERMISSIONS)
kestrove_install_link(${CMAKE_INSTALL_BINDIR}/kestrove-sandbox ${kestrove_home}/kestrove-sandbox)
kestrove_install_link(${kestrove_home}/programs ${CMAKE_INSTALL_BINDIR})

# The documents keep their places beside one another, so that their links hold.
install(FILES LICENSE README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY doc DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN web.png PATTERN *.bt
        PATTERN api.yaml PATTERN KESTROVE-MIB)
install(DIRECTORY doc/grafana doc/web-server DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc)
install(FILES sandbox/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/sandbox)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY sandbox/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}/sandbox)
