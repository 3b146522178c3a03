# Run at the end of an installation. Lists what it has put into the directory of programs
# and beside the documents, and lets the installed program measure it.
set(root "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
set(parts "")
foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
  file(RELATIVE_PATH part "${CMAKE_INSTALL_PREFIX}" "${file}")
  if(part MATCHES "^(${bin}|share)/" AND NOT part MATCHES "[:\\]" AND NOT IS_SYMLINK "$ENV{DESTDIR}${file}")
    list(APPEND parts "${part}")
  endif()
endforeach()
# Put there by itself.
if(EXISTS "${root}/${bin}/${library}")
  list(APPEND parts "${bin}/${library}")
endif()
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
