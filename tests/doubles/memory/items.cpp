#include "tests/doubles/memory/items.hpp"

#include <memory>
#include <utility>

#include "platform/automation/runtime.hpp"

namespace Scripting::memory {

using automation::Error;
using automation::ErrorNumber;

void Raise(ErrorNumber number) {
  throw Error(number, "Scripting.FileSystemObject");
}

namespace {

// The longest name that file systems take, in bytes.
constexpr std::size_t kLongestName = 255;

class MemoryStream : public TextStream {
 public:
  MemoryStream(MemoryDiskPtr disk, NodePtr node, IOMode mode,
               std::shared_ptr<const automation::Locale> locale)
      : disk_(std::move(disk)), node_(std::move(node)), mode_(mode), locale_(std::move(locale)) {}

  ~MemoryStream() override {
    if (node_ && disk_->WriteError() == 0) node_->bytes += pending_;
  }

  void Write(std::string_view text) override {
    RequireMode(mode_ != IOMode::ForReading);
    pending_ += locale_->ToCodePage(text);
  }
  void WriteLine(std::string_view text) override {
    Write(text);
    pending_ += "\r\n";
  }

  std::string ReadAll() override {
    RequireMode(mode_ == IOMode::ForReading);
    if (position_ >= node_->bytes.size()) Raise(ErrorNumber::InputPastEnd);
    const std::string rest = node_->bytes.substr(std::exchange(position_, node_->bytes.size()));
    return locale_->FromCodePage(rest);
  }

  void Close() override {
    const NodePtr node = std::exchange(node_, nullptr);
    if (!node || pending_.empty()) return;
    if (disk_->WriteError() != 0) Raise(static_cast<ErrorNumber>(disk_->WriteError()));
    node->bytes += pending_;
  }

 private:
  void RequireMode(bool right) const {
    if (!node_) Raise(ErrorNumber::ObjectNotSet);
    if (!right) Raise(ErrorNumber::BadFileMode);
  }

  MemoryDiskPtr disk_;
  NodePtr node_;
  IOMode mode_;
  std::shared_ptr<const automation::Locale> locale_;
  std::string pending_;
  std::size_t position_ = 0;
};

class NewMemoryStream : public TextStream {
 public:
  NewMemoryStream(MemoryDiskPtr disk, std::string path, bool replaces,
                  std::shared_ptr<const automation::Locale> locale)
      : disk_(std::move(disk)), path_(std::move(path)), replaces_(replaces), locale_(std::move(locale)) {}

  void Write(std::string_view text) override {
    RequireOpen();
    pending_ += locale_->ToCodePage(text);
  }
  void WriteLine(std::string_view text) override {
    Write(text);
    Write("\r\n");
  }
  std::string ReadAll() override {
    RequireOpen();
    Raise(ErrorNumber::BadFileMode);
  }

  void Close() override {
    const MemoryDiskPtr disk = std::exchange(disk_, nullptr);
    if (!disk) return;
    if (disk->WriteError() != 0 && !pending_.empty()) Raise(static_cast<ErrorNumber>(disk->WriteError()));
    MemoryDisk::Position position = disk->Locate(path_);
    if (position.node && (!replaces_ || position.node->isFolder)) Raise(ErrorNumber::FileAlreadyExists);
    if (!position.node) position.node = NewItem(position, false);
    position.node->bytes = std::move(pending_);
  }

 private:
  void RequireOpen() const {
    if (!disk_) Raise(ErrorNumber::ObjectNotSet);
  }

  MemoryDiskPtr disk_;  // null once the file is closed
  std::string path_;
  bool replaces_;
  std::shared_ptr<const automation::Locale> locale_;
  std::string pending_;
};

class MemoryFile : public File {
 public:
  MemoryFile(MemoryDiskPtr disk, NodePtr node, std::string shown)
      : disk_(std::move(disk)), node_(std::move(node)), shown_(std::move(shown)) {}

  std::string Name() const override { return node_->name; }
  std::string Path() const override { return shown_; }
  std::int64_t Size() const override { return static_cast<std::int64_t>(Present().bytes.size()); }
  automation::DateTime DateLastAccessed() const override { return Present().accessed; }
  TextStreamPtr OpenAsTextStream(IOMode mode) override {
    Present();
    return OpenStream(disk_, node_, mode);
  }

 private:
  // The file as it is now: the tree may have changed since this object was made.
  Node& Present() const {
    const MemoryDisk::Position position = disk_->Locate(shown_);
    if (position.node != node_) Raise(ErrorNumber::FileNotFound);
    return *node_;
  }

  MemoryDiskPtr disk_;
  NodePtr node_;
  std::string shown_;
};

class MemoryFolder : public Folder {
 public:
  MemoryFolder(MemoryDiskPtr disk, NodePtr node, std::string shown)
      : disk_(std::move(disk)), node_(std::move(node)), shown_(std::move(shown)) {}

  std::string Name() const override { return node_->name; }
  std::string Path() const override { return shown_; }
  automation::DateTime DateLastAccessed() const override { return Present().accessed; }
  bool IsLink() const override { return false; }  // there are none in memory

  FileList Files() const override {
    std::vector<FilePtr> files;
    for (const auto& [name, node] : Readable().children) {
      if (!node->isFolder) files.push_back(MakeFile(disk_, node, PathOf(name)));
    }
    const std::size_t size = files.size();
    return {size, [files = std::move(files)](std::size_t index) { return files[index]; }};
  }

  std::vector<FolderPtr> SubFolders() const override {
    std::vector<FolderPtr> folders;
    for (const auto& [name, node] : Readable().children) {
      if (node->isFolder) folders.push_back(MakeFolder(disk_, node, PathOf(name)));
    }
    return folders;
  }

 private:
  std::string PathOf(const std::string& name) const {
    return shown_.back() == '\\' ? shown_ + name : shown_ + "\\" + name;
  }
  Node& Present() const {
    const MemoryDisk::Position position = disk_->Locate(shown_);
    if (position.node != node_) Raise(ErrorNumber::PathNotFound);
    return *node_;
  }
  Node& Readable() const {
    Node& node = Present();
    if (node.barred) Raise(ErrorNumber::PermissionDenied);
    return node;
  }

  MemoryDiskPtr disk_;
  NodePtr node_;
  std::string shown_;
};

}  // namespace

FilePtr MakeFile(MemoryDiskPtr disk, NodePtr node, std::string shown) {
  return std::make_shared<MemoryFile>(std::move(disk), std::move(node), std::move(shown));
}

FolderPtr MakeFolder(MemoryDiskPtr disk, NodePtr node, std::string shown) {
  return std::make_shared<MemoryFolder>(std::move(disk), std::move(node), std::move(shown));
}

void RequirePlace(const MemoryDisk::Position& position) {
  if (!position.parent) Raise(ErrorNumber::PathNotFound);
  if (position.name.size() > kLongestName) Raise(ErrorNumber::BadFileName);
}

NodePtr NewItem(const MemoryDisk::Position& position, bool isFolder) {
  RequirePlace(position);
  auto node = std::make_shared<Node>();
  node->name = position.name;
  node->isFolder = isFolder;
  node->accessed = automation::Now();
  position.parent->children.emplace(position.name, node);
  return node;
}

TextStreamPtr OpenNewFile(MemoryDiskPtr disk, std::string path, const NodePtr& existing) {
  automation::CurrentLocale();  // raises before anything is made
  if (existing && (existing->isFolder || existing->held || existing->readOnly)) {
    Raise(ErrorNumber::PermissionDenied);
  }
  return std::make_shared<NewMemoryStream>(std::move(disk), std::move(path), existing != nullptr,
                                           automation::CurrentRuntime().locale);
}

TextStreamPtr OpenStream(MemoryDiskPtr disk, NodePtr node, IOMode mode) {
  automation::CurrentLocale();  // raises before anything is emptied
  if (node->isFolder || node->held) Raise(ErrorNumber::PermissionDenied);
  if (node->readOnly && mode != IOMode::ForReading) Raise(ErrorNumber::PermissionDenied);
  if (mode == IOMode::ForWriting) node->bytes.clear();
  return std::make_shared<MemoryStream>(std::move(disk), std::move(node), mode,
                                        automation::CurrentRuntime().locale);
}

}  // namespace Scripting::memory
