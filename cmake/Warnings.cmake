# Every target of the project links this; third-party headers come in as system headers.
add_library(tavel_warnings INTERFACE)
target_compile_options(tavel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
