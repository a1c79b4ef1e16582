#include <utility>

#include "effects/reads.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace effects {
namespace {

using Scripting::IOMode;

class HeardFile final : public Scripting::File {
 public:
  HeardFile(Scripting::FilePtr real, ReadListener& listener) : real_(std::move(real)), listener_(listener) {}

  std::string Name() const override { return real_->Name(); }
  std::string Path() const override { return real_->Path(); }
  std::int64_t Size() const override { return real_->Size(); }
  automation::DateTime DateLastAccessed() const override {
    const automation::DateTime time = real_->DateLastAccessed();
    listener_.AccessTimeRead(real_->Path());
    return time;
  }
  Scripting::TextStreamPtr OpenAsTextStream(IOMode mode) override { return real_->OpenAsTextStream(mode); }

 private:
  const Scripting::FilePtr real_;
  ReadListener& listener_;
};

class HeardFolder final : public Scripting::Folder {
 public:
  HeardFolder(Scripting::FolderPtr real, ReadListener& listener)
      : real_(std::move(real)), listener_(listener) {}

  std::string Name() const override { return real_->Name(); }
  std::string Path() const override { return real_->Path(); }
  automation::DateTime DateLastAccessed() const override { return real_->DateLastAccessed(); }
  bool IsLink() const override { return real_->IsLink(); }
  std::vector<Scripting::FilePtr> Files() const override {
    std::vector<Scripting::FilePtr> found = real_->Files();
    for (Scripting::FilePtr& file : found) {
      if (!listener_.Wants(file->Name())) continue;
      listener_.Listed(file->Path());
      file = std::make_shared<HeardFile>(std::move(file), listener_);
    }
    return found;
  }
  std::vector<Scripting::FolderPtr> SubFolders() const override {
    std::vector<Scripting::FolderPtr> found = real_->SubFolders();
    for (Scripting::FolderPtr& folder : found) {
      folder = std::make_shared<HeardFolder>(std::move(folder), listener_);
    }
    return found;
  }

 private:
  const Scripting::FolderPtr real_;
  ReadListener& listener_;
};

class HeardFileSystem final : public Scripting::FileSystemObject {
 public:
  HeardFileSystem(Scripting::FileSystemObjectPtr real, ReadListener& listener)
      : real_(std::move(real)), listener_(listener) {}

  bool FolderExists(std::string_view path) const override { return real_->FolderExists(path); }
  bool FileExists(std::string_view path) const override { return real_->FileExists(path); }
  bool DriveExists(std::string_view drive) const override { return real_->DriveExists(drive); }
  Scripting::FilePtr GetFile(std::string_view path) const override { return real_->GetFile(path); }
  Scripting::FolderPtr GetFolder(std::string_view path) const override {
    return std::make_shared<HeardFolder>(real_->GetFolder(path), listener_);
  }
  Scripting::FolderPtr CreateFolder(std::string_view path) override { return real_->CreateFolder(path); }
  Scripting::TextStreamPtr CreateTextFile(std::string_view path, bool overwrite) override {
    return real_->CreateTextFile(path, overwrite);
  }
  Scripting::TextStreamPtr OpenTextFile(std::string_view path, IOMode mode, bool create) override {
    return real_->OpenTextFile(path, mode, create);
  }
  void DeleteFile(std::string_view path, bool force) override { real_->DeleteFile(path, force); }
  void DeleteFolder(std::string_view path, bool force) override { real_->DeleteFolder(path, force); }
  std::string GetParentFolderName(std::string_view path) const override {
    return real_->GetParentFolderName(path);
  }

 private:
  const Scripting::FileSystemObjectPtr real_;
  ReadListener& listener_;
};

}  // namespace

void HearFolders(automation::ClassTable& classes, const automation::ClassTable& real,
                 ReadListener& listener) {
  classes.RegisterAs<Scripting::FileSystemObject>(Scripting::kFileSystemObjectProgId, [real, &listener] {
    return std::make_shared<HeardFileSystem>(
        automation::As<Scripting::FileSystemObject>(real.Create(Scripting::kFileSystemObjectProgId)),
        listener);
  });
}

}  // namespace effects
