# What the library needs besides the system's own libraries: checksums, and on
# other hosts than Windows, which brings its own, digests.
if(WIN32)
  set(ZLIB_USE_STATIC_LIBS ON) # no DLL of somebody else's beside the programs
  find_library(ZLIB_LIBRARY NAMES libz.a REQUIRED)
endif()
find_package(ZLIB REQUIRED)

add_library(mox_dependencies INTERFACE)
target_link_libraries(mox_dependencies INTERFACE ZLIB::ZLIB)
if(WIN32)
  target_link_libraries(mox_dependencies INTERFACE bcrypt ws2_32 advapi32 secur32
                        synchronization)
  set(MOX_PRIVATE_LIBS "-lz -lbcrypt -lws2_32 -ladvapi32 -lsecur32 -lsynchronization")
else()
  find_path(MD_INCLUDE_DIR sha1.h REQUIRED)
  find_library(MD_LIBRARY md REQUIRED)
  mark_as_advanced(MD_INCLUDE_DIR MD_LIBRARY)
  target_include_directories(mox_dependencies SYSTEM INTERFACE ${MD_INCLUDE_DIR})
  target_link_libraries(mox_dependencies INTERFACE ${MD_LIBRARY})
  set(MOX_PRIVATE_LIBS "-lz -lmd")
endif()

# What only programs need: a reader of JSON, headers alone. They are the same for every
# host, but beside them lie those of this one: they are reached by a way of their own.
find_path(MOX_JSON_DIR nlohmann/json.hpp PATHS /usr/include REQUIRED NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(MOX_JSON_DIR)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/json)
file(CREATE_LINK ${MOX_JSON_DIR}/nlohmann ${PROJECT_BINARY_DIR}/json/nlohmann SYMBOLIC)
add_library(mox_json INTERFACE)
target_include_directories(mox_json SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/json)
