# Adds a module: a shared object that a program loads on first use, because the libraries behind it load slowly. It is
# built in lib/tavel, next to the directory of the programs.
#   tavel_add_module(NAME SOURCES...)
function(tavel_add_module name)
  add_library(${name} MODULE ${ARGN})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Sources)
  # Exports the module's entry only. The symbols of our static libraries are hidden, too.
  target_link_options(${name} PRIVATE LINKER:--exclude-libs,ALL)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/tavel)
endfunction()
