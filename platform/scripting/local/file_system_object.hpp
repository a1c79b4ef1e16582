// The file-system object on the POSIX file tree.
#pragma once

#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/path_resolver.hpp"

namespace Scripting::local {

class LocalFileSystem : public FileSystemObject {
 public:
  explicit LocalFileSystem(const DriveTable& drives) : resolver_(drives) {}

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
  PathResolver resolver_;
};

}  // namespace Scripting::local
