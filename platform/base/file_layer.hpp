// A layer over the file tree: what is changed through it stays in it.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/base/open_folder.hpp"
#include "platform/base/scratch_file.hpp"

namespace base {

// Files and folders that are written, made and removed through the layer are seen as changed by those who ask
// the layer, and stay as they are, byte for byte, in the tree below. The changes go with the object.
//
// Paths are the operating system's. Calls answer 0 or the errno value that the system call would have given
// on the tree itself: rights are asked of the tree below, and what the layer has made belongs to the caller.
// Links of the tree below are followed where the system would follow them; the layer makes none.
// Not to be shared between threads.
class FileLayer {
 public:
  // Contents that are written are kept in a nameless file in `folder`, which is best outside what is layered
  // over. `onFull` is called when they cannot be: nothing that the layer says after that is worth anything,
  // so it had better not return. FAILS: std::system_error when the file cannot be made.
  FileLayer(const std::string& folder, std::function<void(int error)> onFull);

  // What is changed from here on is changed at this moment, and not when the machine's clock says.
  void TakeForNow(const timespec& moment) { now_ = moment; }

  int Lstat(const std::string& path, struct stat& status) const;
  int Stat(const std::string& path, struct stat& status) const;

  using Child = FolderEntry;
  // What is in a folder, "." and ".." left out, in no order.
  int List(const std::string& folder, std::vector<Child>& children) const;
  // Whether an item of the folder in the tree below is one that the layer does not show.
  bool Hides(const std::string& folder, std::string_view name) const;
  // Of the items that the layer itself has in the folder, the names that may be meant by `name` where case
  // does not count: every one that equals it so is among them.
  std::vector<std::string> OwnNamesLike(const std::string& folder, std::string_view name) const;

  // The content of a regular file; EISDIR for a folder, EINVAL for what is neither.
  int Read(const std::string& path, std::string& bytes) const;

  // Gives a file its content as base::FileReplacement does: the file need not be there. CanReplace tells
  // what would keep it from that.
  int CanReplace(const std::string& path) const;
  int Replace(const std::string& path, std::string_view bytes);
  // Writes behind the end of a file, which must be there.
  int Append(const std::string& path, std::string_view bytes);
  int MakeFolder(const std::string& path);
  int RemoveFile(const std::string& path);    // or a link
  int RemoveFolder(const std::string& path);  // an empty one

 private:
  struct Item {
    bool isFolder = false;
    mode_t mode = 0;
    std::vector<ScratchFile::Piece> content;
    timespec changed{};
    ino_t number = 0;
  };
  // Names that are the same but for the case of ASCII letters stand side by side.
  struct ByFoldedName {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
  };
  struct Folder {
    std::map<std::string, Item, ByFoldedName> items;  // that the layer has
    std::set<std::string> foreign;                    // their names with other characters than ASCII's
    std::unordered_set<std::string> hidden;           // names of the tree below
  };
  // Where a path leads, links to folders on the way resolved.
  struct Place {
    std::string folder;
    std::string name;
    std::string Path() const;
  };

  Place PlaceOf(const std::string& path) const;
  std::string RealFolder(const std::string& folder) const;
  const Item* Find(const Place& place) const;
  bool IsHidden(const std::string& folder, std::string_view name) const;
  bool ShowsBelow(const std::string& folder) const;
  int Look(const Place& place, struct stat& status) const;
  int MayChange(const Place& place) const;
  int FollowLinks(Place& place, struct stat& status) const;
  int MayReplace(Place& place, mode_t& mode) const;
  void StatusOf(const Item& item, struct stat& status) const;
  void Put(const Place& place, bool isFolder, mode_t mode, std::string_view bytes);
  void Drop(const Place& place);
  int Remove(const Place& place);

  timespec Now() const;

  mutable ScratchFile contents_;
  std::optional<timespec> now_;
  std::unordered_map<std::string, Folder> folders_;
  std::size_t hiddenFolders_ = 0;
  ino_t lastNumber_ = 0;
  mutable std::string askedFolder_;  // the folder resolved last
  mutable std::string realFolder_;
};

}  // namespace base
