# LORVANE_SANITIZE: empty, "address;undefined" or "thread". Applies to everything that is built.
set(LORVANE_SANITIZE "" CACHE STRING "Sanitizers to build with")
if(LORVANE_SANITIZE)
  string(REPLACE ";" "," sanitizers "${LORVANE_SANITIZE}")
  add_compile_options(-fsanitize=${sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  if(LORVANE_SANITIZE STREQUAL "thread")
    add_compile_options(-Wno-tsan) # the network library has fences, which the sanitizer does not see
  endif()
  add_link_options(-fsanitize=${sanitizers})
endif()
