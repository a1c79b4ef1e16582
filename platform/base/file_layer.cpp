#include "platform/base/file_layer.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/base/descriptor.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/base/text.hpp"

namespace base {
namespace {

std::string Joined(const std::string& folder, std::string_view name) {
  std::string path = folder;
  if (path.empty() || path.back() != '/') path += '/';
  return path.append(name);
}

// The folder of a path, and the name in it.
std::pair<std::string, std::string> Split(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {".", std::string(path)};
  return {std::string(path.substr(0, std::max<std::size_t>(slash, 1))), std::string(path.substr(slash + 1))};
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

unsigned char TypeOf(mode_t mode) {
  return static_cast<unsigned char>(IFTODT(mode));
}

}  // namespace

std::string FileLayer::Place::Path() const {
  return Joined(folder, name);
}

FileLayer::FileLayer(const std::string& folder, std::function<void(int error)> onFull)
    : contents_(folder, std::move(onFull)) {}

// A folder that only the layer has lies below one that the tree has.
std::string FileLayer::RealFolder(const std::string& folder) const {
  if (!askedFolder_.empty() && folder == askedFolder_) return realFolder_;
  std::error_code missing;
  std::string real = std::filesystem::canonical(folder.empty() ? "." : folder, missing);
  if (missing) {
    const auto [parent, name] = Split(folder);
    real = Joined(RealFolder(parent), name);
  }
  askedFolder_ = folder;
  realFolder_ = real;
  return real;
}

FileLayer::Place FileLayer::PlaceOf(const std::string& path) const {
  std::string_view given = path;
  while (given.size() > 1 && given.back() == '/') given.remove_suffix(1);
  const auto [folder, name] = Split(given);
  if (!name.empty() && name != "." && name != "..") return {RealFolder(folder), name};
  const auto [real, last] = Split(RealFolder(std::string(given)));
  return {real, last};
}

const FileLayer::Item* FileLayer::Find(const Place& place) const {
  const auto folder = folders_.find(place.folder);
  if (folder == folders_.end()) return nullptr;
  const auto item = folder->second.items.find(place.name);
  return item == folder->second.items.end() ? nullptr : &item->second;
}

bool FileLayer::IsHidden(const std::string& folder, std::string_view name) const {
  const auto known = folders_.find(folder);
  if (known != folders_.end() && known->second.hidden.count(std::string(name)) > 0) return true;
  return hiddenFolders_ > 0 && !ShowsBelow(folder);
}

// Whether the folder is still the one of the tree below: neither it nor one that holds it was removed.
bool FileLayer::ShowsBelow(const std::string& folder) const {
  if (hiddenFolders_ == 0 || folder.size() <= 1) return true;
  const auto [parent, name] = Split(folder);
  return !IsHidden(parent, name);
}

bool FileLayer::Hides(const std::string& folder, std::string_view name) const {
  return IsHidden(RealFolder(folder), name);
}

bool FileLayer::ByFoldedName::operator()(std::string_view left, std::string_view right) const {
  const LessIgnoringAsciiCase less;
  return less(left, right) || (!less(right, left) && left < right);
}

std::vector<std::string> FileLayer::OwnNamesLike(const std::string& folder, std::string_view name) const {
  std::vector<std::string> names;
  const auto known = folders_.find(RealFolder(folder));
  if (known == folders_.end()) return names;
  const auto& items = known->second.items;
  if (!IsAscii(name)) {
    for (const auto& [own, item] : items) names.push_back(own);
    return names;
  }
  for (auto item = items.lower_bound(ToAsciiUpper(name));
       item != items.end() && EqualsIgnoringAsciiCase(item->first, name); ++item) {
    names.push_back(item->first);
  }
  names.insert(names.end(), known->second.foreign.begin(), known->second.foreign.end());
  return names;
}

void FileLayer::StatusOf(const Item& item, struct stat& status) const {
  status = {};
  status.st_mode = item.mode | (item.isFolder ? S_IFDIR : S_IFREG);
  status.st_nlink = 1;
  status.st_ino = item.number;
  status.st_uid = geteuid();
  status.st_gid = getegid();
  status.st_size = static_cast<off_t>(ScratchFile::SizeOf(item.content));
  status.st_atim = status.st_mtim = status.st_ctim = item.changed;
}

int FileLayer::Look(const Place& place, struct stat& status) const {
  if (const Item* item = Find(place)) {
    StatusOf(*item, status);
    return 0;
  }
  if (IsHidden(place.folder, place.name)) return ENOENT;
  return lstat(place.Path().c_str(), &status) == 0 ? 0 : errno;
}

int FileLayer::Lstat(const std::string& path, struct stat& status) const {
  return Look(PlaceOf(path), status);
}

int FileLayer::FollowLinks(Place& place, struct stat& status) const {
  for (int links = 0; links <= kMostLinks; ++links) {
    if (const int failure = Look(place, status)) return failure;
    if (!S_ISLNK(status.st_mode)) return 0;
    std::error_code failure;
    const std::string target = std::filesystem::read_symlink(place.Path(), failure);
    if (failure) return failure.value();
    place = PlaceOf(target.front() == '/' ? target : Joined(place.folder, target));
  }
  return ELOOP;
}

int FileLayer::Stat(const std::string& path, struct stat& status) const {
  Place place = PlaceOf(path);
  return FollowLinks(place, status);
}

int FileLayer::List(const std::string& folder, std::vector<Child>& children) const {
  children.clear();
  Place place = PlaceOf(folder);
  struct stat status {};
  if (const int failure = FollowLinks(place, status)) return failure;
  if (!S_ISDIR(status.st_mode)) return ENOTDIR;
  const std::string real = place.Path();
  const auto known = folders_.find(real);
  if (Find(place) == nullptr) {
    if (const int failure = ListFolder(real, children)) return failure;
    if (known == folders_.end()) return 0;
    std::erase_if(children, [&](const Child& child) {
      return known->second.hidden.contains(child.name) || known->second.items.contains(child.name);
    });
  }
  if (known == folders_.end()) return 0;
  for (const auto& [name, item] : known->second.items) {
    children.push_back({name, TypeOf(item.isFolder ? S_IFDIR : S_IFREG)});
  }
  return 0;
}

int FileLayer::Read(const std::string& path, std::string& bytes) const {
  Place place = PlaceOf(path);
  struct stat status {};
  if (const int failure = FollowLinks(place, status)) return failure;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  if (const Item* item = Find(place)) {
    bytes = contents_.Read(item->content);
    return 0;
  }
  return ReadFile(place.Path(), bytes);
}

// Whether an item may come or go there.
int FileLayer::MayChange(const Place& place) const {
  if (place.name.size() > NAME_MAX) return ENAMETOOLONG;
  struct stat folder {};
  Place parent = PlaceOf(place.folder);
  if (place.folder == "/") {
    if (lstat("/", &folder) != 0) return errno;
  } else if (const int failure = FollowLinks(parent, folder)) {
    return failure;
  }
  if (!S_ISDIR(folder.st_mode)) return ENOTDIR;
  if (place.folder != "/" && Find(parent) != nullptr) return 0;
  return faccessat(AT_FDCWD, place.folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

timespec FileLayer::Now() const {
  timespec now{};
  if (now_) return *now_;
  clock_gettime(CLOCK_REALTIME, &now);
  return now;
}

void FileLayer::Put(const Place& place, bool isFolder, mode_t mode, std::string_view bytes) {
  Folder& folder = folders_[place.folder];
  if (!IsAscii(place.name)) folder.foreign.insert(place.name);
  Item& item = folder.items[place.name];
  contents_.GiveBack(item.content);
  item.content.clear();
  item.isFolder = isFolder;
  item.mode = mode;
  item.number = ++lastNumber_;
  item.changed = Now();
  contents_.Write(bytes, item.content);
}

int FileLayer::CanReplace(const std::string& path) const {
  Place place = PlaceOf(path);
  mode_t mode = 0;
  return MayReplace(place, mode);
}

int FileLayer::Replace(const std::string& path, std::string_view bytes) {
  Place place = PlaceOf(path);
  mode_t mode = 0;
  if (const int failure = MayReplace(place, mode)) return failure;
  Put(place, false, mode, bytes);
  return 0;
}

int FileLayer::MayReplace(Place& place, mode_t& mode) const {
  constexpr mode_t kNewMode = 0640;
  constexpr mode_t kAnyWriter = S_IWUSR | S_IWGRP | S_IWOTH;
  struct stat status {};
  const int missing = FollowLinks(place, status);
  if (missing != 0 && missing != ENOENT) return missing;
  if (missing == 0) {
    if (S_ISDIR(status.st_mode)) return EISDIR;
    if (!S_ISREG(status.st_mode) || (status.st_mode & kAnyWriter) == 0) return EACCES;
    if (Find(place) == nullptr && access(place.Path().c_str(), W_OK) != 0) return EACCES;
  }
  mode = missing == 0 ? status.st_mode & 07777U : kNewMode;
  return MayChange(place);
}

int FileLayer::Append(const std::string& path, std::string_view bytes) {
  Place place = PlaceOf(path);
  struct stat status {};
  if (const int failure = FollowLinks(place, status)) return failure;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (Find(place) == nullptr) {
    if (access(place.Path().c_str(), W_OK) != 0) return errno;
    if (S_ISCHR(status.st_mode)) return 0;  // a device takes it and keeps nothing
    std::string before;
    if (const int failure = ReadFile(place.Path(), before)) return failure;
    Put(place, false, status.st_mode & 07777U, before);
  }
  Item& item = folders_[place.folder].items.find(place.name)->second;
  item.changed = Now();
  contents_.Write(bytes, item.content);
  return 0;
}

int FileLayer::MakeFolder(const std::string& path) {
  const Place place = PlaceOf(path);
  struct stat status {};
  const int missing = Look(place, status);
  if (missing == 0) return EEXIST;
  if (missing != ENOENT) return missing;
  if (const int failure = MayChange(place)) return failure;
  Put(place, true, 0750, {});
  return 0;
}

// What the layer has goes; what the tree below has is hidden.
void FileLayer::Drop(const Place& place) {
  Folder& folder = folders_[place.folder];
  if (const auto item = folder.items.find(place.name); item != folder.items.end()) {
    contents_.GiveBack(item->second.content);
    folder.items.erase(item);
    folder.foreign.erase(place.name);
  }
  struct stat status {};
  if (IsHidden(place.folder, place.name) || lstat(place.Path().c_str(), &status) != 0) return;
  folder.hidden.insert(place.name);
  if (S_ISDIR(status.st_mode)) ++hiddenFolders_;
}

int FileLayer::Remove(const Place& place) {
  if (const int failure = MayChange(place)) return failure;
  struct stat item {};
  struct stat folder {};
  if (const int failure = Look(place, item)) return failure;
  // In a folder like /tmp only owners remove.
  if (Find(place) == nullptr && lstat(place.folder.c_str(), &folder) == 0 &&
      (folder.st_mode & S_ISVTX) != 0 && geteuid() != 0 && item.st_uid != geteuid() &&
      folder.st_uid != geteuid()) {
    return EPERM;
  }
  Drop(place);
  return 0;
}

int FileLayer::RemoveFile(const std::string& path) {
  const Place place = PlaceOf(path);
  struct stat status {};
  if (const int failure = Look(place, status)) return failure;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  return Remove(place);
}

int FileLayer::RemoveFolder(const std::string& path) {
  const Place place = PlaceOf(path);
  struct stat status {};
  if (const int failure = Look(place, status)) return failure;
  if (!S_ISDIR(status.st_mode)) return ENOTDIR;
  std::vector<Child> children;
  if (const int failure = List(path, children)) return failure;
  if (!children.empty()) return ENOTEMPTY;
  const int failure = Remove(place);
  // Nobody asks for what was in it: the folder as a whole is hidden.
  if (failure == 0) folders_.erase(place.Path());
  return failure;
}

}  // namespace base
