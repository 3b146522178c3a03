# One switch for all targets: mixed instrumentation hides faults.
if(MOX_SANITIZE)
  add_compile_options(-fsanitize=${MOX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${MOX_SANITIZE})
endif()
