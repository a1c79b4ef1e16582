// From the paths of job code ("\suite\Data\chat\x", "C:\Data") to items of the POSIX file tree.
#pragma once

#include <sys/stat.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/pending_files.hpp"
#include "platform/scripting/local/folder_names.hpp"
#include "platform/scripting/local/tree_status.hpp"

namespace Scripting::local {

// Drive letters ("C") and the folders that they stand for.
using DriveTable = std::map<char, std::string>;

// An item that exists.
struct Found {
  std::string path;    // as the operating system takes it, in the spelling of the disk
  struct stat status;  // of the item itself, a link not followed
};

// May be shared between threads: the documents of runtimes that have one class table share one.
class PathResolver {
 public:
  // Letters may be given in either case; the folders are absolute paths of the operating system. With a layer
  // paths lead to what it shows. Pending files, where there are any, get their names before an item is said
  // to be missing.
  explicit PathResolver(const DriveTable& drives, LayerPtr layer = nullptr,
                        std::shared_ptr<base::PendingFiles> pending = nullptr);

  // The operating system's path for `path` in the spelling given, without separators at its end; the disk is
  // not asked. ".." of a drive path does not leave the drive. Nothing when the drive is unknown; an empty
  // path raises 5 and one with a NUL character 52, shown in the text.
  std::optional<std::string> Translate(std::string_view path) const;

  // The item at `path`: the exact spelling first; where that does not exist, each part without regard to case
  // (of several such names the first in byte order). Raises 70 where the way is barred, and 52 for a name
  // that holds a control character unless an item has exactly this name, as those that a listing gave have.
  std::optional<Found> Find(std::string_view path) const;

  // Where the pending file that `path` names in this very spelling will lie; nothing when there is none, or
  // when there is an item at the path. Gives no names.
  std::optional<std::string> FindPending(std::string_view path) const;

  // The path under which an item can be made: the existing folder that will hold it, and the last part as it
  // is spelled on disk or, when there is none yet, as given. Raises 76 when the folder does not exist, and 52
  // as Find does: no such name is made.
  struct Place {
    std::string path;
    std::optional<struct stat> existing;  // a link not followed
  };
  Place PlaceFor(std::string_view path) const;

  // Calls `remove`, which deletes the item at the operating system's path, and updates the names kept of its
  // folder.
  template <class Remove>
  void RemoveAndUpdate(const std::string& native, const Remove& remove) {
    const std::lock_guard lock(mutex_);
    names_.RemoveAndUpdate(native, remove);
  }

  bool DriveExists(std::string_view drive) const;

  // `native` as job code writes it, drive letters put back as `like` has them; absolute.
  std::string ShownPath(std::string_view native, std::string_view like) const;

 private:
  std::optional<Found> FindIgnoringCase(const std::string& native, std::string_view path) const;
  std::optional<std::string> FindName(const std::string& folder, const std::string& name) const;

  DriveTable drives_;
  LayerPtr layer_;
  std::shared_ptr<base::PendingFiles> pending_;
  mutable std::mutex mutex_;  // of what follows
  mutable FolderNames names_;
  // The folder last found under another spelling than asked for: a sweep asks for one item after the other.
  mutable std::string askedFolder_;
  mutable std::string foundFolder_;
};

}  // namespace Scripting::local
