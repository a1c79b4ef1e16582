#include "platform/scripting/local/folder_names.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/base/open_folder.hpp"
#include "platform/base/text.hpp"
#include "platform/scripting/local/native_name.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/path_text.hpp"

namespace Scripting::local {
namespace {

constexpr std::size_t kWorthKeeping = 256;  // names; a smaller folder is as quickly read again
constexpr std::size_t kFoldersKept = 4;

std::string Folded(std::string_view native) {
  return FoldedName(ShownName(native));
}

std::pair<std::string, std::string> FolderAndName(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {"", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

std::optional<base::FileStamp> StampOf(const std::string& folder) {
  struct stat status {};
  if (stat(folder.empty() ? "." : folder.c_str(), &status) != 0) return std::nullopt;
  return base::FileStamp(status);
}

template <class Action>
void ForEachName(const std::string& path, const Action& action) {
  const base::OpenFolder listing(opendir(path.empty() ? "." : path.c_str()));
  if (!listing) {
    if (errno == ENOENT || errno == ENOTDIR) return;
    RaiseSystemError(errno, automation::ErrorNumber::PathNotFound);
  }
  base::ForEachEntry(listing, [&](const dirent& entry) { action(std::string_view(entry.d_name)); });
}

bool IsPlain(std::string_view name) {
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\\'; });
}

// The same as Find, by reading the folder once; `count` is the number of its names.
std::optional<std::string> Search(const std::string& folder, const std::string& name,
                                  const FolderNames::Counts& counts, std::size_t& count) {
  std::optional<std::string> found;
  const bool plain = IsPlain(name);
  const std::string folded = Folded(name);
  ForEachName(folder, [&](std::string_view candidate) {
    ++count;
    const bool equal = plain && IsPlain(candidate) ? base::EqualsIgnoringAsciiCase(candidate, name)
                                                   : Folded(candidate) == folded;
    if (equal && (!found || candidate < *found) && (!counts || counts(candidate))) found = candidate;
  });
  return found;
}

}  // namespace

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
  const std::optional<base::FileStamp> stamp = StampOf(folder);
  if (stamp && (found->watch ? stamp->IsSameFile(found->stamp) : *stamp == found->stamp)) return &*found;
  Forget(found);
  return nullptr;
}

std::optional<std::string> FolderNames::Find(const std::string& folder, const std::string& name,
                                             const Counts& counts) {
  if (const Folder* known = Known(folder)) {
    const auto names = known->names.find(Folded(name));
    if (names == known->names.end()) return std::nullopt;
    const auto first = std::find_if(names->second.begin(), names->second.end(),
                                    [&counts](const std::string& each) { return !counts || counts(each); });
    return first == names->second.end() ? std::nullopt : std::optional(*first);
  }
  std::size_t count = 0;
  std::optional<std::string> found = Search(folder, name, counts, count);
  if (count >= kWorthKeeping) Keep(folder);
  return found;
}

void FolderNames::Keep(const std::string& folder) {
  const std::optional<base::FileStamp> stamp = StampOf(folder);
  if (!stamp) return;
  // Watched before it is read, so that no change goes unnoticed between the two.
  const std::optional<int> watch = watch_.Add(folder.empty() ? "." : folder);
  if (!watch && !stamp->HasSettledFor(base::kLocalGranularity)) return;
  Folder fresh{folder, *stamp, watch, {}};
  ForEachName(folder, [&fresh](std::string_view name) { fresh.names[Folded(name)].emplace_back(name); });
  for (auto& [folded, names] : fresh.names) std::sort(names.begin(), names.end());
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
  const std::optional<base::FileStamp> stamp = StampOf(parent);
  const auto names = folder.names.find(Folded(name));
  if (!stamp || names == folder.names.end()) {
    folders_.erase(folders_.begin() + static_cast<std::ptrdiff_t>(known));
    return;
  }
  folder.stamp = *stamp;
  std::erase(names->second, name);
}

}  // namespace Scripting::local
