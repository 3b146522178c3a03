# Run at the end of an installation. Lists what it has put into the directory of programs
# and beside the documents, and lets the installed program measure it.
get_filename_component(root "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}" ABSOLUTE) # which may be relative
string(LENGTH "${CMAKE_INSTALL_PREFIX}/" length)
cmake_path(SET bin NORMALIZE "${bin}") # "./bin" and "bin/" are allowed, in a list of parts they are not
string(REGEX REPLACE "/$" "" bin "${bin}")
set(parts "")
foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
  string(FIND "${file}" "${CMAKE_INSTALL_PREFIX}/" start)
  if(NOT start EQUAL 0)
    continue()
  endif()
  string(SUBSTRING "${file}" ${length} -1 part)
  cmake_path(SET part NORMALIZE "${part}")
  if(part MATCHES "^(${bin}|share)/" AND NOT part MATCHES "[:\\]" AND NOT IS_SYMLINK "$ENV{DESTDIR}${file}")
    list(APPEND parts "${part}")
  endif()
endforeach()
# The library is installed by itself. Where it is not there at all, as in one of several
# packages, the program would not run either: whoever puts them together makes the file.
if(NOT EXISTS "${root}/${bin}/${library}")
  return()
endif()
list(APPEND parts "${bin}/${library}")
list(REMOVE_DUPLICATES parts)
string(TIMESTAMP date "%Y-%m-%d" UTC) # that of SOURCE_DATE_EPOCH where it is set
set(text "name=Mox\nversion=${version}\ndate=${date}\nvendor=Tarvo\n")
foreach(part IN LISTS parts)
  string(APPEND text "part=00000000 0 ${version} ${part}\n")
endforeach()
file(WRITE "${root}/ProductInfo" "${text}")
execute_process(COMMAND ${emulator} "${root}/${bin}/${moxinfo}" -product "${root}/ProductInfo" -update
                RESULT_VARIABLE status ERROR_VARIABLE problem)
if(NOT status EQUAL 0)
  file(REMOVE "${root}/ProductInfo")
  message(WARNING "No product information file was made: ${status} ${problem}")
endif()
