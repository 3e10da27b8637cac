# Prints where the sources of a library are: cmake -DURL=… -DSHA256=… -P find-sources.cmake
include(${CMAKE_CURRENT_LIST_DIR}/../../../cmake/LibrarySources.cmake)
tavel_find_sources(library-1.0 ${URL} ${SHA256} source.c)
message("found ${folder}")
