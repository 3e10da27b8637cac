# Every target of the project links this; third-party headers come in as system headers.
add_library(tavel_warnings INTERFACE)
target_compile_options(tavel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # g++ 12 sees overlapping copies in plain string additions when it optimises (GCC bug 105651).
  $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
