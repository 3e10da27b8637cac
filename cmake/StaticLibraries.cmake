# On a Mac the agent is part of another program's bundle, on computers without a package manager. So its libraries
# beyond the system's are linked statically. A package without an archive is linked as a shared library.

# Defines `target` as the library's archive or, if there is none, as its shared library. `headers` is the package's own
# target.
function(tavel_prefer_archive target library headers)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  find_library(TAVEL_${library}_ARCHIVE NAMES lib${library}.a)
  if(NOT TAVEL_${library}_ARCHIVE)
    message(STATUS "lib${library}.a is missing: the agent will only run where its shared library is installed")
    target_link_libraries(${target} INTERFACE ${headers})
    return()
  endif()
  # Checked here, because for a missing architecture the linker would only report undefined symbols.
  execute_process(COMMAND lipo -archs ${TAVEL_${library}_ARCHIVE} OUTPUT_VARIABLE has COMMAND_ERROR_IS_FATAL ANY)
  foreach(wanted IN LISTS CMAKE_OSX_ARCHITECTURES)
    if(NOT has MATCHES ${wanted})
      message(FATAL_ERROR "${TAVEL_${library}_ARCHIVE} lacks the architecture ${wanted}: see docs/macos.md")
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "$<TARGET_PROPERTY:${headers},INTERFACE_INCLUDE_DIRECTORIES>"
    INTERFACE_LINK_LIBRARIES ${TAVEL_${library}_ARCHIVE})
endfunction()

tavel_prefer_archive(tavel_simdjson simdjson simdjson::simdjson)
tavel_prefer_archive(tavel_utf8proc utf8proc PkgConfig::utf8proc)
