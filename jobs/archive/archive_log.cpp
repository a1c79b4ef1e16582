#include "common/run_log.hpp"
#include "common/text_helpers.hpp"
#include "jobs/archive/archive.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

// Whether anything but asterisks and blanks is in the message: such a message carries a timestamp, a ruler
// does not.
bool HasText(const std::string& message) {
  return message.find_first_not_of("* ") != std::string::npos;
}

}  // namespace

std::string Archive::logFolder() const {
  return OrvaneUtilities::ReplaceAll(m_sLogRoot + "\\OrvLog", "/", "\\");
}

std::string Archive::logFileName() const {
  return logFolder() + "\\OrvArchiveSvc_log_" + OrvaneUtilities::RunLogDatePart(automation::Now()) + ".txt";
}

// The writer only appends to a file that is there, so the day's file is made first: at the start of a run,
// and again when midnight passes during one.
void Archive::log(const std::string& message) {
  if (!m_oFileSystem->FolderExists(logFolder())) m_oFileSystem->CreateFolder(logFolder());
  createFileIfMissing(logFileName());
  WriteJobLog(message);
}

void Archive::WriteJobLog(const std::string& message) {
  const Scripting::FilePtr file = m_oFileSystem->GetFile(logFileName());
  const Scripting::TextStreamPtr stream = file->OpenAsTextStream(Scripting::IOMode::ForAppending);
  stream->WriteLine(HasText(message) ? OrvaneUtilities::GetTimestampText() + "  : " + message : message);
  stream->Close();
}

}  // namespace OrvaneProcess
