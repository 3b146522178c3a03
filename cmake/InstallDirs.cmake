# Where things are installed, below one prefix that can be moved as a whole.
# Programs and library share CMAKE_INSTALL_BINDIR: a running tool takes the
# directory above the "bin" of the library's file for the root of the suite, and
# looks there for its configuration and its texts.
include(GNUInstallDirs)

foreach(dir BINDIR LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    message(FATAL_ERROR "CMAKE_INSTALL_${dir} is \"${CMAKE_INSTALL_${dir}}\": give it relative to the prefix,"
                        " because the installed suite can be moved as a whole.")
  endif()
endforeach()
if(NOT CMAKE_INSTALL_BINDIR MATCHES "(^|/)bin/?$")
  message(FATAL_ERROR "CMAKE_INSTALL_BINDIR is \"${CMAKE_INSTALL_BINDIR}\": its last folder has to be \"bin\"."
                      " Programs and library go there, and the installation root is the directory above"
                      " that \"bin\".")
endif()
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_INSTALL_LIBDIR MATCHES "^lib$")
  message(STATUS "Library and programs: ${CMAKE_INSTALL_BINDIR}; in ${CMAKE_INSTALL_LIBDIR} are the files for"
                 " CMake and pkg-config only")
endif()
