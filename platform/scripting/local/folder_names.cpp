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

template <class Action>
void ForEachName(const std::string& path, const Action& action) {
  const std::unique_ptr<DIR, CloseFolder> listing(opendir(path.empty() ? "." : path.c_str()));
  if (!listing) {
    if (errno == ENOENT || errno == ENOTDIR) return;
    RaiseSystemError(errno, automation::ErrorNumber::PathNotFound);
  }
  while (const dirent* entry = readdir(listing.get())) action(std::string_view(entry->d_name));
}

bool IsPlain(std::string_view name) {
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\\'; });
}

bool EqualButForAsciiCase(std::string_view one, std::string_view other) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [lower](char left, char right) { return lower(left) == lower(right); });
}

// The same as Find, by reading the folder once; `count` is the number of its names.
std::optional<std::string> Search(const std::string& folder, const std::string& name, std::size_t& count) {
  std::optional<std::string> found;
  const bool plain = IsPlain(name);
  const std::string folded = Folded(name);
  ForEachName(folder, [&](std::string_view candidate) {
    ++count;
    const bool equal =
        plain && IsPlain(candidate) ? EqualButForAsciiCase(candidate, name) : Folded(candidate) == folded;
    if (equal && (!found || candidate < *found)) found = candidate;
  });
  return found;
}

}  // namespace

std::optional<FolderNames::Stamp> FolderNames::StampOf(const std::string& folder) {
  struct stat status {};
  if (stat(folder.empty() ? "." : folder.c_str(), &status) != 0) return std::nullopt;
  return Stamp{status.st_dev, status.st_ino, status.st_mtim, status.st_ctim};
}

bool FolderNames::SameItem(const Stamp& one, const Stamp& other) {
  return one.device == other.device && one.inode == other.inode;
}

bool FolderNames::Same(const Stamp& one, const Stamp& other) {
  return SameItem(one, other) && SameMoment(one.modified, other.modified) &&
         SameMoment(one.changed, other.changed);
}

FolderNames::Folder FolderNames::Read(const std::string& path) {
  Folder folder{path, {}, {}, {}};
  ForEachName(path, [&folder](std::string_view name) { folder.names[Folded(name)].emplace_back(name); });
  for (auto& [folded, names] : folder.names) std::sort(names.begin(), names.end());
  return folder;
}

void FolderNames::Forget(std::vector<Folder>::iterator folder) {
  if (folder->watch) watch_.Remove(*folder->watch);
  folders_.erase(folder);
}

void FolderNames::TakeChanges() {
  watch_.TakeChanges([this](int number, FolderWatch::Change change, std::string_view name) {
    if (change == FolderWatch::Change::Lost) {
      std::erase_if(folders_, [number](const Folder& known) {
        return known.watch && (number == -1 || known.watch == number);
      });
      return;
    }
    const auto found = std::find_if(folders_.begin(), folders_.end(),
                                    [number](const Folder& known) { return known.watch == number; });
    if (found == folders_.end()) return;
    // What was read of the folder while it changed already shows some of the changes.
    std::vector<std::string>& names = found->names[Folded(name)];
    const auto place = std::lower_bound(names.begin(), names.end(), name);
    const bool there = place != names.end() && *place == name;
    if (change == FolderWatch::Change::Added && !there) names.emplace(place, name);
    if (change == FolderWatch::Change::Removed && there) names.erase(place);
  });
}

const FolderNames::Folder* FolderNames::Known(const std::string& folder) {
  TakeChanges();
  const auto found = std::find_if(folders_.begin(), folders_.end(),
                                  [&folder](const Folder& known) { return known.path == folder; });
  if (found == folders_.end()) return nullptr;
  // Another folder may have come to the path, by a change further up.
  const std::optional<Stamp> stamp = StampOf(folder);
  if (stamp && (found->watch ? SameItem(*stamp, found->stamp) : Same(*stamp, found->stamp))) return &*found;
  Forget(found);
  return nullptr;
}

std::optional<std::string> FolderNames::Find(const std::string& folder, const std::string& name) {
  if (const Folder* known = Known(folder)) {
    const auto names = known->names.find(Folded(name));
    return names == known->names.end() || names->second.empty() ? std::nullopt
                                                                : std::optional(names->second.front());
  }
  std::size_t count = 0;
  std::optional<std::string> found = Search(folder, name, count);
  if (count >= kWorthKeeping) Keep(folder);
  return found;
}

void FolderNames::Keep(const std::string& folder) {
  const std::optional<Stamp> stamp = StampOf(folder);
  if (!stamp) return;
  // Watched before it is read, so that no change goes unnoticed between the two.
  const std::optional<int> watch = watch_.Add(folder.empty() ? "." : folder);
  if (!watch && !IsSettled(stamp->modified)) return;
  Folder fresh = Read(folder);
  fresh.stamp = *stamp;
  fresh.watch = watch;
  if (folders_.size() == kFoldersKept) Forget(folders_.begin());
  folders_.push_back(std::move(fresh));
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
