# The warning set of everything built here; never exported to users.
add_library(mox_warnings INTERFACE)
target_compile_options(mox_warnings INTERFACE -Wall -Wextra -Wpedantic)
if(MOX_WERROR)
  target_compile_options(mox_warnings INTERFACE -Werror)
endif()
