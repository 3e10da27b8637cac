# Makes every test suite of a GoogleTest program a CTest test, named PROGRAM.SUITE: a process for each single test
# would cost more than most tests do. The suites are asked for when CTest starts, so a program that nobody asked for
# need not be built. GoogleTest's output names each test that fails.
#   tavel_add_suites(PROGRAM SINGLY EXCEPT PROPERTIES...)
# SINGLY is true if each test needs a process of its own after all. EXCEPT is a pattern of --gtest_filter, or empty, for
# the tests that are left out. PROPERTIES are those of the CTest tests.
function(tavel_add_suites program singly except)
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${program}-suites.cmake)
  file(GENERATE OUTPUT ${script} CONTENT "include(\"${PROJECT_SOURCE_DIR}/cmake/ListSuites.cmake\")
tavel_list_suites([==[${program}]==] [==[$<TARGET_FILE:${program}>]==] [==[${singly}]==] [==[${except}]==] [==[${ARGN}]==])\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
endfunction()
