// Which names may be acted on below a shared folder.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace OrvCommonMTS {

// The parts of a name, split at "\" and "/".
std::vector<std::string> NameParts(std::string_view name);

// Why a name must not be acted on, or nothing when it may: it needs exactly `parts` parts, none of which is
// empty, made of dots and spaces only (such as ".."), or holds a control character, and it must not begin
// with a drive. A name that passes stays inside its folder on every kind of server and cannot end the line of
// a command.
std::optional<std::string> NameProblem(std::string_view name, std::size_t parts);

// Why a path must not be used, or nothing when it may: it must not hold a control character. Whatever takes
// it as a text with an end of its own would end it at a NUL and act on the folder above.
std::optional<std::string> PathProblem(std::string_view path);

// The same for the path of the shared folders, which must not have a part ".." either: servers and libraries
// do not agree on where that leads.
std::optional<std::string> RootProblem(std::string_view path);

}  // namespace OrvCommonMTS
