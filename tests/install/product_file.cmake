# Installs programs and library, and looks at them with the installed program: first as
# they are, then with one changed, one cut off and one gone.
set(scratch ${BUILD}/product)
set(suite ${scratch}/suite)
file(REMOVE_RECURSE ${scratch})
foreach(component library documentation programs)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --component ${component} --prefix ${suite}
                  RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE err)
  if(NOT status EQUAL 0 OR err MATCHES "No product information")
    message(FATAL_ERROR "installing ${component} ended with ${status}: ${err}")
  endif()
endforeach()

function(look status_wanted text_wanted)
  execute_process(COMMAND ${EMULATOR} ${suite}/${BIN}/${MOXINFO} -product . ${ARGN}
                  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REPLACE "\r" "" out "${out}")
  if(NOT status EQUAL status_wanted OR NOT out MATCHES "${text_wanted}")
    message(FATAL_ERROR "-product . ${ARGN} ended with ${status}, not ${status_wanted}:\n${out}\n${err}\n"
                        "which does not match\n${text_wanted}")
  endif()
endfunction()

string(REPLACE "." "\\." version "${VERSION}")
string(REPLACE "." "\\." library "${LIBRARY}")
string(REPLACE "." "\\." moxinfo "${MOXINFO}")
set(first "^Mox ${version} \\([0-9-]+\\)\nvendor=Tarvo\n")
look(0 "${first}[0-9]+ parts, 0 problems\n$")
look(0 "\npart ${BIN}/${library} ${version} good\n" -verbose)
look(0 "\npart ${BIN}/${moxinfo} ${version} good\n" -verbose)

string(REPLACE "moxinfo" "moxmsg" moxmsg "${MOXINFO}")
string(REPLACE "moxinfo" "moxcopy" moxcopy "${MOXINFO}")
file(WRITE ${suite}/${BIN}/${moxmsg} "short")
file(REMOVE ${suite}/${BIN}/${moxcopy})
look(1 "${first}part ${BIN}/moxcopy[.a-z]* ${version} missing\npart ${BIN}/moxmsg[.a-z]* ${version} wrong size\n[0-9]+ parts, 2 problems\n$")
