# Installs into a fresh prefix, builds examples/hello-tool against it, moves
# the prefix away and runs the tool: nothing may depend on where it was built.
set(scratch ${BUILD}/outside)
file(REMOVE_RECURSE ${scratch})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nended with ${status}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${scratch}/suite)
set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE}")
endif()
set(compiler -D CMAKE_CXX_COMPILER=${COMPILER})
if(TOOLCHAIN)
  set(compiler -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
run(${CMAKE_COMMAND} -S ${SOURCE}/examples/hello-tool -B ${scratch}/build -G ${GENERATOR}
    -D CMAKE_PREFIX_PATH=${scratch}/suite ${compiler}
    "-D CMAKE_CXX_FLAGS=${flags}" -D CMAKE_BUILD_RPATH_USE_ORIGIN=ON)
run(${CMAKE_COMMAND} --build ${scratch}/build)
file(COPY ${scratch}/build/hello-tool${SUFFIX} DESTINATION ${scratch}/suite/bin)
file(RENAME ${scratch}/suite ${scratch}/moved)
set(ENV{LD_LIBRARY_PATH} ${scratch}/moved/bin)
run(${EMULATOR} ${scratch}/moved/bin/hello-tool${SUFFIX} -system brewery)
string(REPLACE "\r" "" out "${out}")
if(NOT out STREQUAL "Hello, brewery.\n")
  message(FATAL_ERROR "hello-tool wrote: ${out}")
endif()
