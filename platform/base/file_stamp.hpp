// What the file system tells of a file without reading it.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <ctime>

namespace base {

// Identity, links, size, and the times of change. A file that was written, cut off, replaced, renamed or
// given other rights bears another stamp; only changes of the same step of the file system's clock share one,
// so a stamp of a file that has not settled says nothing.
class FileStamp {
 public:
  explicit FileStamp(const struct stat& status) : status_(status) {}

  bool operator==(const FileStamp& other) const {
    return status_.st_dev == other.status_.st_dev && status_.st_ino == other.status_.st_ino &&
           status_.st_nlink == other.status_.st_nlink && status_.st_size == other.status_.st_size &&
           Same(status_.st_mtim, other.status_.st_mtim) && Same(status_.st_ctim, other.status_.st_ctim);
  }

  // Whether the file has been left alone for `time`. False for one that was changed in the future: its clock
  // is another one.
  bool HasSettledFor(std::chrono::nanoseconds time) const {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto since = std::chrono::seconds(now.tv_sec - status_.st_ctim.tv_sec) +
                       std::chrono::nanoseconds(now.tv_nsec - status_.st_ctim.tv_nsec);
    return since >= time;
  }

 private:
  static bool Same(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
  }

  struct stat status_;
};

}  // namespace base
