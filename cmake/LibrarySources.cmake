set(TAVEL_LIBRARY_SOURCES "" CACHE PATH
  "A folder with the unpacked sources of the agent's libraries (NAME-VERSION), to build these with the agent")

# Sets `folder` in the caller to the sources of a library: those in TAVEL_LIBRARY_SOURCES if that is set, otherwise those
# in the archive at `url`. Stops the configuration if the archive cannot be had or has another hash, and if the folder
# has no `source`.
function(tavel_find_sources library url sha256 source)
  if(TAVEL_LIBRARY_SOURCES)
    set(found ${TAVEL_LIBRARY_SOURCES}/${library})
  else()
    tavel_unpack_archive(${library} ${url} ${sha256})
    set(found ${CMAKE_CURRENT_BINARY_DIR}/${library})
  endif()
  if(NOT EXISTS ${found}/${source})
    message(FATAL_ERROR "${found}/${source} is missing: see docs/dependencies.md")
  endif()
  set(folder ${found} PARENT_SCOPE)
endfunction()

# An archive that an earlier configuration downloaded is used again.
function(tavel_unpack_archive library url sha256)
  set(archive ${CMAKE_CURRENT_BINARY_DIR}/${library}.tar.gz)
  set(hash)
  if(EXISTS ${archive})
    file(SHA256 ${archive} hash)
  endif()
  if(NOT hash STREQUAL sha256)
    file(DOWNLOAD ${url} ${archive} STATUS status INACTIVITY_TIMEOUT 60)
    list(GET status 0 failed)
    if(failed)
      list(GET status 1 reason)
      message(FATAL_ERROR "${url} cannot be downloaded (${reason}). "
        "TAVEL_LIBRARY_SOURCES can name a folder that holds ${library}: see docs/dependencies.md")
    endif()
    file(SHA256 ${archive} hash)
    if(NOT hash STREQUAL sha256)
      message(FATAL_ERROR "${url} is not the archive that was checked: its SHA-256 hash is ${hash}, not ${sha256}")
    endif()
  endif()
  file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${CMAKE_CURRENT_BINARY_DIR})
endfunction()
