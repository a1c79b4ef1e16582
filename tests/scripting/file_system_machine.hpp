// What the file-system tests need to know about the machine under the object: one for the real file tree, one
// for the tree in memory.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace orvane_test {

class FileSystemMachine {
 public:
  FileSystemMachine() = default;
  FileSystemMachine(const FileSystemMachine&) = delete;
  FileSystemMachine& operator=(const FileSystemMachine&) = delete;
  virtual ~FileSystemMachine() = default;

  virtual Scripting::FileSystemObjectPtr NewFileSystem() = 0;

  // A folder of the test's own as job code writes it, without a separator at its end. Drive "X:" stands for
  // the folder "drive" in it; no other drive exists.
  virtual std::string Root() const = 0;

  // Paths below are relative to the root, with "\".
  virtual void AddFolder(std::string_view path) = 0;
  virtual void AddFile(std::string_view path, std::string_view bytes) = 0;
  virtual void SetAccessed(std::string_view path, automation::DateTime accessed) = 0;
  virtual void SetReadOnly(std::string_view path) = 0;
  virtual bool Exists(std::string_view path) const = 0;  // in exactly this spelling
  virtual std::string Bytes(std::string_view path) const = 0;
};

std::unique_ptr<FileSystemMachine> NewLocalMachine();
std::unique_ptr<FileSystemMachine> NewLayeredMachine();  // a layer over the real file tree
std::unique_ptr<FileSystemMachine> NewPendingMachine();  // new files wait for their names
std::unique_ptr<FileSystemMachine> NewMemoryMachine();

}  // namespace orvane_test
