# Installs into a fresh prefix and uses the library from there as others do: by CMake
# and pkg-config, from a tool's own tests, with headers of the user's own in the way.
# Nothing but what was linked tells the programs where the library is.
set(scratch ${BUILD}/outside)
file(REMOVE_RECURSE ${scratch})
unset(ENV{LD_LIBRARY_PATH})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nended with ${status}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect_greeting) # COMMAND...
  run(${ARGN} -system brewery)
  string(REPLACE "\r" "" out "${out}")
  if(NOT out STREQUAL "Hello, brewery.\n")
    message(FATAL_ERROR "${ARGN} wrote: ${out}")
  endif()
endfunction()

file(MAKE_DIRECTORY ${scratch})
run(${CMAKE_COMMAND} -E chdir ${scratch} ${CMAKE_COMMAND} --install ${BUILD} --prefix suite)
set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE}")
endif()
set(compiler -D CMAKE_CXX_COMPILER=${COMPILER})
if(TOOLCHAIN)
  # The test framework is not installed for the target.
  set(compiler -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -D BUILD_TESTING=OFF)
endif()
run(${CMAKE_COMMAND} -S ${SOURCE}/examples/hello-tool -B ${scratch}/build -G ${GENERATOR}
    -D CMAKE_PREFIX_PATH=${scratch}/suite ${compiler} "-D CMAKE_CXX_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${scratch}/build)
run(${CMAKE_COMMAND} --install ${scratch}/build --prefix ${scratch}/suite)
if(NOT TOOLCHAIN)
  run(${CMAKE_COMMAND} -E chdir ${scratch}/build ctest --no-tests=error)
  run(${CMAKE_COMMAND} --install ${scratch}/build --prefix ${scratch}/elsewhere)
  expect_greeting(${scratch}/elsewhere/bin/hello-tool)
endif()

# A project that is made builds without a warning, passes its tests and runs as it is, whatever
# its name; this one is that of a folder in it.
run(${EMULATOR} ${scratch}/suite/bin/moxtool${SUFFIX} new tests -target ${scratch})
if(NOT TOOLCHAIN)
  run(${scratch}/tests/ci.sh -G ${GENERATOR} -D CMAKE_PREFIX_PATH=${scratch}/suite ${compiler}
      "-D CMAKE_CXX_FLAGS=${flags}")
  run(${CMAKE_COMMAND} -E env --unset=ToolInfo ${scratch}/tests/build/bin/tests ${scratch}/tests/.gitignore)
  if(NOT out MATCHES "2 lines\n$")
    message(FATAL_ERROR "The tool of the new project wrote: ${out}")
  endif()
endif()

# Headers of the user's that are called like the library's come first on the way.
set(own ${scratch}/own/tools)
file(GLOB_RECURSE headers RELATIVE ${scratch}/suite/include/mox/tools ${scratch}/suite/include/mox/tools/*.h)
list(REMOVE_ITEM headers moxtools.h)
foreach(header IN LISTS headers)
  file(WRITE ${own}/${header} "#error the header of the user\n")
endforeach()
file(WRITE ${scratch}/use.cpp "#include <tools/moxtools.h>\n")
foreach(standard 17 20 2b) # the last one under the name that older compilers know
  run(${COMPILER} -std=c++${standard} -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror
      -I${scratch}/own -I${scratch}/suite/include/mox ${DEFINITIONS} ${scratch}/use.cpp)
endforeach()

find_program(pkg_config pkg-config)
if(pkg_config AND NOT TOOLCHAIN)
  set(ENV{PKG_CONFIG_PATH} ${scratch}/suite/${LIBDIR}/pkgconfig)
  run(${pkg_config} --cflags --libs moxtools)
  separate_arguments(options UNIX_COMMAND "${flags} ${out}")
  # What a compiler takes by itself may be older (clang++ 14), and pkg-config cannot ask.
  list(APPEND options -std=c++17)
  run(${COMPILER} ${SOURCE}/examples/hello-tool/hello_tool.cpp -o ${scratch}/by_pkg_config ${options})
  expect_greeting(${scratch}/by_pkg_config)

  # As packages install it: the loader meets a link, and the suite is where that leads.
  file(GLOB library RELATIVE ${scratch}/suite/bin ${scratch}/suite/bin/libmoxtools.so.?)
  file(MAKE_DIRECTORY ${scratch}/system)
  file(CREATE_LINK ${scratch}/suite/bin/${library} ${scratch}/system/${library} SYMBOLIC)
  run(${COMPILER} ${CMAKE_CURRENT_LIST_DIR}/where.cpp -o ${scratch}/where ${options})
  foreach(folder system suite/bin)
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${scratch}/${folder} ${scratch}/where)
    string(REPLACE "/" "\\" root "${scratch}/suite\n")
    if(NOT out STREQUAL root)
      message(FATAL_ERROR "Loaded from ${folder}, the root is ${out}")
    endif()
  endforeach()
endif()

# The suite as a whole, with the tool in it, works from another place.
file(RENAME ${scratch}/suite ${scratch}/moved)
expect_greeting(${EMULATOR} ${scratch}/moved/bin/hello-tool${SUFFIX})
