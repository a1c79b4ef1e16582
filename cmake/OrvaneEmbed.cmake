# orvane_embed(TARGET NAMESPACE FILES file...)
# Compiles text files of the source tree into TARGET, which then defines
#   std::string_view EmbeddedFile(std::string_view name);
# in NAMESPACE: the content of the file with that name, relative to the project's root, or an empty view. A changed
# file is picked up by the next build.
function(orvane_embed target namespace)
  cmake_parse_arguments(ARG "" "" "FILES" ${ARGN})
  set(entries "")
  foreach(file IN LISTS ARG_FILES)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${file}")
    file(READ "${PROJECT_SOURCE_DIR}/${file}" content)
    string(APPEND entries "  if (name == \"${file}\") {\n    return R\"ORVANE(${content})ORVANE\";\n  }\n")
  endforeach()
  string(CONCAT text
    "// Made by CMake from files of the source tree.\n#include <string_view>\n\nnamespace ${namespace} {\n\n"
    "std::string_view EmbeddedFile(std::string_view name);\n\n"
    "std::string_view EmbeddedFile(std::string_view name) {\n${entries}  return {};\n}\n\n"
    "}  // namespace ${namespace}\n")

  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_embedded.cpp")
  set(previous "")
  if(EXISTS "${source}")
    file(READ "${source}" previous)
  endif()
  if(NOT previous STREQUAL text)
    file(WRITE "${source}" "${text}")
  endif()
  target_sources(${target} PRIVATE "${source}")
endfunction()
