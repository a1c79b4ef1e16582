#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>

#include "platform/scripting/local/file_system_object.hpp"
#include "tests/scripting/file_system_machine.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

std::string WithSlashes(std::string_view path) {
  std::string native(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

class LocalMachine : public FileSystemMachine {
 public:
  enum class Kind { Plain, Layered, Pending };

  // With a layer the file-system objects work in it, and what the machine adds lies below it. With pending
  // files the machine shows them before it looks.
  explicit LocalMachine(Kind kind) {
    std::filesystem::create_directory(folder_.Path() / "drive");
    if (kind == Kind::Layered) layer_ = std::make_shared<base::FileLayer>("/tmp", [](int) { std::abort(); });
    if (kind == Kind::Pending) pending_ = std::make_shared<base::PendingFiles>();
  }

  Scripting::FileSystemObjectPtr NewFileSystem() override {
    return std::make_shared<Scripting::local::LocalFileSystem>(
        Scripting::local::DriveTable{{'X', (folder_.Path() / "drive").string()}}, nullptr, layer_, pending_);
  }

  std::string Root() const override {
    std::string root = folder_.Path().string();
    std::replace(root.begin(), root.end(), '/', '\\');
    return root;
  }

  void AddFolder(std::string_view path) override { std::filesystem::create_directories(Native(path)); }

  void AddFile(std::string_view path, std::string_view bytes) override {
    std::filesystem::create_directories(Native(path).parent_path());
    std::ofstream(Native(path), std::ios::binary) << bytes;
  }

  void SetAccessed(std::string_view path, automation::DateTime accessed) override {
    const automation::DateTimeParts parts = accessed.Parts();
    std::tm local{};
    local.tm_year = parts.year - 1900;
    local.tm_mon = parts.month - 1;
    local.tm_mday = parts.day;
    local.tm_hour = parts.hour;
    local.tm_min = parts.minute;
    local.tm_sec = parts.second;
    local.tm_isdst = -1;
    const timespec times[2] = {{std::mktime(&local), 0}, {0, UTIME_OMIT}};
    utimensat(AT_FDCWD, Native(path).c_str(), times, 0);
  }

  void SetReadOnly(std::string_view path) override {
    namespace fs = std::filesystem;
    fs::permissions(Native(path), fs::perms::owner_write, fs::perm_options::remove);
  }

  bool Exists(std::string_view path) const override {
    if (pending_) pending_->Publish();
    struct stat status {};
    return Scripting::local::Lstat(layer_, Native(path).string(), status) == 0;
  }

  std::string Bytes(std::string_view path) const override {
    if (pending_) pending_->Publish();
    std::string content;
    if (layer_) {
      layer_->Read(Native(path).string(), content);
      return content;
    }
    std::ostringstream bytes;
    bytes << std::ifstream(Native(path), std::ios::binary).rdbuf();
    return bytes.str();
  }

 private:
  std::filesystem::path Native(std::string_view path) const { return folder_.Path() / WithSlashes(path); }

  TemporaryFolder folder_;
  Scripting::local::LayerPtr layer_;
  std::shared_ptr<base::PendingFiles> pending_;
};

}  // namespace

std::unique_ptr<FileSystemMachine> NewLocalMachine() {
  return std::make_unique<LocalMachine>(LocalMachine::Kind::Plain);
}

std::unique_ptr<FileSystemMachine> NewLayeredMachine() {
  return std::make_unique<LocalMachine>(LocalMachine::Kind::Layered);
}

std::unique_ptr<FileSystemMachine> NewPendingMachine() {
  return std::make_unique<LocalMachine>(LocalMachine::Kind::Pending);
}

}  // namespace orvane_test
