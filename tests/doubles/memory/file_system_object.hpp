// The file-system object on a tree in memory.
#pragma once

#include <utility>

#include "platform/scripting/file_system_object.hpp"
#include "tests/doubles/memory/memory_disk.hpp"

namespace Scripting::memory {

class MemoryFileSystem : public FileSystemObject {
 public:
  explicit MemoryFileSystem(MemoryDiskPtr disk) : disk_(std::move(disk)) {}

  bool FolderExists(std::string_view path) const override;
  bool FileExists(std::string_view path) const override;
  bool DriveExists(std::string_view drive) const override;
  FilePtr GetFile(std::string_view path) const override;
  FolderPtr GetFolder(std::string_view path) const override;
  FolderPtr CreateFolder(std::string_view path) override;
  TextStreamPtr CreateTextFile(std::string_view path, bool overwrite) override;
  TextStreamPtr OpenTextFile(std::string_view path, IOMode mode, bool create) override;
  void DeleteFile(std::string_view path, bool force) override;
  void DeleteFolder(std::string_view path, bool force) override;
  std::string GetParentFolderName(std::string_view path) const override;

 private:
  MemoryDiskPtr disk_;
};

}  // namespace Scripting::memory
