// The file-system object on the POSIX file tree.
#pragma once

#include <memory>
#include <utility>

#include "platform/base/created_files.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/path_resolver.hpp"

namespace Scripting::local {

class LocalFileSystem : public FileSystemObject {
 public:
  // Notes the new files that it makes in `created`, if there is one. A file that another has put in place of
  // one of them is not deleted as if it were the run's own: DeleteFile refuses it with 70.
  // With a layer everything is done in it, and the tree stays as it is.
  // Text files that are new wait among the pending files, where there are such.
  explicit LocalFileSystem(const DriveTable& drives, std::shared_ptr<base::CreatedFiles> created = nullptr,
                           LayerPtr layer = nullptr, std::shared_ptr<base::PendingFiles> pending = nullptr)
      : resolver_(drives, layer, pending),
        created_(std::move(created)),
        layer_(std::move(layer)),
        pending_(std::move(pending)) {}

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
  std::shared_ptr<base::CreatedFiles> created_;
  LayerPtr layer_;
  std::shared_ptr<base::PendingFiles> pending_;
};

}  // namespace Scripting::local
