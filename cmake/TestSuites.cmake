# Makes every test suite of a GoogleTest program a CTest test, named PROGRAM.SUITE: a process for each single test
# would cost more than most tests do. The suites are asked for when CTest starts, so a program that nobody asked for
# need not be built. GoogleTest's output names each test that fails.
#   tavel_add_suites(PROGRAM EXCEPT PATTERN PROPERTIES...)
# EXCEPT is a pattern of --gtest_filter, or empty, for the tests that are left out.
function(tavel_add_suites program except)
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${program}-suites.cmake)
  file(GENERATE OUTPUT ${script} CONTENT "include(\"${PROJECT_SOURCE_DIR}/cmake/ListSuites.cmake\")
tavel_list_suites([==[${program}]==] [==[$<TARGET_FILE:${program}>]==] [==[${except}]==] [==[${ARGN}]==])\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
endfunction()
