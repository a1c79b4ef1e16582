#include "suite/log/file_log.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "components/interfaces/log.hpp"
#include "platform/automation/iso_text.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/descriptor.hpp"
#include "platform/base/text.hpp"

namespace Vantrel {
namespace {

std::string Printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (base::IsControl(c) && c != '\t') {
      // U+2400 + code, or U+2421 for delete: E2 90 80 + code in UTF-8.
      result += "\xE2\x90";
      result += static_cast<char>(c == '\x7F' ? 0xA1 : 0x80 + c);
    } else {
      result += c;
    }
  }
  return result;
}

// What open() itself says of a pipe that nobody reads, and of a socket.
constexpr int kNeitherFileNorDevice = ENXIO;

// Without O_NONBLOCK, opening a pipe would wait for its reader.
base::Descriptor OpenForAppending(const std::filesystem::path& file) {
  return base::Descriptor(
      open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640));
}

// Appends the line in one piece, so that entries of jobs running side by side do not mix. Returns 0 or errno.
int Append(const std::filesystem::path& file, std::string_view line) {
  base::Descriptor opened = OpenForAppending(file);
  if (!opened.IsOpen() && errno == ENOENT) {
    mkdir(file.parent_path().c_str(), 0750);
    opened = OpenForAppending(file);
  }
  if (!opened.IsOpen()) return errno;
  struct stat status {};
  if (fstat(opened.Get(), &status) != 0 || !(S_ISREG(status.st_mode) || S_ISCHR(status.st_mode))) {
    return kNeitherFileNorDevice;
  }
  const int written = base::WriteAll(opened.Get(), line);
  const int closed = opened.Close();
  return written != 0 ? written : closed;
}

std::string Reason(int failure) {
  return failure == kNeitherFileNorDevice ? "it is neither a file nor a character device"
                                          : std::generic_category().message(failure);
}

class FileLog : public Log {
 public:
  explicit FileLog(std::filesystem::path file) : file_(std::move(file)) {}

  void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                     automation::Variant& result) override {
    const std::string line = LogLine(automation::Now(), code, errorSource, message);
    const int failure = Append(file_, line);
    if (failure != 0) {
      std::fprintf(stderr, "%s: cannot be written: %s; the entry was:\n%s", file_.c_str(),
                   Reason(failure).c_str(), line.c_str());
    }
    result = failure == 0;
  }

 private:
  const std::filesystem::path file_;
};

}  // namespace

std::string LogLine(automation::DateTime time, std::int32_t code, std::string_view errorSource,
                    std::string_view message) {
  return automation::IsoText(time.WithoutFraction()) + " | " + std::to_string(code) + " | " +
         Printable(errorSource) + " | " + Printable(message) + "\n";
}

void RegisterLog(automation::ClassTable& classes, const std::filesystem::path& file) {
  classes.Register(kLogProgId, [file] { return std::make_shared<FileLog>(file); });
}

}  // namespace Vantrel
