# Whole-program flags: a sanitizer has to see every object file of ours.
if(TAVEL_SANITIZERS)
  add_compile_options(-fsanitize=${TAVEL_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TAVEL_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The instrumentation hides initialisations from this warning (GCC manual, -fsanitize=address).
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-maybe-uninitialized>)
  endif()
endif()

if(TAVEL_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link) # lets libFuzzer see which code an input reaches
endif()
