#include "common/error_reporting.hpp"

#include <cstdio>

#include "common/object_creation.hpp"
#include "components/interfaces/log.hpp"

namespace OrvaneUtilities {
namespace {

std::string ErrorText(std::string_view source, const automation::Error& error, std::string_view beforeNumber,
                      const std::optional<std::string>& information) {
  std::string text(source);
  text += " caught: ";
  text += error.Description();
  text += beforeNumber;
  text += std::to_string(error.Number());
  text += ").";
  if (information) text += " Additional information: " + *information;
  return text;
}

// An entry must not vanish without a trace, and the reporters' callers count on coming back with their own
// error.
void WriteToLogOrStandardError(const automation::Error& error, const std::string& message) {
  try {
    WriteToLog(error, message);
  } catch (...) {
    const std::string why = automation::PendingError().Description();
    std::fprintf(stderr, "%s\n(not written to %s: %s)\n", message.c_str(),
                 std::string(Vantrel::kLogProgId).c_str(), why.c_str());
  }
}

}  // namespace

std::string LogErrorText(std::string_view source, const automation::Error& error,
                         const std::optional<std::string>& information) {
  return ErrorText(source, error, "(", information);
}

std::string HandledErrorText(std::string_view source, const automation::Error& error,
                             const std::optional<std::string>& information) {
  return ErrorText(source, error, " (", information);
}

void WriteToLog(const automation::Error& error, std::string_view message) {
  automation::Variant ignored;
  CreateInCallersContext<Vantrel::Log>(Vantrel::kLogProgId)
      ->WriteLogEntry(error.Source(), message, 0, ignored);
}

void LogError(std::string_view source, const std::optional<std::string>& information) {
  const automation::Error error = automation::PendingError();
  WriteToLogOrStandardError(error, LogErrorText(source, error, information));
}

void ReportHandledError(std::string_view source, const std::optional<std::string>& information) {
  const automation::Error error = automation::PendingError();
  WriteToLogOrStandardError(error, HandledErrorText(source, error, information));
}

void ReportError(std::string_view source, const std::optional<std::string>& information) {
  if (!std::current_exception()) throw automation::Error(automation::ErrorNumber::InternalError);
  const automation::Error error = automation::PendingError();
  WriteToLogOrStandardError(error, "METHOD: \r\n" + LogErrorText(source, error, information));
  throw;
}

}  // namespace OrvaneUtilities
