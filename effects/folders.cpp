#include <memory>
#include <utility>

#include "effects/failure_listener.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace effects {
namespace {

class RecordedFiles final : public Scripting::FileSystemObject {
 public:
  RecordedFiles(Scripting::FileSystemObjectPtr real, FailureListener& listener)
      : real_(std::move(real)), listener_(listener) {}

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
  void DeleteFolder(std::string_view path, bool force) override {
    try {
      real_->DeleteFolder(path, force);
    } catch (...) {
      listener_.FolderNotDeleted(path, automation::PendingError());
      throw;
    }
  }
  std::string GetParentFolderName(std::string_view path) const override {
    return real_->GetParentFolderName(path);
  }

 private:
  const Scripting::FileSystemObjectPtr real_;
  FailureListener& listener_;
};

}  // namespace

void RecordFolders(automation::ClassTable& classes, const automation::ClassTable& real,
                   FailureListener& listener) {
  classes.RegisterAs<Scripting::FileSystemObject>(Scripting::kFileSystemObjectProgId, [real, &listener] {
    return std::make_shared<RecordedFiles>(
        automation::As<Scripting::FileSystemObject>(real.Create(Scripting::kFileSystemObjectProgId)),
        listener);
  });
}

}  // namespace effects
