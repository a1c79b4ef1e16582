// "Vantrel.Log" as a plain text file.
//
// One entry is one line:
//
//   2004-07-26 09:05:03 | 0 | ADODB.Recordset | OrvaneUtilities.GetParameterValues caught: ...
//
// (local time, code, the component that raised the error, the message), in UTF-8, ended by a line feed. A
// control character inside a text, a line break above all, is shown by its Unicode picture (U+240D U+240A for
// CR LF), so that a text from outside can neither start an entry of its own nor command a terminal.
// Everything else is written as it is.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/automation/class_table.hpp"
#include "platform/automation/date_time.hpp"

namespace Vantrel {

// Registers the component; entries are appended to `file`, whose folder is made when it is missing (one
// level). An entry that cannot be written goes to standard error with the reason, and nothing is raised: the
// caller is in the middle of reporting a failure, and its job has work left that does not need this file.
void RegisterLog(automation::ClassTable& classes, const std::filesystem::path& file);

// The line of an entry, line feed included.
std::string LogLine(automation::DateTime time, std::int32_t code, std::string_view errorSource,
                    std::string_view message);

}  // namespace Vantrel
