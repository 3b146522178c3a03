# Configures the project as others do, without building it: what cannot work says so,
# the rest lands where it was asked for.
set(scratch ${BUILD}/configurations)
file(REMOVE_RECURSE ${scratch})

function(configure source) # SOURCE ARGUMENT...
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${source} -B ${scratch}/build --fresh -G ${GENERATOR}
            -D CMAKE_CXX_COMPILER=${COMPILER} -D MOX_BUILD_TESTS=OFF ${ARGN}
    RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REGEX REPLACE "[ \n]+" " " err "${err}")
  set(status ${status} PARENT_SCOPE)
  set(err "${err}" PARENT_SCOPE)
endfunction()

function(expect_refusal text) # TEXT ARGUMENT...
  configure(${SOURCE} ${ARGN})
  string(FIND "${err}" "${text}" place)
  if(status EQUAL 0 OR place EQUAL -1)
    message(FATAL_ERROR "${ARGN}: status ${status}, and not \"${text}\":\n${err}")
  endif()
endfunction()

expect_refusal("moxtools is a shared library only" -D BUILD_SHARED_LIBS=OFF)
expect_refusal("its last folder has to be \"bin\"" -D CMAKE_INSTALL_BINDIR=programs)
expect_refusal("give it relative to the prefix" -D CMAKE_INSTALL_LIBDIR=/usr/lib64)

# What the installation would do, as CMake wrote it down.
function(installed_files)
  file(GLOB_RECURSE scripts ${scratch}/build/cmake_install.cmake)
  set(all "")
  foreach(script IN LISTS scripts)
    file(READ ${script} text)
    string(APPEND all "${text}")
  endforeach()
  set(text "${all}" PARENT_SCOPE)
endfunction()

function(expect_destination folder)
  string(FIND "${text}" "DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${folder}\"" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "Nothing is installed in ${folder}")
  endif()
endfunction()

configure(${SOURCE} -D CMAKE_INSTALL_BINDIR=lib/mox/bin -D CMAKE_INSTALL_LIBDIR=lib64
          -D CMAKE_INSTALL_INCLUDEDIR=inc)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "Folders of the user's choice: ${err}")
endif()
installed_files()
foreach(folder lib/mox/bin lib64/cmake/moxtools lib64/pkgconfig inc/mox)
  expect_destination(${folder})
endforeach()
if(text MATCHES "CMAKE_INSTALL_PREFIX}/(bin|lib|include)[/\"]" AND NOT CMAKE_MATCH_0 MATCHES "lib/$")
  message(FATAL_ERROR "Installed in spite of the user's choice: ${CMAKE_MATCH_0}")
endif()

# As a part of another project: nothing of ours is installed with it unless asked for.
file(WRITE ${scratch}/parent/CMakeLists.txt "cmake_minimum_required(VERSION 3.25)
project(parent LANGUAGES CXX)
add_subdirectory(\"${SOURCE}\" moxtools)
")
foreach(asked OFF ON)
  set(option "")
  if(asked)
    set(option -D MOX_INSTALL=ON)
  endif()
  configure(${scratch}/parent ${option})
  installed_files()
  string(FIND "${text}" "file(INSTALL" place)
  if(NOT status EQUAL 0 OR (place EQUAL -1) EQUAL asked)
    message(FATAL_ERROR "As a part of another project, MOX_INSTALL ${asked}: status ${status}, ${err}")
  endif()
endforeach()
