#include "suite/log/file_log.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "components/interfaces/log.hpp"
#include "platform/automation/runtime.hpp"

namespace Vantrel {
namespace {

std::string Printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && c != '\t') || byte == 0x7F) {
      // U+2400 + code, or U+2421 for delete: E2 90 80 + code in UTF-8.
      result += "\xE2\x90";
      result += static_cast<char>(byte == 0x7F ? 0xA1 : 0x80 + byte);
    } else {
      result += c;
    }
  }
  return result;
}

// What open() itself says of a pipe that nobody reads, and of a socket.
constexpr int kNeitherFileNorDevice = ENXIO;

// Without O_NONBLOCK, opening a pipe would wait for its reader.
int OpenForAppending(const std::filesystem::path& file) {
  return open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0640);
}

// Appends the line in one piece, so that entries of jobs running side by side do not mix. Returns 0 or errno.
int Append(const std::filesystem::path& file, std::string_view line) {
  int descriptor = OpenForAppending(file);
  if (descriptor < 0 && errno == ENOENT) {
    mkdir(file.parent_path().c_str(), 0750);
    descriptor = OpenForAppending(file);
  }
  if (descriptor < 0) return errno;
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !(S_ISREG(status.st_mode) || S_ISCHR(status.st_mode))) {
    close(descriptor);
    return kNeitherFileNorDevice;
  }

  int failure = 0;
  while (!line.empty() && failure == 0) {
    const ssize_t written = write(descriptor, line.data(), line.size());
    if (written >= 0) {
      line.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      failure = errno;
    }
  }
  if (close(descriptor) != 0 && failure == 0) failure = errno;
  return failure;
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
  const automation::DateTimeParts parts = time.Parts();
  char stamp[64];
  std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d:%02d:%02d | %d | ", parts.year, parts.month,
                parts.day, parts.hour, parts.minute, parts.second, static_cast<int>(code));
  return stamp + Printable(errorSource) + " | " + Printable(message) + "\n";
}

void RegisterLog(automation::ClassTable& classes, const std::filesystem::path& file) {
  classes.Register(kLogProgId, [file] { return std::make_shared<FileLog>(file); });
}

}  // namespace Vantrel
