#include "suite/outbox/outbox.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>

#include "platform/automation/error.hpp"
#include "platform/base/descriptor.hpp"
#include "platform/base/file_replacement.hpp"

namespace suite {
namespace {

int OpenForAppending(const std::filesystem::path& file) {
  return open(file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0640);
}

// 0 or errno.
int WriteDurably(int descriptor, std::string_view text) {
  if (const int failure = base::WriteAll(descriptor, text)) return failure;
  return fdatasync(descriptor) == 0 ? 0 : errno;
}

// Not when a power cut has taken the rest of the last one.
bool EndsALine(int descriptor, off_t size) {
  char last = 0;
  return pread(descriptor, &last, 1, size - 1) == 1 && last == '\n';
}

// 0, errno, or EWOULDBLOCK when another program has kept the lock for all of `patience`.
int Lock(int descriptor, std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds kNap{20};
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return errno;
    if (std::chrono::steady_clock::now() >= deadline) return EWOULDBLOCK;
    std::this_thread::sleep_for(kNap);
  }
  return 0;
}

int Append(const std::filesystem::path& file, std::string_view line, std::chrono::milliseconds patience) {
  int opened = OpenForAppending(file);
  if (opened < 0 && errno == ENOENT) {
    mkdir(file.parent_path().c_str(), 0750);
    opened = OpenForAppending(file);
  }
  if (opened < 0) return errno;
  const base::Descriptor descriptor(opened);
  if (const int failure = Lock(opened, patience)) return failure;
  struct stat before {};
  if (fstat(opened, &before) != 0) return errno;
  // A file that holds a line has its name on the disk. One without may be new, and so may its folder.
  if (before.st_size == 0) {
    const std::filesystem::path folder = file.parent_path();
    for (const std::filesystem::path& each : {folder, folder.parent_path()}) {
      // A folder that may not be listed cannot be synced; the line is written all the same.
      if (const int failure = base::SyncFolder(each); failure != 0 && failure != EACCES) return failure;
    }
  }
  const bool cutOff = before.st_size > 0 && !EndsALine(opened, before.st_size);
  const int failure = WriteDurably(opened, cutOff ? "\n" + std::string(line) : std::string(line));
  // Half a line would spoil the one behind it. What the cut itself does is secondary to the failure.
  if (failure != 0 && ftruncate(opened, before.st_size) != 0) return failure;
  return failure;
}

}  // namespace

void AppendToOutbox(const std::filesystem::path& file, std::string_view line, std::string_view errorSource,
                    std::chrono::milliseconds patience) {
  const int failure = Append(file, line, patience);
  if (failure == 0) return;
  const std::string reason =
      failure == EWOULDBLOCK ? "another program keeps it locked" : std::generic_category().message(failure);
  throw automation::Error(automation::ErrorNumber::PathFileAccess, std::string(errorSource),
                          file.string() + ": " + reason);
}

}  // namespace suite
