# On a Mac the agent is a helper in another program's bundle, on computers without a package manager: what it needs
# besides the system goes into its file. Where a package has no archive, its shared library has to do.

# Makes `target` the archive of a library, or its shared library. HEADERS is the target that its package brings.
function(tavel_prefer_archive target library headers)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  find_library(TAVEL_${library}_ARCHIVE NAMES lib${library}.a)
  if(NOT TAVEL_${library}_ARCHIVE)
    message(STATUS "lib${library}.a is not here: the agent will only run where its shared library is")
    target_link_libraries(${target} INTERFACE ${headers})
    return()
  endif()
  # One that lacks an architecture that is asked for would only be missed by the linker, symbol by symbol.
  execute_process(COMMAND lipo -archs ${TAVEL_${library}_ARCHIVE} OUTPUT_VARIABLE has COMMAND_ERROR_IS_FATAL ANY)
  foreach(wanted IN LISTS CMAKE_OSX_ARCHITECTURES)
    if(NOT has MATCHES ${wanted})
      message(FATAL_ERROR "${TAVEL_${library}_ARCHIVE} is not made for ${wanted}: docs/macos.md says which is")
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "$<TARGET_PROPERTY:${headers},INTERFACE_INCLUDE_DIRECTORIES>"
    INTERFACE_LINK_LIBRARIES ${TAVEL_${library}_ARCHIVE})
endfunction()

tavel_prefer_archive(tavel_simdjson simdjson simdjson::simdjson)
tavel_prefer_archive(tavel_utf8proc utf8proc PkgConfig::utf8proc)
