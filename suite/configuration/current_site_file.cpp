#include "suite/configuration/current_site_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <ctime>
#include <system_error>
#include <utility>

namespace Vantrel {
std::shared_ptr<const SiteFile> CurrentSiteFile::Get() {
  const std::lock_guard lock(mutex_);
  if (!IsUnchanged()) Load();
  return file_;
}

// Jobs ask with every statement, and resolving the path takes longer than fstat on the open file.
bool CurrentSiteFile::IsUnchanged() {
  if (!stamp_) return false;
  struct stat status {};
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  if (!descriptor_.IsOpen() || now.tv_sec != pathSeen_) {
    if (stat(path_.c_str(), &status) != 0) return false;
    pathSeen_ = now.tv_sec;
  } else if (fstat(descriptor_.Get(), &status) != 0) {
    return false;
  }
  return *stamp_ == base::FileStamp(status);
}

void CurrentSiteFile::Load() {
  file_ = nullptr;
  stamp_ = std::nullopt;
  // Before it is read: a change in between is found the next time.
  struct stat status {};
  base::Descriptor descriptor(open(path_.c_str(), O_PATH | O_CLOEXEC));
  const bool seen = descriptor.IsOpen() && fstat(descriptor.Get(), &status) == 0;
  const base::FileStamp stamp(status);
  const bool settled = seen && stamp.HasSettledFor(base::kLocalGranularity);
  file_ = std::make_shared<const SiteFile>(SiteFile::Read(path_));
  if (!settled) return;
  // A link can be changed without a trace at the file.
  std::error_code failed;
  const bool direct = std::filesystem::canonical(path_, failed) == path_;
  descriptor_ = direct ? std::move(descriptor) : base::Descriptor();
  pathSeen_ = 0;
  stamp_ = stamp;
}

}  // namespace Vantrel
