#include "tests/doubles/faulty_files.hpp"

#include <utility>

namespace orvane_test {
namespace {

class FaultyFileSystem : public Scripting::FileSystemObject {
 public:
  FaultyFileSystem(Scripting::FileSystemObjectPtr real, std::shared_ptr<FileFaults> faults)
      : real_(std::move(real)), faults_(std::move(faults)) {}

  bool FolderExists(std::string_view path) const override {
    if (faults_->onFolderExists) faults_->onFolderExists(std::string(path));
    return real_->FolderExists(path);
  }
  bool FileExists(std::string_view path) const override { return real_->FileExists(path); }
  bool DriveExists(std::string_view drive) const override {
    return faults_->driveExists ? faults_->driveExists(std::string(drive)) : real_->DriveExists(drive);
  }
  Scripting::FilePtr GetFile(std::string_view path) const override { return real_->GetFile(path); }
  Scripting::FolderPtr GetFolder(std::string_view path) const override { return real_->GetFolder(path); }
  Scripting::FolderPtr CreateFolder(std::string_view path) override {
    if (faults_->onCreateFolder) faults_->onCreateFolder(std::string(path));
    return real_->CreateFolder(path);
  }
  Scripting::TextStreamPtr CreateTextFile(std::string_view path, bool overwrite) override {
    return real_->CreateTextFile(path, overwrite);
  }
  Scripting::TextStreamPtr OpenTextFile(std::string_view path, Scripting::IOMode mode, bool create) override {
    return real_->OpenTextFile(path, mode, create);
  }
  void DeleteFile(std::string_view path, bool force) override { real_->DeleteFile(path, force); }
  void DeleteFolder(std::string_view path, bool force) override {
    if (faults_->onDeleteFolder) faults_->onDeleteFolder(std::string(path), force);
    real_->DeleteFolder(path, force);
  }
  std::string GetParentFolderName(std::string_view path) const override {
    return real_->GetParentFolderName(path);
  }

 private:
  Scripting::FileSystemObjectPtr real_;
  std::shared_ptr<FileFaults> faults_;
};

class FaultyDocument : public MSXML2::DOMDocument {
 public:
  FaultyDocument(MSXML2::DOMDocumentPtr real, std::shared_ptr<FileFaults> faults)
      : real_(std::move(real)), faults_(std::move(faults)) {}

  bool load(std::string_view path) override {
    if (faults_->onLoad) faults_->onLoad(std::string(path));
    return real_->load(path);
  }
  bool loadXML(std::string_view text) override { return real_->loadXML(text); }
  std::string parseErrorReason() const override { return real_->parseErrorReason(); }
  void save(std::string_view path) override {
    if (faults_->onSave) faults_->onSave(std::string(path));
    real_->save(path);
  }
  MSXML2::FileState fileState() const override { return real_->fileState(); }
  void setFileState(MSXML2::FileState state) override { real_->setFileState(std::move(state)); }
  std::string xml() const override { return real_->xml(); }
  MSXML2::NodePtr documentElement() const override { return real_->documentElement(); }
  MSXML2::NodePtr createNode(MSXML2::NodeType type, std::string_view name, std::string_view uri) override {
    return real_->createNode(type, name, uri);
  }
  void setProperty(std::string_view name, std::string_view value) override {
    real_->setProperty(name, value);
  }

  MSXML2::NodePtr selectSingleNode(std::string_view expression) const override {
    return real_->selectSingleNode(expression);
  }
  MSXML2::NodeListPtr selectNodes(std::string_view expression) const override {
    return real_->selectNodes(expression);
  }

 private:
  MSXML2::DOMDocumentPtr real_;
  std::shared_ptr<FileFaults> faults_;
};

}  // namespace

Scripting::FileSystemObjectPtr MakeFaulty(Scripting::FileSystemObjectPtr real,
                                          std::shared_ptr<FileFaults> faults) {
  return std::make_shared<FaultyFileSystem>(std::move(real), std::move(faults));
}

MSXML2::DOMDocumentPtr MakeFaulty(MSXML2::DOMDocumentPtr real, std::shared_ptr<FileFaults> faults) {
  return std::make_shared<FaultyDocument>(std::move(real), std::move(faults));
}

}  // namespace orvane_test
