// A file tree in memory, for tests of job code: the contract of FileSystemObject without a disk, and switches
// for the failures that a real machine shows only by accident.
//
// Paths are those of job code ("\suite\Data\HTML\a.htm", "/suite", "C:\Data"); relative ones start at the
// root. The test's own calls below find items without regard to case too, and raise 53 or 76 for what is not
// there; what they add has exactly the names given.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/automation/date_time.hpp"
#include "platform/automation/error.hpp"

namespace Scripting::memory {

struct Node {
  std::string name;
  bool isFolder = false;
  bool readOnly = false;
  bool held = false;
  bool barred = false;
  std::string bytes;
  automation::DateTime accessed;
  std::map<std::string, std::shared_ptr<Node>, std::less<>> children;
};
using NodePtr = std::shared_ptr<Node>;

class MemoryDisk {
 public:
  MemoryDisk();

  // Missing folders on the way are made; an item that is there already is kept (a file gets the new bytes).
  void AddFolder(std::string_view path);
  void AddFile(std::string_view path, std::string bytes = {}, automation::DateTime accessed = {});
  void AddDrive(char letter);
  // The drive's root is this folder, which exists.
  void MapDrive(char letter, std::string_view folder);

  void SetAccessed(std::string_view path, automation::DateTime accessed);
  // A read-only item: deleting it without force, or opening it for writing, is refused with 70.
  void SetReadOnly(std::string_view path, bool readOnly = true);
  // Another process holds the item: deleting or opening it is refused with 70, with force as well.
  void SetHeld(std::string_view path, bool held = true);
  // A folder that may not be entered: its listing, and everything about items inside, is refused with 70; to
  // FileExists and FolderExists its items do not exist.
  void SetBarred(std::string_view path, bool barred = true);
  // From now on every write raises this error when it reaches the disk (61 Disk full, 57 Device I/O error).
  void FailWrites(automation::ErrorNumber number) { writeError_ = static_cast<int>(number); }
  void AllowWrites() { writeError_ = 0; }

  bool Exists(std::string_view path) const;
  // A file's content, byte for byte.
  std::string Bytes(std::string_view path) const;
  // Every file and folder but the roots, each folder before what it holds, names in byte order.
  std::vector<std::string> Paths() const;
  std::vector<std::string> PathsUnder(std::string_view path) const;

  // For the file-system object
  // -------------------------------------------------------------------------------

  struct Position {
    NodePtr node;       // null when nothing of that name exists
    NodePtr parent;     // null for a root, and when the folder does not exist
    std::string name;   // the last part: as on disk, or as given when there is none
    std::string shown;  // the full path in the disk's spelling
  };
  // Raises 5 for an empty path, 52 for one with a NUL character, 70 behind a barred folder.
  Position Locate(std::string_view path) const;
  bool HasDrive(char letter) const { return drives_.contains(letter); }
  int WriteError() const { return writeError_; }

 private:
  Node& Get(std::string_view path, bool folderPreferred) const;
  NodePtr MakeFolders(const std::vector<std::string>& parts, NodePtr start) const;

  NodePtr root_;
  std::map<char, NodePtr> drives_;
  int writeError_ = 0;
};
using MemoryDiskPtr = std::shared_ptr<MemoryDisk>;

}  // namespace Scripting::memory
