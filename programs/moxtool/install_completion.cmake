# Writes the completion scripts of the suite's programs below the prefix. They count as
# installed, so that what looks at the installation knows them.
function(mox_completion shell file)
  execute_process(COMMAND ${moxtool} completion ${shell} ${ARGN} OUTPUT_VARIABLE script
                  COMMAND_ERROR_IS_FATAL ANY)
  set(script_file ${CMAKE_INSTALL_PREFIX}/share/${file})
  file(WRITE "$ENV{DESTDIR}${script_file}" "${script}")
  set(CMAKE_INSTALL_MANIFEST_FILES ${CMAKE_INSTALL_MANIFEST_FILES} ${script_file} PARENT_SCOPE)
endfunction()
foreach(program moxcopy moxinfo moxmsg moxreport moxtool)
  mox_completion(bash bash-completion/completions/${program} ${program})
  mox_completion(fish fish/vendor_completions.d/${program}.fish ${program})
endforeach()
mox_completion(zsh zsh/site-functions/_moxtools)
