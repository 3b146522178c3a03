# One switch for all targets: mixed instrumentation hides faults.
if(MOX_SANITIZE)
  add_compile_options(-fsanitize=${MOX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${MOX_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # g++ takes its own instrumentation of std::function for uses without a value.
    add_compile_options(-Wno-maybe-uninitialized)
  else()
    # clang++ compares type information by address, which differs between the library
    # and a program where it is hidden; and what is no value of an enumeration is what
    # callers may hand in here, and tests do.
    add_compile_options(-fno-sanitize=vptr,enum)
  endif()
endif()

if(MOX_FUZZ)
  # Only the harnesses bring the fuzzer; everything else tells it where it has been.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
