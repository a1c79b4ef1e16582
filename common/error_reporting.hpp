// OrvaneUtilities: failures written to the suite's log component. Both are called from inside a catch clause
// and speak of the error being handled.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/automation/error.hpp"

namespace OrvaneUtilities {

// Writes: source " caught: " description "(" number ")." and, when given, " Additional information: "
// information. Returns; a failure of the log component itself is raised.
void LogError(std::string_view source, const std::optional<std::string>& information = std::nullopt);

// Writes "METHOD: " source, a line break and the same pieces, and raises the same error again.
[[noreturn]] void ReportError(std::string_view source,
                              const std::optional<std::string>& information = std::nullopt);

// The call on Vantrel.Log that every reporter makes: created in the caller's object context where there is
// one, else directly; code 0, result ignored.
void WriteToLog(const automation::Error& error, std::string_view message);

}  // namespace OrvaneUtilities
