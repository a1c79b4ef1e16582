// Objects of the file system that hand every call on; wrappers override what they want to hear of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/scripting/file_system_object.hpp"

namespace effects {

class ForwardingFile : public Scripting::File {
 public:
  explicit ForwardingFile(Scripting::FilePtr real) : real_(std::move(real)) {}

  std::string Name() const override { return real_->Name(); }
  std::string Path() const override { return real_->Path(); }
  std::int64_t Size() const override { return real_->Size(); }
  automation::DateTime DateLastAccessed() const override { return real_->DateLastAccessed(); }
  Scripting::TextStreamPtr OpenAsTextStream(Scripting::IOMode mode) override {
    return real_->OpenAsTextStream(mode);
  }

 private:
  const Scripting::FilePtr real_;
};

// Whatever lies in it is wrapped as well.
class ForwardingFolder : public Scripting::Folder {
 public:
  explicit ForwardingFolder(Scripting::FolderPtr real) : real_(std::move(real)) {}

  std::string Name() const override { return real_->Name(); }
  std::string Path() const override { return real_->Path(); }
  automation::DateTime DateLastAccessed() const override { return real_->DateLastAccessed(); }
  bool IsLink() const override { return real_->IsLink(); }
  Scripting::FileList Files() const override {
    Scripting::FileList files = real_->Files();
    const std::size_t size = files.size();
    return {size, [files = std::move(files), wrapped = FileWrapper()](std::size_t index) {
              return wrapped(files[index]);
            }};
  }
  std::vector<Scripting::FolderPtr> SubFolders() const override {
    std::vector<Scripting::FolderPtr> found = real_->SubFolders();
    for (Scripting::FolderPtr& folder : found) folder = Wrapped(std::move(folder));
    return found;
  }

 protected:
  using WrapFile = std::function<Scripting::FilePtr(Scripting::FilePtr)>;

 private:
  // Outlives the folder: a list of files may be all that is kept of it.
  virtual WrapFile FileWrapper() const = 0;
  virtual Scripting::FolderPtr Wrapped(Scripting::FolderPtr folder) const = 0;

  const Scripting::FolderPtr real_;
};

class ForwardingFileSystem : public Scripting::FileSystemObject {
 public:
  explicit ForwardingFileSystem(Scripting::FileSystemObjectPtr real) : real_(std::move(real)) {}

  bool FolderExists(std::string_view path) const override { return real_->FolderExists(path); }
  bool FileExists(std::string_view path) const override { return real_->FileExists(path); }
  bool DriveExists(std::string_view drive) const override { return real_->DriveExists(drive); }
  Scripting::FilePtr GetFile(std::string_view path) const override { return real_->GetFile(path); }
  Scripting::FolderPtr GetFolder(std::string_view path) const override { return real_->GetFolder(path); }
  Scripting::FolderPtr CreateFolder(std::string_view path) override { return real_->CreateFolder(path); }
  Scripting::TextStreamPtr CreateTextFile(std::string_view path, bool overwrite) override {
    return real_->CreateTextFile(path, overwrite);
  }
  Scripting::TextStreamPtr OpenTextFile(std::string_view path, Scripting::IOMode mode, bool create) override {
    return real_->OpenTextFile(path, mode, create);
  }
  void DeleteFile(std::string_view path, bool force) override { real_->DeleteFile(path, force); }
  void DeleteFolder(std::string_view path, bool force) override { real_->DeleteFolder(path, force); }
  std::string GetParentFolderName(std::string_view path) const override {
    return real_->GetParentFolderName(path);
  }

 private:
  const Scripting::FileSystemObjectPtr real_;
};

}  // namespace effects
