#include "suite/configuration/current_site_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <system_error>
#include <utility>

namespace Vantrel {
namespace {

// File systems note the time of a change in steps of some milliseconds.
constexpr std::int64_t kStepNanoseconds = 20'000'000;

timespec TimeOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return time;
}

auto StampOf(const struct stat& status) {
  return std::tuple(status.st_dev, status.st_ino, status.st_nlink, status.st_size, status.st_mtim.tv_sec,
                    status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
}

bool ChangedLately(const struct stat& status) {
  const timespec now = TimeOf(CLOCK_REALTIME);
  const std::int64_t age = (std::int64_t{now.tv_sec} - status.st_ctim.tv_sec) * 1'000'000'000 + now.tv_nsec -
                           status.st_ctim.tv_nsec;
  return age < kStepNanoseconds;
}

}  // namespace

std::shared_ptr<const SiteFile> CurrentSiteFile::Get() {
  const std::lock_guard lock(mutex_);
  if (!IsUnchanged()) Load();
  return file_;
}

// Jobs ask with every statement, and walking the path takes longer than looking at the file that it led to.
bool CurrentSiteFile::IsUnchanged() {
  if (!stamp_) return false;
  struct stat status {};
  const std::time_t second = TimeOf(CLOCK_MONOTONIC_COARSE).tv_sec;
  if (!descriptor_.IsOpen() || second != pathSeen_) {
    if (stat(path_.c_str(), &status) != 0) return false;
    pathSeen_ = second;
  } else if (fstat(descriptor_.Get(), &status) != 0) {
    return false;
  }
  return *stamp_ == StampOf(status);
}

void CurrentSiteFile::Load() {
  file_ = nullptr;
  stamp_ = std::nullopt;
  // Looked at before it is read: a change in between is found the next time.
  struct stat status {};
  suite::Descriptor descriptor(open(path_.c_str(), O_PATH | O_CLOEXEC));
  const bool seen = descriptor.IsOpen() && fstat(descriptor.Get(), &status) == 0;
  file_ = std::make_shared<const SiteFile>(SiteFile::Read(path_));
  if (!seen || ChangedLately(status)) return;
  // A link can be made to lead elsewhere without a trace at the file.
  std::error_code failed;
  const bool direct = std::filesystem::canonical(path_, failed) == path_;
  descriptor_ = direct ? std::move(descriptor) : suite::Descriptor();
  pathSeen_ = 0;
  stamp_ = StampOf(status);
}

}  // namespace Vantrel
