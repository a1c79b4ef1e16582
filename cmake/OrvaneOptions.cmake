# Settings every target shares: language level, warnings, sanitizers.
option(ORVANE_BUILD_TESTS "Build the tests" ON)
option(ORVANE_BUILD_BENCH "Build the benchmarks" OFF)
set(ORVANE_SANITIZE "" CACHE STRING "Sanitizers to compile in, e.g. address,undefined or thread")

# Packages are built with compilers and hardening options that nobody has tried here; off, a new warning stops none of them.
option(ORVANE_WARNINGS_AS_ERRORS "Let a warning fail the build" ON)
option(ORVANE_PRECOMPILE "Precompile the headers that most files include" ON)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

find_program(ORVANE_CCACHE ccache)
if(ORVANE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # ccache does not look at a compilation with a precompiled header unless it is told that dates and unused macros in
  # the header do not matter. What a file depends on it takes from the compiler, and does not preprocess the file before.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_DEPEND=1
    "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime" "${ORVANE_CCACHE}")
  set(CMAKE_C_COMPILER_LAUNCHER "${ORVANE_CCACHE}")
endif()

# Seventy programs of 10 to 80 MB.
find_program(ORVANE_MOLD mold)
add_library(orvane_options INTERFACE)
if(ORVANE_MOLD AND CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_link_options(orvane_options INTERFACE -fuse-ld=mold)
endif()
target_include_directories(orvane_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(orvane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
  -Wconversion -Wsign-conversion $<$<BOOL:${ORVANE_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Optimizing, g++ 12 sees overlaps in string concatenations and unset members of std::variant where there are
  # none (its bugs 105651 and 105562). clang checks for the real ones.
  target_compile_options(orvane_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(ORVANE_SANITIZE)
  target_compile_options(orvane_options INTERFACE
    -fsanitize=${ORVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(orvane_options INTERFACE -fsanitize=${ORVANE_SANITIZE})
endif()
