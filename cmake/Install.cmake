include(CMakePackageConfigHelpers)

# One prefix is the suite: the "bin" rule finds the root from wherever it is moved to.
set(bin ${CMAKE_INSTALL_BINDIR})
set(lib ${CMAKE_INSTALL_LIBDIR})
set(include ${CMAKE_INSTALL_INCLUDEDIR}/mox)
install(
  TARGETS moxtools
  EXPORT moxtools
  RUNTIME DESTINATION ${bin} COMPONENT library
  LIBRARY DESTINATION ${bin} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${lib} COMPONENT development
  INCLUDES
  DESTINATION ${include})
install(
  TARGETS moxtools_nomain
  EXPORT moxtools
  LIBRARY DESTINATION ${bin} COMPONENT development
  ARCHIVE DESTINATION ${lib} COMPONENT development)
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/libs/tools
  DESTINATION ${include}
  COMPONENT development
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN detail EXCLUDE
  PATTERN platform EXCLUDE)
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/libs/testkit
  DESTINATION ${include}
  COMPONENT testkit
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN detail EXCLUDE
  PATTERN posix EXCLUDE
  PATTERN windows EXCLUDE)
foreach(pair "development;tools" "testkit;testkit")
  list(GET pair 0 component)
  list(GET pair 1 folder)
  install(CODE "set(headers \"${include}\")\nset(folder ${folder})" COMPONENT ${component})
  install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/SiblingIncludes.cmake COMPONENT ${component})
endforeach()

install(EXPORT moxtools NAMESPACE moxtools:: FILE moxtools-targets.cmake
        DESTINATION ${lib}/cmake/moxtools COMPONENT development)
set(moxtool ${bin}/moxtool${CMAKE_EXECUTABLE_SUFFIX})
install(TARGETS moxtools_testkit EXPORT moxtools-testkit OBJECTS DESTINATION ${lib}/moxtools COMPONENT testkit)
install(EXPORT moxtools-testkit NAMESPACE moxtools:: FILE moxtools-testkit-targets.cmake
        DESTINATION ${lib}/cmake/moxtools COMPONENT testkit)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/moxtools-config.cmake.in
  ${PROJECT_BINARY_DIR}/moxtools-config.cmake INSTALL_DESTINATION ${lib}/cmake/moxtools
  PATH_VARS moxtool)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/moxtools-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/moxtools-config.cmake
              ${PROJECT_BINARY_DIR}/moxtools-config-version.cmake
        DESTINATION ${lib}/cmake/moxtools COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/DialogueTest.cmake RENAME moxtools-dialogue.cmake
        DESTINATION ${lib}/cmake/moxtools COMPONENT development)

# The prefix as seen from the file, so that it moves along.
file(RELATIVE_PATH up /${lib}/pkgconfig /)
string(REGEX REPLACE "/$" "" up ${up})
# The library lies outside the directories that the loader searches.
set(rpath " -Wl,-rpath,\${libdir}")
if(WIN32)
  set(rpath "")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/moxtools.pc.in ${PROJECT_BINARY_DIR}/moxtools.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/moxtools.pc DESTINATION ${lib}/pkgconfig COMPONENT development)

set(documents ${CMAKE_INSTALL_DATADIR}/doc/moxtools)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/THIRD-PARTY.md
              ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/SECURITY.md
        DESTINATION ${documents} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${documents}/docs COMPONENT documentation
        FILES_MATCHING PATTERN "*.md" PATTERN man EXCLUDE)
foreach(section 1 5 7)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.${section})
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT documentation)
endforeach()

# Which build this is, and whether it is whole: the file that `moxinfo -product` reads.
install(
  CODE "set(bin \"${bin}\")
set(version \"${PROJECT_VERSION}\")
set(library \"$<TARGET_FILE_NAME:moxtools>\")
set(moxinfo \"$<TARGET_FILE_NAME:moxinfo>\")
set(emulator \"${CMAKE_CROSSCOMPILING_EMULATOR}\")"
  COMPONENT programs)
install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/ProductFile.cmake COMPONENT programs)
