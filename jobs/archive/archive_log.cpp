#include "common/error_reporting.hpp"
#include "common/run_log.hpp"
#include "common/text_helpers.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_line.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

// A message is one line, whatever the address or the path in it holds: with a line break it would write
// lines of its own, which operators and the host take for the job's. U+0080 to U+009F are two bytes of UTF-8.
std::string OnOneLine(std::string_view message) {
  std::string line;
  for (std::size_t at = 0; at < message.size(); ++at) {
    const auto byte = static_cast<unsigned char>(message[at]);
    const auto next = static_cast<unsigned char>(at + 1 < message.size() ? message[at + 1] : 0);
    const bool twoBytes = byte == 0xC2 && next >= 0x80 && next < 0xA0;
    const bool control = byte < 0x20 || byte == 0x7F || twoBytes;
    line += control ? '?' : message[at];
    if (twoBytes) ++at;
  }
  return line;
}

// Two runs that begin at the same moment make the same folder and file: the other one's will do.
template <class Make>
void UnlessItIsThere(Make make) {
  try {
    make();
  } catch (const automation::Error& error) {
    if (error.Number() != static_cast<std::int32_t>(automation::ErrorNumber::FileAlreadyExists)) throw;
  }
}

}  // namespace

std::string ArchiveLogLine(const std::string& message) {
  const bool hasText = message.find_first_not_of("* ") != std::string::npos;
  if (!hasText) return message;
  return OrvaneUtilities::GetTimestampText() + std::string(archive_log::kSeparator) + OnOneLine(message);
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
  if (!m_oFileSystem->FolderExists(logFolder())) {
    UnlessItIsThere([this] { m_oFileSystem->CreateFolder(logFolder()); });
  }
  UnlessItIsThere([&] { createFileIfMissing(fileName); });
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
    OrvaneUtilities::LogError(kArchiveOriginatorSource, message);
  }
}

}  // namespace OrvaneProcess
