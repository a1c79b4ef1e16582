#include "common/run_log.hpp"

#include "platform/automation/error.hpp"

namespace OrvaneUtilities {

std::string_view RunLogRuler() {
  return "*****************************************************";
}

std::string RunLogDatePart(automation::DateTime date) {
  const automation::DateTimeParts parts = date.Parts();
  return std::to_string(parts.year) + "_" + std::to_string(parts.month) + "_" + std::to_string(parts.day);
}

void MakeRunLogFolder(Scripting::FileSystemObject& files, const std::string& folder) {
  if (files.FolderExists(folder)) return;
  try {
    files.CreateFolder(folder);
  } catch (const automation::Error&) {
    // Another job may have made it since it was looked for.
    if (!files.FolderExists(folder)) throw;
  }
}

}  // namespace OrvaneUtilities
