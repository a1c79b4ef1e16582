#include "tests/doubles/memory/file_system_object.hpp"
#include "tests/doubles/memory/memory_disk.hpp"
#include "tests/scripting/file_system_machine.hpp"

namespace orvane_test {
namespace {

// The tests' root is a drive root's folder twice: once by its own path, once as drive X.
class MemoryMachine : public FileSystemMachine {
 public:
  MemoryMachine() {
    disk_->AddFolder(kRoot);
    disk_->AddFolder(Full("drive"));
    disk_->MapDrive('X', Full("drive"));
  }

  Scripting::FileSystemObjectPtr NewFileSystem() override {
    return std::make_shared<Scripting::memory::MemoryFileSystem>(disk_);
  }

  std::string Root() const override { return kRoot; }
  void AddFolder(std::string_view path) override { disk_->AddFolder(Full(path)); }
  void AddFile(std::string_view path, std::string_view bytes) override {
    disk_->AddFile(Full(path), std::string(bytes));
  }
  void SetAccessed(std::string_view path, automation::DateTime accessed) override {
    disk_->SetAccessed(Full(path), accessed);
  }
  void SetReadOnly(std::string_view path) override { disk_->SetReadOnly(Full(path)); }
  bool Exists(std::string_view path) const override {
    if (!disk_->Exists(Full(path))) return false;
    return disk_->Locate(Full(path)).shown == Full(path);
  }
  std::string Bytes(std::string_view path) const override { return disk_->Bytes(Full(path)); }

 private:
  static constexpr char kRoot[] = "\\suite\\home";
  static std::string Full(std::string_view path) { return std::string(kRoot) + "\\" + std::string(path); }

  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
};

}  // namespace

std::unique_ptr<FileSystemMachine> NewMemoryMachine() {
  return std::make_unique<MemoryMachine>();
}

}  // namespace orvane_test
