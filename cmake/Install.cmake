install(TARGETS kestrove LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/kestrove DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET kestrovectl)
  install(TARGETS kestrovectl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  # ZELrestore runs it by this path.
  install(TARGETS shm-init RUNTIME DESTINATION /bin)
endif()
