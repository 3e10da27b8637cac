# Runs in CTest: see TestSuites.cmake. The list is kept until the program changes.
function(tavel_list_suites program file except properties)
  if(NOT EXISTS ${file})
    add_test(${program}_NOT_BUILT ${program}_NOT_BUILT) # fails, as a missing program must
    return()
  endif()
  set(list ${file}.suites)
  if(${file} IS_NEWER_THAN ${list})
    execute_process(COMMAND ${file} --gtest_list_tests --gtest_filter=*-${except} OUTPUT_VARIABLE listed
                    TIMEOUT 60 COMMAND_ERROR_IS_FATAL ANY)
    # A suite's line starts at the margin and ends with a dot, before what a comment tells of its parameter.
    string(REGEX MATCHALL "(^|\n)[^ \n#]+[.]" suites "${listed}")
    list(TRANSFORM suites STRIP)
    file(WRITE ${list} "${suites}")
  endif()
  file(READ ${list} suites)
  foreach(suite IN LISTS suites)
    string(REGEX REPLACE "[.]$" "" name ${program}.${suite})
    add_test(${name} ${file} --gtest_filter=${suite}*-${except})
    set_tests_properties(${name} PROPERTIES ${properties})
  endforeach()
endfunction()
