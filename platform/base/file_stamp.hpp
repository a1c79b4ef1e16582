// What the file system knows of a file, without its content.
#pragma once

#include <sys/stat.h>

#include <chrono>

namespace base {

// Identity, links, size, and the times of change, of a file or a folder. A file that was written, cut off,
// replaced, renamed or given other rights has another stamp, and so has a folder in which a name came or
// went. Only changes within one step of the file system's clock share a stamp, so a stamp of a file that has
// not settled proves nothing.
class FileStamp {
 public:
  explicit FileStamp(const struct stat& status) : status_(status) {}

  bool operator==(const FileStamp& other) const {
    return IsSameFile(other) && status_.st_nlink == other.status_.st_nlink &&
           status_.st_size == other.status_.st_size && Time(status_.st_mtim) == Time(other.status_.st_mtim) &&
           Time(status_.st_ctim) == Time(other.status_.st_ctim);
  }

  bool IsSameFile(const FileStamp& other) const {
    return status_.st_dev == other.status_.st_dev && status_.st_ino == other.status_.st_ino;
  }

  // Whether the file has been left alone for `time` before `now`. False for one that was changed after `now`:
  // its clock is another one.
  bool HasSettledFor(std::chrono::nanoseconds time,
                     std::chrono::system_clock::time_point now = std::chrono::system_clock::now()) const {
    return now.time_since_epoch() - Time(status_.st_ctim) >= time;
  }

 private:
  static std::chrono::nanoseconds Time(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }

  struct stat status_;
};

// Longer than the granularity of time stamps: milliseconds on local disks, up to two seconds on shares.
inline constexpr std::chrono::milliseconds kLocalGranularity{20};
inline constexpr std::chrono::seconds kAnyGranularity{3};

}  // namespace base
