# Run at installation with `headers` and a `folder` of it set: installed headers include
# each other by where they lie beside one another, so that a file of the same name in a
# user's own include directories, such as tools/export.h, cannot get in between.
get_filename_component(root "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${headers}" ABSOLUTE)
file(GLOB_RECURSE installed "${root}/${folder}/*.h")
foreach(file IN LISTS installed)
  file(RELATIVE_PATH name "${root}" "${file}")
  string(REGEX REPLACE "[^/]+$" "" up "${name}")
  string(REGEX REPLACE "[^/]+/" "../" up "${up}")
  file(READ "${file}" text)
  string(REGEX REPLACE "#include \"(tools|testkit)/" "#include \"${up}\\1/" siblings "${text}")
  if(NOT siblings STREQUAL text)
    file(WRITE "${file}" "${siblings}")
  endif()
endforeach()
