# Writes the import library FROM without the member that stands for main to TO.
execute_process(COMMAND ${NM} ${FROM} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES "(^|\n)([^\n:]+\\.o):\n[^:]* T main\n")
  message(FATAL_ERROR "There is no main in ${FROM}")
endif()
set(member ${CMAKE_MATCH_2})
file(COPY_FILE ${FROM} ${TO})
execute_process(COMMAND ${AR} d ${TO} ${member} COMMAND_ERROR_IS_FATAL ANY)
