# Writes the completion scripts of the suite's programs below the prefix.
set(share "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share")
function(mox_completion shell file)
  execute_process(COMMAND ${moxtool} completion ${shell} ${ARGN} OUTPUT_VARIABLE script
                  COMMAND_ERROR_IS_FATAL ANY)
  file(WRITE ${share}/${file} "${script}")
endfunction()
foreach(program moxcopy moxinfo moxmsg moxtool)
  mox_completion(bash bash-completion/completions/${program} ${program})
  mox_completion(fish fish/vendor_completions.d/${program}.fish ${program})
endforeach()
mox_completion(zsh zsh/site-functions/_moxtools)
