#include "platform/scripting/local/folder_names.hpp"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <memory>
#include <utility>

#include "platform/scripting/local/native_name.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/path_text.hpp"

namespace Scripting::local {
namespace {

constexpr std::size_t kWorthKeeping = 256;  // names; a smaller folder is as quickly read again
constexpr std::size_t kFoldersKept = 4;

// A change in the same tick of the disk's clock as the one before leaves no trace in the time stamps, so
// stamps are trusted only when they are older than the longest tick.
constexpr std::int64_t kLongestTick = 20'000'000;  // nanoseconds

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

std::string Folded(std::string_view native) {
  return FoldedName(ShownName(native));
}

std::pair<std::string, std::string> FolderAndName(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {"", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

bool SameMoment(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

bool IsSettled(const timespec& modified) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t age =
      (std::int64_t{now.tv_sec} - modified.tv_sec) * 1'000'000'000 + (now.tv_nsec - modified.tv_nsec);
  return age > kLongestTick;
}

}  // namespace

std::optional<FolderNames::Stamp> FolderNames::StampOf(const std::string& folder) {
  struct stat status {};
  if (stat(folder.empty() ? "." : folder.c_str(), &status) != 0) return std::nullopt;
  return Stamp{status.st_dev, status.st_ino, status.st_mtim, status.st_ctim};
}

bool FolderNames::Same(const Stamp& one, const Stamp& other) {
  return one.device == other.device && one.inode == other.inode && SameMoment(one.modified, other.modified) &&
         SameMoment(one.changed, other.changed);
}

FolderNames::Folder FolderNames::Read(const std::string& path) {
  Folder folder{path, {}, {}};
  const std::unique_ptr<DIR, CloseFolder> listing(opendir(path.empty() ? "." : path.c_str()));
  if (!listing) {
    if (errno == ENOENT || errno == ENOTDIR) return folder;
    RaiseSystemError(errno, automation::ErrorNumber::PathNotFound);
  }
  while (const dirent* entry = readdir(listing.get())) {
    folder.names[Folded(entry->d_name)].emplace_back(entry->d_name);
  }
  for (auto& [folded, names] : folder.names) std::sort(names.begin(), names.end());
  return folder;
}

const FolderNames::Folder* FolderNames::Known(const std::string& folder) {
  const auto found = std::find_if(folders_.begin(), folders_.end(),
                                  [&folder](const Folder& known) { return known.path == folder; });
  if (found == folders_.end()) return nullptr;
  const std::optional<Stamp> stamp = StampOf(folder);
  if (stamp && Same(*stamp, found->stamp)) return &*found;
  folders_.erase(found);
  return nullptr;
}

std::optional<std::string> FolderNames::Find(const std::string& folder, const std::string& name) {
  const auto in = [&name](const Folder& known) -> std::optional<std::string> {
    const auto names = known.names.find(Folded(name));
    return names == known.names.end() || names->second.empty() ? std::nullopt
                                                               : std::optional(names->second.front());
  };
  if (const Folder* known = Known(folder)) return in(*known);

  const std::optional<Stamp> stamp = StampOf(folder);
  Folder fresh = Read(folder);
  std::optional<std::string> found = in(fresh);
  if (stamp && fresh.names.size() >= kWorthKeeping && IsSettled(stamp->modified)) {
    fresh.stamp = *stamp;
    if (folders_.size() == kFoldersKept) folders_.erase(folders_.begin());
    folders_.push_back(std::move(fresh));
  }
  return found;
}

std::optional<std::size_t> FolderNames::BeforeRemoval(const std::string& path) {
  if (folders_.empty()) return std::nullopt;
  const Folder* known = Known(FolderAndName(path).first);
  if (known == nullptr) return std::nullopt;
  return static_cast<std::size_t>(known - folders_.data());
}

void FolderNames::AfterRemoval(const std::string& path, std::size_t known) {
  const auto [parent, name] = FolderAndName(path);
  Folder& folder = folders_[known];
  const std::optional<Stamp> stamp = StampOf(parent);
  const auto names = folder.names.find(Folded(name));
  if (!stamp || names == folder.names.end()) {
    folders_.erase(folders_.begin() + static_cast<std::ptrdiff_t>(known));
    return;
  }
  folder.stamp = *stamp;
  std::erase(names->second, name);
}

}  // namespace Scripting::local
