#include "suite/outbox/outbox.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <system_error>

#include "platform/automation/error.hpp"
#include "platform/base/descriptor.hpp"
#include "platform/base/file_replacement.hpp"

namespace suite {
namespace {

int OpenForAppending(const std::filesystem::path& file) {
  return open(file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0640);
}

// 0 or errno.
int WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return fdatasync(descriptor) == 0 ? 0 : errno;
}

// Not when a power cut has taken the rest of the last one.
bool EndsALine(int descriptor, off_t size) {
  char last = 0;
  return pread(descriptor, &last, 1, size - 1) == 1 && last == '\n';
}

int Append(const std::filesystem::path& file, std::string_view line) {
  int opened = OpenForAppending(file);
  if (opened < 0 && errno == ENOENT) {
    mkdir(file.parent_path().c_str(), 0777);
    opened = OpenForAppending(file);
  }
  if (opened < 0) return errno;
  const base::Descriptor descriptor(opened);
  struct stat before {};
  if (flock(opened, LOCK_EX) != 0 || fstat(opened, &before) != 0) return errno;
  // A file that holds a line has its name on the disk. One without may be new, and so may its folder.
  if (before.st_size == 0) {
    const std::filesystem::path folder = file.parent_path();
    for (const std::filesystem::path& each : {folder, folder.parent_path()}) {
      if (const int failure = base::SyncFolder(each)) return failure;
    }
  }
  const bool cutOff = before.st_size > 0 && !EndsALine(opened, before.st_size);
  const int failure = WriteAll(opened, cutOff ? "\n" + std::string(line) : std::string(line));
  // Half a line would spoil the one behind it. What the cut itself does is secondary to the failure.
  if (failure != 0 && ftruncate(opened, before.st_size) != 0) return failure;
  return failure;
}

}  // namespace

void AppendToOutbox(const std::filesystem::path& file, std::string_view line, std::string_view errorSource) {
  const int failure = Append(file, line);
  if (failure == 0) return;
  throw automation::Error(static_cast<std::int32_t>(automation::ErrorNumber::PathFileAccess),
                          std::string(errorSource),
                          file.string() + ": " + std::generic_category().message(failure));
}

}  // namespace suite
