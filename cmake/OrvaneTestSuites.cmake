# Read by CTest when it begins, not by CMake.
#
# orvane_register_suites(PREFIX prefix PROGRAM file LISTING file [FILTER filter] TIMEOUT seconds LABELS label...
#                        [FIXTURES fixture...] [ENVIRONMENT name=value...] [COST number])
# Makes a test "PREFIX.Suite" of every suite of a GoogleTest program: one process that runs the cases of that suite one
# after the other. LISTING keeps what the program answers when it is asked for its cases.
cmake_minimum_required(VERSION 3.25)

function(orvane_register_suites)
  cmake_parse_arguments(ARG "" "PREFIX;PROGRAM;LISTING;FILTER;TIMEOUT;COST" "LABELS;FIXTURES;ENVIRONMENT" ${ARGN})
  if(NOT EXISTS "${ARG_PROGRAM}")
    add_test("${ARG_PREFIX}_NOT_BUILT" "${ARG_PROGRAM}")
    return()
  endif()
  if("${ARG_PROGRAM}" IS_NEWER_THAN "${ARG_LISTING}" OR "${CMAKE_CURRENT_LIST_FILE}" IS_NEWER_THAN "${ARG_LISTING}")
    execute_process(COMMAND "${ARG_PROGRAM}" --gtest_list_tests "--gtest_filter=*${ARG_FILTER}"
      OUTPUT_VARIABLE listed ERROR_VARIABLE listed RESULT_VARIABLE result TIMEOUT 60)
    if(NOT result EQUAL 0)
      message(FATAL_ERROR "${ARG_PROGRAM} does not list its tests (${result}):\n${listed}")
    endif()
    file(WRITE "${ARG_LISTING}" "${listed}")
  endif()
  # A suite begins its line and ends in a full stop; its cases are indented.
  file(STRINGS "${ARG_LISTING}" suites REGEX "^[A-Za-z0-9_/]+\\.($| )")
  foreach(line IN LISTS suites)
    string(REGEX REPLACE "\\..*" "" suite "${line}")
    set(test "${ARG_PREFIX}.${suite}")
    add_test("${test}" "${ARG_PROGRAM}" "--gtest_filter=${suite}.*${ARG_FILTER}")
    set_tests_properties("${test}" PROPERTIES TIMEOUT "${ARG_TIMEOUT}" LABELS "${ARG_LABELS}"
      FIXTURES_REQUIRED "${ARG_FIXTURES}" ENVIRONMENT "${ARG_ENVIRONMENT}" COST "${ARG_COST}"
      # Skipped is a suite of which nothing was run.
      SKIP_REGULAR_EXPRESSION "\\[  PASSED  \\] 0 tests\\.\n\\[  SKIPPED \\][^\n]*\n(\\[  SKIPPED \\][^\n]*\n)*$")
  endforeach()
endfunction()
