// OrvaneUtilities: failures written to the suite's log component. All of these are called from inside a catch
// clause and speak of the error being handled.
//
// LogError, ReportError and ReportHandledError keep what they promise to their callers even when the log
// component itself fails: the entry then goes to standard error, and the log's own failure is not raised.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/automation/error.hpp"

namespace OrvaneUtilities {

// Writes: source " caught: " description "(" number ")." and, when given, " Additional information: "
// information.
void LogError(std::string_view source, const std::optional<std::string>& information = std::nullopt);

// Writes "METHOD: ", a line break and the text of LogError, and raises the same error again. Outside a catch
// clause there is nothing to report: it raises 51 (Internal error).
[[noreturn]] void ReportError(std::string_view source,
                              const std::optional<std::string>& information = std::nullopt);

// As LogError with one space before the "(": the form of the procedures that report and end quietly.
void ReportHandledError(std::string_view source,
                        const std::optional<std::string>& information = std::nullopt);

// The texts of the reporters: LogError's, and the one with the space.
std::string LogErrorText(std::string_view source, const automation::Error& error,
                         const std::optional<std::string>& information);
std::string HandledErrorText(std::string_view source, const automation::Error& error,
                             const std::optional<std::string>& information);

// The call on Vantrel.Log that every reporter makes: created in the caller's object context where there is
// one, else directly; the error's own source, code 0, result ignored. A failure of the component is raised.
void WriteToLog(const automation::Error& error, std::string_view message);

}  // namespace OrvaneUtilities
