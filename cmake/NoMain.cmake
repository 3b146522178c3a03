# moxtools::nomain is the library without its main, for programs that bring one of
# their own, such as those linked to GTest::gtest_main. It exists for the linker alone:
# a linker takes main from the first library that has it, so beside the library
# itself the order would decide. The program loads the library as any other does.
if(WIN32)
  add_library(moxtools_nomain INTERFACE)
  set(import_library libmoxtools-nomain.dll.a)
  add_custom_command(
    TARGET moxtools POST_BUILD
    COMMAND ${CMAKE_COMMAND} -D NM=${CMAKE_NM} -D AR=${CMAKE_AR} -D FROM=$<TARGET_LINKER_FILE:moxtools>
            -D TO=${PROJECT_BINARY_DIR}/${import_library} -P ${PROJECT_SOURCE_DIR}/cmake/ImportLibraryWithoutMain.cmake
    VERBATIM)
  target_link_libraries(
    moxtools_nomain
    INTERFACE $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/${import_library}>
              $<INSTALL_INTERFACE:$<INSTALL_PREFIX>/${CMAKE_INSTALL_LIBDIR}/${import_library}>)
  if(MOX_INSTALL)
    install(FILES ${PROJECT_BINARY_DIR}/${import_library} DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT development)
  endif()
else()
  set(map ${CMAKE_CURRENT_SOURCE_DIR}/moxtools.map)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${map})
  file(READ ${map} text)
  string(REPLACE "local:" "local:\n    main;" text "${text}")
  file(CONFIGURE OUTPUT nomain.map CONTENT "${text}" @ONLY)
  add_library(moxtools_nomain SHARED)
  target_link_libraries(moxtools_nomain PRIVATE $<TARGET_PROPERTY:moxtools,LINK_LIBRARIES>)
  get_target_property(soname moxtools SOVERSION)
  target_link_options(
    moxtools_nomain PRIVATE -Wl,-s -Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/nomain.map
    -Wl,-soname,${CMAKE_SHARED_LIBRARY_PREFIX}moxtools${CMAKE_SHARED_LIBRARY_SUFFIX}.${soname})
  set_target_properties(moxtools_nomain PROPERTIES NO_SONAME ON OUTPUT_NAME moxtools-nomain)
endif()
add_library(moxtools::nomain ALIAS moxtools_nomain)
set_target_properties(moxtools_nomain PROPERTIES EXPORT_NAME nomain)
foreach(property INCLUDE_DIRECTORIES COMPILE_DEFINITIONS COMPILE_FEATURES)
  get_target_property(value moxtools INTERFACE_${property})
  if(value)
    set_target_properties(moxtools_nomain PROPERTIES INTERFACE_${property} "${value}")
  endif()
endforeach()
