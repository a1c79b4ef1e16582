#include "platform/scripting/local/path_resolver.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <utility>
#include <vector>

#include "platform/base/text.hpp"
#include "platform/scripting/local/native_name.hpp"
#include "platform/scripting/local/pending.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/path_text.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

bool IsMissing(int code) {
  return code == ENOENT || code == ENOTDIR || code == ENAMETOOLONG;
}

std::string Joined(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && path.back() != '/') path += '/';
  path += name;
  return path;
}

std::pair<std::string_view, std::string_view> FolderAndName(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || slash == 0) return {{}, path};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

std::vector<std::string> Parts(std::string_view path) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (start < path.size()) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    if (end > start) parts.emplace_back(path.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

// `rest` with "." and ".." worked out as text; what would climb past the start stays there.
std::string WithinRoot(std::string_view rest) {
  std::string path = std::filesystem::path("/" + std::string(rest)).lexically_normal().relative_path();
  if (path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

PathResolver::PathResolver(const DriveTable& drives, LayerPtr layer,
                           std::shared_ptr<base::PendingFiles> pending)
    : layer_(std::move(layer)), pending_(std::move(pending)) {
  for (const auto& [letter, folder] : drives) {
    std::string trimmed = folder;
    while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.pop_back();
    drives_[DriveLetter(std::string{letter, ':'})] = std::move(trimmed);
  }
}

std::optional<std::string> PathResolver::Translate(std::string_view path) const {
  if (path.empty()) Raise(ErrorNumber::InvalidProcedureCall);
  if (path.find('\0') != std::string_view::npos) RefuseControls(path);
  const char drive = DriveLetter(path);
  std::string_view rest = drive != 0 ? path.substr(2) : path;

  std::string native(rest);
  std::replace(native.begin(), native.end(), '\\', '/');
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  native = NativeName(native);
  if (drive == 0) return native;

  const auto folder = drives_.find(drive);
  if (folder == drives_.end()) return std::nullopt;
  const std::string inside = WithinRoot(native);
  return inside.empty() ? folder->second : Joined(folder->second, inside);
}

std::optional<Found> PathResolver::Find(std::string_view path) const {
  std::optional<std::string> native = Translate(path);
  if (!native) return std::nullopt;
  Found found{std::move(*native), {}};
  int failure = Lstat(layer_, found.path, found.status);
  if (IsMissing(failure) && PublishPending(pending_)) failure = Lstat(layer_, found.path, found.status);
  if (failure == 0) return found;
  if (!IsMissing(failure)) RaiseSystemError(failure, ErrorNumber::PathNotFound);

  const std::lock_guard lock(mutex_);
  const auto [folder, name] = FolderAndName(found.path);
  if (!folder.empty() && folder == askedFolder_ && IsMissing(Lstat(layer_, askedFolder_, found.status))) {
    Found sibling{Joined(foundFolder_, name), {}};
    if (Lstat(layer_, sibling.path, sibling.status) == 0) return sibling;
  }
  std::optional<Found> other = FindIgnoringCase(found.path, path);
  if (other) {
    askedFolder_ = folder;
    foundFolder_ = FolderAndName(other->path).first;
  }
  return other;
}

std::optional<std::string> PathResolver::FindPending(std::string_view path) const {
  std::optional<std::string> native = Translate(path);
  struct stat status {};
  if (!native || !pending_ || !pending_->Holds(*native) || !IsMissing(Lstat(layer_, *native, status))) {
    return std::nullopt;
  }
  return native;
}

std::optional<Found> PathResolver::FindIgnoringCase(const std::string& native, std::string_view path) const {
  // The folder that a drive stands for is the administrator's, not the caller's: its spelling is taken as it
  // is.
  const char drive = DriveLetter(path);
  std::string start = native.front() == '/' ? "/" : "";
  if (drive != 0) start = drives_.at(drive);
  Found found{start, {}};
  std::string_view rest = drive != 0 ? std::string_view(native).substr(std::min(native.size(), start.size()))
                                     : std::string_view(native);
  // Mostly just the last part is missing, or spelled otherwise.
  if (const auto [folder, name] = FolderAndName(native);
      folder.size() > start.size() && Lstat(layer_, std::string(folder), found.status) == 0) {
    found.path = folder;
    rest = name;
  }
  const std::vector<std::string> parts = Parts(rest);
  for (auto part = parts.begin(); part != parts.end(); ++part) {
    std::string next = Joined(found.path, *part);
    if (const int failure = Lstat(layer_, next, found.status); failure != 0) {
      if (!IsMissing(failure)) RaiseSystemError(failure, ErrorNumber::PathNotFound);
      if (base::HasControl(*part)) RefuseControls(path);
      const std::optional<std::string> name = FindName(found.path, *part);
      if (!name && std::any_of(part, parts.end(), base::HasControl)) RefuseControls(path);
      if (!name) return std::nullopt;
      next = Joined(found.path, *name);
      if (Lstat(layer_, next, found.status) != 0) return std::nullopt;
    }
    found.path = std::move(next);
  }
  if (found.path == start) return std::nullopt;
  return found;
}

std::optional<std::string> PathResolver::FindName(const std::string& folder, const std::string& name) const {
  if (!layer_) return names_.Find(folder, name);
  std::optional<std::string> found = names_.Find(
      folder, name, [&](std::string_view candidate) { return !layer_->Hides(folder, candidate); });
  const std::string folded = FoldedName(ShownName(name));
  for (std::string& own : layer_->OwnNamesLike(folder, name)) {
    if (FoldedName(ShownName(own)) == folded && (!found || own < *found)) found = std::move(own);
  }
  return found;
}

PathResolver::Place PathResolver::PlaceFor(std::string_view path) const {
  if (std::optional<Found> found = Find(path)) return {std::move(found->path), found->status};
  const std::optional<std::string> native = Translate(path);
  if (!native) Raise(ErrorNumber::PathNotFound);
  const std::string_view given = *native;
  const std::size_t slash = given.rfind('/');
  const std::string_view name = slash == std::string_view::npos ? given : given.substr(slash + 1);

  const std::string parent = ParentFolderName(path);
  if (parent.empty()) return {*native, std::nullopt};
  const std::optional<Found> folder = Find(parent);
  struct stat target {};
  if (!folder || Stat(layer_, folder->path, target) != 0 || !S_ISDIR(target.st_mode)) {
    Raise(ErrorNumber::PathNotFound);
  }
  return {Joined(folder->path, name), std::nullopt};
}

bool PathResolver::DriveExists(std::string_view drive) const {
  if (drive.empty()) return false;
  if (IsSeparator(drive.front())) return true;
  const std::string letter = drive.size() == 1 ? std::string(drive) + ":" : std::string(drive);
  const auto folder = drives_.find(DriveLetter(letter));
  struct stat status {};
  return folder != drives_.end() && stat(folder->second.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string PathResolver::ShownPath(std::string_view native, std::string_view like) const {
  std::string shown;
  const char drive = DriveLetter(like);
  if (drive != 0) {
    shown = {drive, ':'};
    native.remove_prefix(std::min(native.size(), drives_.at(drive).size()));
    if (native.empty() || native.front() != '/') shown += '\\';
  } else if (native.empty() || native.front() != '/') {
    char current[4096];
    if (getcwd(current, sizeof current) == nullptr) RaiseSystemError(errno, ErrorNumber::PathNotFound);
    std::string absolute = Joined(current, native);
    return ShownPath(absolute, {});
  }
  // The separators become "\"; a "\" inside a name has its stand-in by then.
  std::size_t start = 0;
  while (start <= native.size()) {
    const std::size_t end = std::min(native.find('/', start), native.size());
    shown += ShownName(native.substr(start, end - start));
    if (end == native.size()) break;
    shown += '\\';
    start = end + 1;
  }
  return shown;
}

}  // namespace Scripting::local
