# Debian packages: the suite as one prefix below /usr/lib, because the root of the
# suite is above a "bin", and links from where the system looks. `./dev package` makes
# what they need besides (list of symbols, changelog), runs cpack and looks at the result.
set(prefix /usr/lib/moxtools)
set(arch_lib /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
set(soname_package libmoxtools${PROJECT_VERSION_MAJOR})
set(made ${PROJECT_BINARY_DIR}/debian)
set(sources ${PROJECT_SOURCE_DIR}/packaging)
set(MOX_MAINTAINER "The moxtools maintainers <moxtools@example.org>" CACHE STRING "Maintainer of the packages")

# Nothing of this belongs to an installation by hand.
function(debian_file component folder) # FILE...
  install(FILES ${ARGN} DESTINATION ${folder} COMPONENT debian-${component} EXCLUDE_FROM_ALL)
endfunction()

function(debian_link component link target)
  cmake_path(GET link PARENT_PATH folder)
  file(MAKE_DIRECTORY ${made}/links${folder})
  file(CREATE_LINK ${target} ${made}/links${link} SYMBOLIC)
  debian_file(${component} ${folder} ${made}/links${link})
endfunction()

function(debian_documents component package)
  debian_file(${component} /usr/share/doc/${package} ${sources}/copyright ${made}/changelog.gz)
endfunction()

debian_documents(library ${soname_package})
debian_documents(programs moxtools)
debian_documents(development libmoxtools-dev)

set(soname libmoxtools.so.${PROJECT_VERSION_MAJOR})
debian_link(library ${arch_lib}/${soname} ../moxtools/bin/${soname})
install(FILES ${mox_gdb_printers} DESTINATION /usr/share/gdb/auto-load${prefix}/bin RENAME ${mox_gdb_name}
        COMPONENT debian-development EXCLUDE_FROM_ALL)
debian_file(library /etc/moxtools ${sources}/ToolInfo)
debian_link(library ${prefix}/ToolInfo /etc/moxtools/ToolInfo)

foreach(program moxcopy moxinfo moxmsg moxreport moxtool)
  debian_link(programs /usr/bin/${program} ../lib/moxtools/bin/${program})
  debian_file(programs /usr/share/man/man1 ${made}/${program}.1.gz)
endforeach()

foreach(page toolinfo.5 mox-messages.5 mox-dialogue.5 moxtools.7)
  string(REGEX MATCH "[0-9]$" section ${page})
  debian_file(programs /usr/share/man/man${section} ${made}/${page}.gz)
endforeach()

# Where the system's shells look; for zsh that is another folder than below other prefixes.
function(debian_completion from to)
  install(DIRECTORY ${made}/completion/share/${from}/ DESTINATION /usr/share/${to}
          COMPONENT debian-programs EXCLUDE_FROM_ALL)
endfunction()
debian_completion(bash-completion/completions bash-completion/completions)
debian_completion(fish/vendor_completions.d fish/vendor_completions.d)
debian_completion(zsh/site-functions zsh/vendor-completions)

debian_link(development ${arch_lib}/libmoxtools.so ${soname})
# Both files find their prefix by their own place, so links would not do.
foreach(file moxtools-config.cmake moxtools-config-version.cmake)
  file(WRITE ${made}/cmake/${file}
       "include(\"\${CMAKE_CURRENT_LIST_DIR}/../../../moxtools/${CMAKE_INSTALL_LIBDIR}/cmake/moxtools/${file}\")\n")
  debian_file(development ${arch_lib}/cmake/moxtools ${made}/cmake/${file})
endforeach()
file(READ ${PROJECT_BINARY_DIR}/moxtools.pc text)
string(REGEX REPLACE "^prefix=[^\n]*" "prefix=\${pcfiledir}/../../moxtools" text "${text}")
# The loader finds the link.
string(REGEX REPLACE " -Wl,-rpath,[^ \n]*" "" text "${text}")
file(WRITE ${made}/moxtools.pc "${text}")
debian_file(development ${arch_lib}/pkgconfig ${made}/moxtools.pc)
file(GLOB guides ${PROJECT_SOURCE_DIR}/docs/*.md)
debian_file(development /usr/share/doc/libmoxtools-dev ${guides})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${prefix})
set(CPACK_PACKAGE_CONTACT ${MOX_MAINTAINER})
set(CPACK_COMPONENTS_ALL library debian-library programs debian-programs development
    testkit debian-development)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Not of the objects of the test kit, which become parts of other programs.
set(CPACK_DEBIAN_LIB_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_TOOLS_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE moxtools)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # it would come before each package's own

set(about "moxtools is the common tools library of a suite of diagram and modelling tools:
frame of an application, options, configuration, strings, containers, paths,
files, messages and progress.
")
function(debian_package group name section synopsis text) # KEY VALUE...
  string(TOUPPER ${group} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${synopsis}\n${about}.\n${text}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
endfunction()
debian_package(lib ${soname_package} libs "common tools library" "This package has the library.")
debian_package(tools moxtools utils "tools for systems of diagrams"
               "This package has the tools moxcopy, moxinfo, moxmsg, moxreport and moxtool.")
debian_package(dev libmoxtools-dev libdevel "common tools library, for developers"
               "This package has what is needed to write a tool.")
set(CPACK_DEBIAN_LIB_PACKAGE_CONTROL_EXTRA ${sources}/conffiles ${made}/symbols)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/bin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${soname_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${soname_package} (= ${PROJECT_VERSION})")

include(CPack)
foreach(pair "library;lib" "programs;tools" "development;dev")
  list(GET pair 0 component)
  list(GET pair 1 group)
  cpack_add_component_group(${group})
  cpack_add_component(${component} GROUP ${group})
  cpack_add_component(debian-${component} GROUP ${group})
endforeach()
cpack_add_component(testkit GROUP dev)
