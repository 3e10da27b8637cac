# A module: a shared object that a program loads when it first needs it, because what the module links takes long to
# load. It lies in lib/tavel, beside the directory of the programs. Further arguments are its sources.
function(tavel_add_module name)
  add_library(${name} MODULE ${ARGN})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Sources)
  # Only the module's entry is visible: neither its own code nor that of the static libraries in it.
  target_link_options(${name} PRIVATE LINKER:--exclude-libs,ALL)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/tavel)
endfunction()
