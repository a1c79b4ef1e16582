#include <memory>
#include <utility>

#include "effects/forwarding.hpp"
#include "effects/wrappers.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

using Scripting::IOMode;

// What the objects of one class table share.
struct Files {
  Recorder& recorder;
  Places places;

  FileChange Changing(FileChange::Kind kind, std::string native) const {
    FileChange change{kind, std::move(native), {}};
    change.folder = places.folder(change.path);
    return change;
  }
};
using FilesPtr = std::shared_ptr<const Files>;

// A run log that is written to.
class LogStream final : public Scripting::TextStream {
 public:
  LogStream(Scripting::TextStreamPtr real, Recorder& recorder)
      : real_(std::move(real)), recorder_(recorder) {}

  void Write(std::string_view text) override { real_->Write(text); }
  void WriteLine(std::string_view text) override {
    recorder_.RunLogLine(text);
    real_->WriteLine(text);
  }
  std::string ReadAll() override { return real_->ReadAll(); }
  void Close() override { real_->Close(); }

 private:
  const Scripting::TextStreamPtr real_;
  Recorder& recorder_;
};

// A new file, which comes into being when it is closed.
class NewFile final : public Scripting::TextStream {
 public:
  NewFile(Scripting::TextStreamPtr real, FilesPtr files, std::string native)
      : real_(std::move(real)), files_(std::move(files)), native_(std::move(native)) {}

  void Write(std::string_view text) override { real_->Write(text); }
  void WriteLine(std::string_view text) override { real_->WriteLine(text); }
  std::string ReadAll() override { return real_->ReadAll(); }
  void Close() override {
    if (std::exchange(closed_, true)) {
      real_->Close();
      return;
    }
    files_->recorder.Do(files_->Changing(FileChange::Kind::Write, native_), [&] { real_->Close(); });
  }

 private:
  const Scripting::TextStreamPtr real_;
  const FilesPtr files_;
  const std::string native_;
  bool closed_ = false;
};

// Opens a file that is there, or is made at once.
template <class Open>
Scripting::TextStreamPtr Opened(const FilesPtr& files, std::string_view path, IOMode mode, const Open& open) {
  if (mode == IOMode::ForReading) return open();
  std::string native = files->places.native(path, false);
  if (files->places.isLog(native)) return std::make_shared<LogStream>(open(), files->recorder);
  return files->recorder.Do(files->Changing(FileChange::Kind::Write, std::move(native)), open);
}

class RecordedFile final : public ForwardingFile {
 public:
  RecordedFile(Scripting::FilePtr real, FilesPtr files)
      : ForwardingFile(std::move(real)), files_(std::move(files)) {}

  Scripting::TextStreamPtr OpenAsTextStream(IOMode mode) override {
    return Opened(files_, Path(), mode, [&] { return ForwardingFile::OpenAsTextStream(mode); });
  }

 private:
  const FilesPtr files_;
};

class RecordedFolder final : public ForwardingFolder {
 public:
  RecordedFolder(Scripting::FolderPtr real, FilesPtr files)
      : ForwardingFolder(std::move(real)), files_(std::move(files)) {}

 private:
  WrapFile FileWrapper() const override {
    return [files = files_](Scripting::FilePtr file) {
      return std::make_shared<RecordedFile>(std::move(file), files);
    };
  }
  Scripting::FolderPtr Wrapped(Scripting::FolderPtr folder) const override {
    return std::make_shared<RecordedFolder>(std::move(folder), files_);
  }

  const FilesPtr files_;
};

class RecordedFiles final : public ForwardingFileSystem {
 public:
  RecordedFiles(Scripting::FileSystemObjectPtr real, FilesPtr files)
      : ForwardingFileSystem(std::move(real)), files_(std::move(files)) {}

  Scripting::FilePtr GetFile(std::string_view path) const override {
    return std::make_shared<RecordedFile>(ForwardingFileSystem::GetFile(path), files_);
  }
  Scripting::FolderPtr GetFolder(std::string_view path) const override {
    return std::make_shared<RecordedFolder>(ForwardingFileSystem::GetFolder(path), files_);
  }
  Scripting::FolderPtr CreateFolder(std::string_view path) override {
    return std::make_shared<RecordedFolder>(
        Changing(FileChange::Kind::CreateFolder, path,
                 [&] { return ForwardingFileSystem::CreateFolder(path); }),
        files_);
  }
  Scripting::TextStreamPtr CreateTextFile(std::string_view path, bool overwrite) override {
    std::string native = files_->places.native(path, true);
    Scripting::TextStreamPtr stream = ForwardingFileSystem::CreateTextFile(path, overwrite);
    if (files_->places.isLog(native)) {
      return std::make_shared<LogStream>(std::move(stream), files_->recorder);
    }
    return std::make_shared<NewFile>(std::move(stream), files_, std::move(native));
  }
  Scripting::TextStreamPtr OpenTextFile(std::string_view path, IOMode mode, bool create) override {
    return Opened(files_, path, mode, [&] { return ForwardingFileSystem::OpenTextFile(path, mode, create); });
  }
  void DeleteFile(std::string_view path, bool force) override {
    Changing(FileChange::Kind::Delete, path, [&] { ForwardingFileSystem::DeleteFile(path, force); });
  }
  void DeleteFolder(std::string_view path, bool force) override {
    Changing(FileChange::Kind::DeleteFolder, path, [&] { ForwardingFileSystem::DeleteFolder(path, force); });
  }

 private:
  template <class Act>
  auto Changing(FileChange::Kind kind, std::string_view path, const Act& act) -> decltype(act()) {
    std::string native = files_->places.native(path, kind == FileChange::Kind::CreateFolder);
    if (files_->places.isLog(native)) return act();
    return files_->recorder.Do(files_->Changing(kind, std::move(native)), act);
  }

  const FilesPtr files_;
};

}  // namespace

void RecordFiles(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder,
                 const Places& places) {
  const auto files = std::make_shared<const Files>(Files{recorder, places});
  classes.RegisterAs<Scripting::FileSystemObject>(Scripting::kFileSystemObjectProgId, [real, files] {
    return std::make_shared<RecordedFiles>(
        automation::As<Scripting::FileSystemObject>(real.Create(Scripting::kFileSystemObjectProgId)), files);
  });
}

}  // namespace effects
