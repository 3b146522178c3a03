include(CMakePackageConfigHelpers)

# The suite is one prefix: bin/ holds programs and library, so that the "bin"
# rule finds the root from wherever the prefix is moved to.
install(
  TARGETS moxtools
  EXPORT moxtools
  RUNTIME DESTINATION bin COMPONENT library
  LIBRARY DESTINATION bin COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION lib COMPONENT development
  INCLUDES
  DESTINATION include/mox)
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/libs/tools
  DESTINATION include/mox
  COMPONENT development
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN detail EXCLUDE
  PATTERN platform EXCLUDE)

set(package_dir lib/cmake/moxtools)
install(EXPORT moxtools NAMESPACE moxtools:: FILE moxtools-targets.cmake
        DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/moxtools-config.cmake.in
  ${PROJECT_BINARY_DIR}/moxtools-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/moxtools-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
configure_file(${PROJECT_SOURCE_DIR}/cmake/moxtools.pc.in ${PROJECT_BINARY_DIR}/moxtools.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/moxtools-config.cmake
              ${PROJECT_BINARY_DIR}/moxtools-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/moxtools.pc DESTINATION lib/pkgconfig COMPONENT development)
