#include <memory>
#include <utility>

#include "effects/forwarding.hpp"
#include "effects/reads.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

class HeardFile final : public ForwardingFile {
 public:
  HeardFile(Scripting::FilePtr real, ReadListener& listener)
      : ForwardingFile(std::move(real)), listener_(listener) {}

  automation::DateTime DateLastAccessed() const override {
    const automation::DateTime time = ForwardingFile::DateLastAccessed();
    listener_.AccessTimeRead(Path());
    return time;
  }

 private:
  ReadListener& listener_;
};

class HeardFolder final : public ForwardingFolder {
 public:
  HeardFolder(Scripting::FolderPtr real, ReadListener& listener)
      : ForwardingFolder(std::move(real)), listener_(listener) {}

  Scripting::FileList Files() const override {
    Scripting::FileList files = ForwardingFolder::Files();
    for (const Scripting::FilePtr& file : files) {
      if (listener_.Wants(file->Name())) listener_.Listed(file->Path());
    }
    return files;
  }

 private:
  WrapFile FileWrapper() const override {
    return [&listener = listener_](Scripting::FilePtr file) -> Scripting::FilePtr {
      if (!listener.Wants(file->Name())) return file;
      return std::make_shared<HeardFile>(std::move(file), listener);
    };
  }
  Scripting::FolderPtr Wrapped(Scripting::FolderPtr folder) const override {
    return std::make_shared<HeardFolder>(std::move(folder), listener_);
  }

  ReadListener& listener_;
};

class HeardFileSystem final : public ForwardingFileSystem {
 public:
  HeardFileSystem(Scripting::FileSystemObjectPtr real, ReadListener& listener)
      : ForwardingFileSystem(std::move(real)), listener_(listener) {}

  Scripting::FolderPtr GetFolder(std::string_view path) const override {
    return std::make_shared<HeardFolder>(ForwardingFileSystem::GetFolder(path), listener_);
  }

 private:
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
