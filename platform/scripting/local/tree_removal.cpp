#include "platform/scripting/local/tree_removal.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <utility>
#include <vector>

#include "platform/base/descriptor.hpp"
#include "platform/base/file_stamp.hpp"
#include "platform/base/open_folder.hpp"
#include "platform/scripting/local/items.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;
using base::Descriptor;

void Check(bool succeeded) {
  if (!succeeded) RaiseSystemError(errno, ErrorNumber::PathNotFound);
}

// One folder on the way down, and its children that are still there.
struct Level {
  std::string name;                   // in its parent
  struct stat status;                 // to know the folder again on the way up
  std::vector<std::string> children;  // in descending order: the next one is the last
};

std::vector<std::string> Children(int folder) {
  const int listed = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  Check(listed >= 0);
  const base::OpenFolder listing(fdopendir(listed));
  if (!listing) {
    close(listed);
    Raise(ErrorNumber::OutOfMemory);
  }
  std::vector<std::string> names;
  base::ForEachEntry(listing, [&](const dirent& entry) { names.emplace_back(entry.d_name); });
  std::sort(names.begin(), names.end(), std::greater<>());
  return names;
}

class TreeRemoval {
 public:
  explicit TreeRemoval(bool force) : force_(force) {}

  void Run(const std::string& native) {
    Enter(Descriptor(open(native.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)), native);
    while (levels_.size() > 1 || !levels_.back().children.empty()) {
      if (levels_.back().children.empty()) {
        LeaveAndRemove();
      } else {
        std::string child = std::move(levels_.back().children.back());
        levels_.back().children.pop_back();
        RemoveChild(std::move(child));
      }
    }
    Check(rmdir(native.c_str()) == 0);
  }

 private:
  void Enter(Descriptor folder, std::string name) {
    Check(folder.IsOpen());
    Level level{std::move(name), {}, {}};
    Check(fstat(folder.Get(), &level.status) == 0);
    if (!force_ && IsReadOnly(level.status)) Raise(ErrorNumber::PermissionDenied);
    if (force_ && IsReadOnly(level.status))
      Check(fchmod(folder.Get(), (level.status.st_mode & 07777) | S_IWUSR) == 0);
    level.children = Children(folder.Get());
    current_ = std::move(folder);
    levels_.push_back(std::move(level));
  }

  void RemoveChild(std::string name) {
    struct stat status {};
    Check(fstatat(current_.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0);
    if (S_ISDIR(status.st_mode)) {
      Descriptor child(openat(current_.Get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      Enter(std::move(child), std::move(name));
      return;
    }
    if (!force_ && IsReadOnly(status)) Raise(ErrorNumber::PermissionDenied);
    Check(unlinkat(current_.Get(), name.c_str(), 0) == 0);
  }

  // Only one folder is open at a time, so the way up goes through ".."; it must lead where the way down came
  // from.
  void LeaveAndRemove() {
    Descriptor parent(openat(current_.Get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Check(parent.IsOpen());
    struct stat status {};
    Check(fstat(parent.Get(), &status) == 0);
    const std::string name = std::move(levels_.back().name);
    levels_.pop_back();
    if (!base::FileStamp(status).IsSameFile(base::FileStamp(levels_.back().status)))
      Raise(ErrorNumber::PermissionDenied);
    current_ = std::move(parent);
    Check(unlinkat(current_.Get(), name.c_str(), AT_REMOVEDIR) == 0);
  }

  bool force_;
  Descriptor current_;
  std::vector<Level> levels_;
};

}  // namespace

void RemoveTree(const std::string& native, bool force) {
  TreeRemoval(force).Run(native);
}

void RemoveTree(base::FileLayer& layer, const std::string& native, bool force) {
  const auto check = [](int failure) {
    if (failure != 0) RaiseSystemError(failure, ErrorNumber::PathNotFound);
  };
  struct stat status {};
  check(layer.Lstat(native, status));
  if (!force && IsReadOnly(status)) Raise(ErrorNumber::PermissionDenied);
  if (!S_ISDIR(status.st_mode)) return check(layer.RemoveFile(native));
  std::vector<base::FileLayer::Child> children;
  check(layer.List(native, children));
  std::sort(children.begin(), children.end(),
            [](const auto& one, const auto& other) { return one.name < other.name; });
  for (const base::FileLayer::Child& child : children) RemoveTree(layer, native + "/" + child.name, force);
  check(layer.RemoveFolder(native));
}

}  // namespace Scripting::local
