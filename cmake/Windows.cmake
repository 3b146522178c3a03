# What every target of a Windows build needs.

# The system's own printf family does not know %zu, %lld and C99's return values.
# The second is what the compiler defines by itself on other platforms.
add_compile_definitions(__USE_MINGW_ANSI_STDIO=1 _GNU_SOURCE)
enable_language(C)

# At -O2 and above this compiler takes std::string's "text" + string for a copy
# of overlapping memory.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)

# The compiler's runtimes are linked as DLLs: with static ones program and
# library would each have an `operator new` with a new-handler of its own, and
# exceptions would not cross. They lie beside the programs, as Windows looks there.
set(mox_runtime_dlls "")
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                  OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "The compiler does not know its runtime ${name}")
  endif()
  list(APPEND mox_runtime_dlls ${file})
endforeach()
file(COPY ${mox_runtime_dlls} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
if(MOX_INSTALL)
  install(FILES ${mox_runtime_dlls} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
endif()

if(CMAKE_CROSSCOMPILING)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/scripts/wine.sh ${PROJECT_BINARY_DIR}/wine)
endif()
