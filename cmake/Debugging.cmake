# gdb loads a file that is called like the library's, with "-gdb.py" at the end, from
# beside it: in the build tree, in an installed suite, and in packages from a place
# of gdb's own (see Package.cmake).
if(NOT WIN32)
  set(mox_gdb_printers ${PROJECT_SOURCE_DIR}/libs/tools/debug/moxtools-gdb.py)
  set(mox_gdb_name libmoxtools.so.${PROJECT_VERSION}-gdb.py)
  file(MAKE_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  file(CREATE_LINK ${mox_gdb_printers} ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${mox_gdb_name} SYMBOLIC)
  if(MOX_INSTALL)
    install(FILES ${mox_gdb_printers} DESTINATION ${CMAKE_INSTALL_BINDIR} RENAME ${mox_gdb_name}
            COMPONENT debugging)
  endif()
endif()
