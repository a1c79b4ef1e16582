# One function per kind of target, so that every room is declared the same way.

# orvane_library(NAME SOURCES ... [PUBLIC target...] [PRIVATE target...])
# A static library; PUBLIC and PRIVATE are the targets it links.
function(orvane_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC orvane_options ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  orvane_product_options(${name})
  orvane_precompile(${name} standard_headers)
endfunction()

# What a room compiles may become part of the shared library: of that only what is marked can be seen, and nobody replaces it.
# A debug build of it is optimized as far as a debugger can follow: compiling takes no longer, tests a fraction of the time.
function(orvane_product_options name)
  target_compile_options(${name} PRIVATE -fno-semantic-interposition $<$<CONFIG:Debug>:-Og>)
  set_target_properties(${name} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# Compiles a target with headers that are read beforehand, and for all targets once: they are half of what compiling costs.
# Not where ORVANE_PRECOMPILE is off, which shows what a file forgets to include, and not for releases: g++ does not know any
# more then which code is the standard library's, and warns of it.
# The product's files take the standard library's headers, those of tests GoogleMock as well.
function(orvane_precompile name headers)
  if(TARGET ${headers})
    target_precompile_headers(${name} REUSE_FROM ${headers})
  endif()
endfunction()

# Of a test a debugger shows calls and lines; the rest takes a fifth of the time to compile.
function(orvane_test_options name)
  target_compile_options(${name} PRIVATE $<$<CONFIG:Debug>:-g1>)
endfunction()

set(ORVANE_STANDARD_HEADERS
  <algorithm> <array> <charconv> <chrono> <cstdint> <filesystem> <functional> <map> <memory> <mutex> <optional> <set> <span>
  <sstream> <string> <string_view> <system_error> <utility> <variant> <vector>)

file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/precompiled.cpp" CONTENT "")
if(ORVANE_PRECOMPILE AND CMAKE_BUILD_TYPE STREQUAL "Debug")
  # Some files of a target are compiled as one: their headers are read, and the templates that they share compiled, once. Of a
  # member whose type is another file's own g++ warns there as if that file were a header.
  set(CMAKE_UNITY_BUILD ON)
  set(CMAKE_UNITY_BUILD_BATCH_SIZE 6)
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
  add_library(standard_headers STATIC "${CMAKE_BINARY_DIR}/precompiled.cpp")
  target_link_libraries(standard_headers PRIVATE orvane_options)
  orvane_product_options(standard_headers)
  target_precompile_headers(standard_headers PRIVATE ${ORVANE_STANDARD_HEADERS})
endif()

# Where syncing costs nothing, if there is room for what tests leave side by side: in a container there may be hardly any.
set(ORVANE_MEMORY_FOLDER "")
if(IS_DIRECTORY /dev/shm)
  execute_process(COMMAND df --output=avail /dev/shm OUTPUT_VARIABLE room ERROR_QUIET)
  string(REGEX MATCH "[0-9]+" room "${room}")
  if(room AND room GREATER 2000000)
    set(ORVANE_MEMORY_FOLDER /dev/shm)
  endif()
endif()

# orvane_test_library(NAME SOURCES ... [OBJECT] [PUBLIC target...] [PRIVATE target...])
# What several test programs share, compiled once: a static library, or with OBJECT one that is linked whole.
function(orvane_test_library name)
  cmake_parse_arguments(ARG "OBJECT" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  set(kind STATIC)
  if(ARG_OBJECT)
    set(kind OBJECT)
  endif()
  add_library(${name} ${kind} ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC orvane_options ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} GTest::gmock)
  orvane_test_options(${name})
  orvane_precompile(${name} test_headers)
endfunction()

# orvane_test_suites(PREFIX PROGRAM program [FILTER filter] LABELS label... [TIMEOUT seconds] [FIXTURES fixture...]
#                    [ENVIRONMENT name=value...] [COST number])
# Registers each suite of a GoogleTest program with CTest as PREFIX.Suite, once CTest looks. Its cases are run by one
# process: what the first of them makes for all, a demo suite or a database, is made once. FILTER begins with "-" and says
# what is left out. Tests with a higher COST begin earlier: 10 where servers are asked, 100 where servers are waited for.
function(orvane_test_suites prefix)
  cmake_parse_arguments(ARG "" "PROGRAM;FILTER;TIMEOUT;COST" "LABELS;FIXTURES;ENVIRONMENT" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 3600)
  endif()
  if(NOT ARG_COST)
    set(ARG_COST 0)
    if(server IN_LIST ARG_LABELS)
      set(ARG_COST 10)
    endif()
  endif()
  set(base "${CMAKE_CURRENT_BINARY_DIR}/${prefix}")
  file(GENERATE OUTPUT "${base}.suites.cmake" CONTENT
"include(\"${PROJECT_SOURCE_DIR}/cmake/OrvaneTestSuites.cmake\")
orvane_register_suites(PREFIX \"${prefix}\" PROGRAM \"$<TARGET_FILE:${ARG_PROGRAM}>\" LISTING \"${base}.cases.txt\"
  FILTER \"${ARG_FILTER}\" TIMEOUT ${ARG_TIMEOUT} COST ${ARG_COST} LABELS ${ARG_LABELS} FIXTURES ${ARG_FIXTURES}
  ENVIRONMENT ${ARG_ENVIRONMENT})
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${base}.suites.cmake")
endfunction()

# orvane_test(NAME SOURCES ... [DEPS target...] [LABELS label...] [FIXTURES fixture...] [TIMEOUT seconds] [COST number]
#             [IN_MEMORY])
# A GoogleTest program whose suites are registered with CTest.
# IN_MEMORY puts the temporary folders of a test that runs a program hundreds of times where syncing costs nothing.
# The label "quick" marks the everyday tests; "server" marks those that talk to a real server; "soak" those that take
# longer than "make test" allows and are run by "make soak" alone.
function(orvane_test name)
  cmake_parse_arguments(ARG "IN_MEMORY" "TIMEOUT;COST" "SOURCES;DEPS;LABELS;FIXTURES" ${ARGN})
  if(NOT ARG_LABELS)
    set(ARG_LABELS quick)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE orvane_options ${ARG_DEPS} GTest::gmock GTest::gtest_main)
  orvane_test_options(${name})
  orvane_precompile(${name} test_headers)
  set(environment "")
  if(ARG_IN_MEMORY AND ORVANE_MEMORY_FOLDER)
    set(environment TMPDIR=${ORVANE_MEMORY_FOLDER})
  endif()
  orvane_test_suites(${name} PROGRAM ${name} TIMEOUT ${ARG_TIMEOUT} COST ${ARG_COST}
    LABELS ${ARG_LABELS} FIXTURES ${ARG_FIXTURES} ENVIRONMENT ${environment})
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
  if(ARG_IN_MEMORY AND ORVANE_MEMORY_FOLDER)
    list(APPEND environment TMPDIR=${ORVANE_MEMORY_FOLDER})
  endif()
  add_test(NAME ${name} COMMAND ${ARG_PROGRAM} "--gtest_filter=${ARG_FILTER}")
  set_tests_properties(${name} PROPERTIES LABELS soak TIMEOUT ${ARG_TIMEOUT}
    FIXTURES_REQUIRED "${ARG_FIXTURES}" ENVIRONMENT "${environment}")
endfunction()
