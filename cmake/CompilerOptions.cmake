option(TAVEL_WARNINGS_ARE_ERRORS "Stop at warnings; packagers, who use other compilers than we do, switch it off" ON)

# Every target of the project links this. Third-party headers are included as system headers, without warnings.
add_library(tavel_warnings INTERFACE)
target_compile_options(tavel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${TAVEL_WARNINGS_ARE_ERRORS}>:-Werror>
  # In a unity build, this warning compares a file with the names of another one.
  $<$<NOT:$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wshadow>
  # There g++ takes each file for a header, in which an anonymous namespace would be a mistake.
  $<$<AND:$<BOOL:${CMAKE_UNITY_BUILD}>,$<COMPILE_LANG_AND_ID:CXX,GNU>>:-Wno-subobject-linkage>
  # When optimising, g++ 12 falsely reports overlapping copies in string additions (GCC bug 105651).
  $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)

# Global options, because a sanitizer must instrument every object file of ours.
if(TAVEL_SANITIZERS)
  add_compile_options(-fsanitize=${TAVEL_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TAVEL_SANITIZERS})
  add_compile_definitions(TAVEL_SANITIZED)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # This warning misses initialisations in instrumented code (GCC manual, -fsanitize=address).
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-maybe-uninitialized>)
  endif()
endif()

if(TAVEL_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link) # the coverage instrumentation for libFuzzer
endif()
