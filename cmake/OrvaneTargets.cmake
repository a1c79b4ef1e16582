# One function per kind of target, so that every room is declared the same way.

# orvane_library(NAME SOURCES ... [PUBLIC target...] [PRIVATE target...])
# A static library; PUBLIC and PRIVATE are the targets it links.
function(orvane_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC orvane_options ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  # It may become part of the shared library: of that only what is marked can be seen, and nobody replaces it.
  target_compile_options(${name} PRIVATE -fno-semantic-interposition)
  set_target_properties(${name} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# Compiles a test target with GoogleMock and the standard library's headers read beforehand: they are half of what
# compiling a test costs. They are compiled once for all targets.
function(orvane_test_headers name)
  if(NOT ORVANE_PRECOMPILE)
    return()
  endif()
  if(NOT TARGET test_headers)
    file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/test_headers.cpp" CONTENT "")
    add_library(test_headers STATIC "${CMAKE_BINARY_DIR}/test_headers.cpp")
    target_link_libraries(test_headers PRIVATE orvane_options GTest::gmock)
    target_precompile_headers(test_headers PRIVATE
      <gmock/gmock.h> <gtest/gtest.h> <algorithm> <chrono> <filesystem> <fstream> <functional> <map> <memory>
      <optional> <sstream> <string> <string_view> <thread> <variant> <vector>)
  endif()
  target_precompile_headers(${name} REUSE_FROM test_headers)
endfunction()

# orvane_test(NAME SOURCES ... [DEPS target...] [LABELS label...] [FIXTURES fixture...] [TIMEOUT seconds] [IN_MEMORY])
# A GoogleTest program whose cases are registered with CTest one by one.
# IN_MEMORY puts the temporary folders of a test that runs a program hundreds of times where syncing costs nothing.
# The label "quick" marks the everyday tests; "server" marks those that talk to a real server; "soak" those that take
# longer than "make test" allows and are run by "make soak" alone.
function(orvane_test name)
  cmake_parse_arguments(ARG "IN_MEMORY" "TIMEOUT" "SOURCES;DEPS;LABELS;FIXTURES" ${ARGN})
  if(NOT ARG_LABELS)
    set(ARG_LABELS quick)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE orvane_options ${ARG_DEPS} GTest::gmock GTest::gtest_main)
  orvane_test_headers(${name})
  set(properties LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT})
  if(ARG_IN_MEMORY AND IS_DIRECTORY /dev/shm)
    list(APPEND properties ENVIRONMENT TMPDIR=/dev/shm)
  endif()
  if(ARG_FIXTURES)
    # One property with several values: on its way through the discovery the list is unquoted four times.
    list(JOIN ARG_FIXTURES "\\\\\\\\\\\\\\\\;" fixtures)
    list(APPEND properties FIXTURES_REQUIRED "${fixtures}")
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# orvane_soak(NAME PROGRAM program [FILTER filter] [FIXTURES fixture...] [TIMEOUT seconds] [IN_MEMORY])
# The soak test NAME: the test program PROGRAM, or the tests of it that FILTER names, with ORVANE_SOAK=1 in its
# environment. A test that does a sample of its work in "make test" does all of it then, and prints its figures in lines
# that begin with "soak: ".
function(orvane_soak name)
  cmake_parse_arguments(ARG "IN_MEMORY" "PROGRAM;FILTER;TIMEOUT" "FIXTURES" ${ARGN})
  if(NOT ARG_FILTER)
    set(ARG_FILTER "*")
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 7200)
  endif()
  set(environment ORVANE_SOAK=1)
  if(ARG_IN_MEMORY AND IS_DIRECTORY /dev/shm)
    list(APPEND environment TMPDIR=/dev/shm)
  endif()
  add_test(NAME ${name} COMMAND ${ARG_PROGRAM} "--gtest_filter=${ARG_FILTER}")
  set_tests_properties(${name} PROPERTIES LABELS soak TIMEOUT ${ARG_TIMEOUT}
    FIXTURES_REQUIRED "${ARG_FIXTURES}" ENVIRONMENT "${environment}")
endfunction()
