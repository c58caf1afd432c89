# PELORIN_SANITIZE applies to every target, the platform library included.
if(PELORIN_SANITIZE)
  add_compile_options(-fsanitize=${PELORIN_SANITIZE} -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${PELORIN_SANITIZE})
  if(PELORIN_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()
