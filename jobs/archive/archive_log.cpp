#include "common/error_reporting.hpp"
#include "common/run_log.hpp"
#include "common/text_helpers.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_line.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {

std::string ArchiveLogLine(const std::string& message) {
  const bool hasText = message.find_first_not_of("* ") != std::string::npos;
  if (!hasText) return message;
  return OrvaneUtilities::GetTimestampText() + std::string(archive_log::kSeparator) + message;
}

std::string Archive::logFolder() const {
  return OrvaneUtilities::ReplaceAll(m_sLogRoot + "\\OrvLog", "/", "\\");
}

std::string Archive::logFileName() const {
  return logFolder() + "\\" + std::string(archive_log::kFilePrefix) +
         OrvaneUtilities::RunLogDatePart(automation::Now()) + ".txt";
}

// The writer only appends to a file that is there, so the day's file is made first: at the start of a run,
// and again when midnight passes during one.
void Archive::log(const std::string& message) {
  const std::string fileName = logFileName();
  if (!m_oFileSystem->FolderExists(logFolder())) m_oFileSystem->CreateFolder(logFolder());
  createFileIfMissing(fileName);
  WriteJobLog(fileName, message);
}

void Archive::WriteJobLog(const std::string& fileName, const std::string& message) {
  const Scripting::FilePtr file = m_oFileSystem->GetFile(fileName);
  const Scripting::TextStreamPtr stream = file->OpenAsTextStream(Scripting::IOMode::ForAppending);
  stream->WriteLine(ArchiveLogLine(message));
  stream->Close();
}

// For what is told about one customer: a run log that takes no lines must not keep the others from being
// archived.
void Archive::tryToLog(const std::string& message) {
  try {
    log(message);
  } catch (...) {
    OrvaneUtilities::LogError("OrvaneProcess.Archive.archiveOriginator", message);
  }
}

}  // namespace OrvaneProcess
