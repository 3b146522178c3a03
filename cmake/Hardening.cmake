# What distributions build with. Sanitizers bring checks of their own, which the
# fortified functions would hide from them; Windows has other means.
if(MOX_HARDEN AND NOT MOX_SANITIZE AND NOT WIN32)
  add_compile_options(-fstack-protector-strong -fstack-clash-protection
                      # Without optimisation the C library only warns that it cannot do it.
                      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-fcf-protection)
  endif()
  add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()
