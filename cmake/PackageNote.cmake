# Each ELF program and module that ships tells its version in a note (.note.package, "Package Metadata for ELF
# executables"), which tools for crash reports read. Included by the folders that hold them. On a Mac the agent's
# Info.plist does that.
if(APPLE)
  return()
endif()

set(TAVEL_PACKAGE_NOTE "" CACHE STRING "The JSON of the package note, for packagers; if empty, it names this project")
set(note ${TAVEL_PACKAGE_NOTE})
if(NOT note)
  set(note "{\"name\":\"tavel-clipboard-agent\",\"version\":\"${PROJECT_VERSION}\"}")
endif()

include(CheckLinkerFlag)
# Not by -Wl, which would divide the JSON at its commas.
check_linker_flag(CXX "SHELL:-Xlinker --package-metadata={}" TAVEL_LINKER_WRITES_PACKAGE_NOTES)
if(TAVEL_LINKER_WRITES_PACKAGE_NOTES)
  add_link_options("SHELL:-Xlinker '--package-metadata=${note}'")
endif()
