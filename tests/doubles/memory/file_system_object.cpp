#include "tests/doubles/memory/file_system_object.hpp"

#include <memory>

#include "platform/automation/runtime.hpp"
#include "platform/scripting/path_text.hpp"
#include "tests/doubles/memory/items.hpp"

namespace Scripting::memory {
namespace {

using automation::ErrorNumber;

bool NamesFolder(std::string_view path) {
  return !path.empty() && IsSeparator(path.back());
}

void Refuse(const Node& node, bool force) {
  if (node.held || (node.readOnly && !force)) Raise(ErrorNumber::PermissionDenied);
}

void Empty(Node& folder, bool force) {
  if (!force && folder.readOnly) Raise(ErrorNumber::PermissionDenied);
  if (folder.barred) Raise(ErrorNumber::PermissionDenied);
  while (!folder.children.empty()) {
    const NodePtr child = folder.children.begin()->second;
    if (child->isFolder) Empty(*child, force);
    Refuse(*child, force);
    folder.children.erase(folder.children.begin());
  }
}

}  // namespace

bool MemoryFileSystem::FolderExists(std::string_view path) const {
  try {
    const NodePtr node = disk_->Locate(path).node;
    return node && node->isFolder;
  } catch (const automation::Error&) {
    return false;
  }
}

bool MemoryFileSystem::FileExists(std::string_view path) const {
  try {
    const NodePtr node = disk_->Locate(path).node;
    return node && !node->isFolder && !NamesFolder(path);
  } catch (const automation::Error&) {
    return false;
  }
}

bool MemoryFileSystem::DriveExists(std::string_view drive) const {
  if (drive.empty()) return false;
  if (IsSeparator(drive.front())) return true;
  return disk_->HasDrive(DriveLetter(drive.size() == 1 ? std::string(drive) + ":" : std::string(drive)));
}

FilePtr MemoryFileSystem::GetFile(std::string_view path) const {
  MemoryDisk::Position position = disk_->Locate(path);
  if (!position.node || position.node->isFolder || NamesFolder(path)) Raise(ErrorNumber::FileNotFound);
  return MakeFile(disk_, std::move(position.node), std::move(position.shown));
}

FolderPtr MemoryFileSystem::GetFolder(std::string_view path) const {
  MemoryDisk::Position position = disk_->Locate(path);
  if (!position.node || !position.node->isFolder) Raise(ErrorNumber::PathNotFound);
  return MakeFolder(disk_, std::move(position.node), std::move(position.shown));
}

FolderPtr MemoryFileSystem::CreateFolder(std::string_view path) {
  MemoryDisk::Position position = disk_->Locate(path);
  if (position.node) Raise(ErrorNumber::FileAlreadyExists);
  return MakeFolder(disk_, NewItem(position, true), std::move(position.shown));
}

TextStreamPtr MemoryFileSystem::CreateTextFile(std::string_view path, bool overwrite) {
  const MemoryDisk::Position position = disk_->Locate(path);
  if (NamesFolder(path)) Raise(ErrorNumber::PathNotFound);
  if (position.node && !overwrite) Raise(ErrorNumber::FileAlreadyExists);
  if (!position.node) RequirePlace(position);
  return OpenNewFile(disk_, std::string(path), position.node);
}

TextStreamPtr MemoryFileSystem::OpenTextFile(std::string_view path, IOMode mode, bool create) {
  const MemoryDisk::Position position = disk_->Locate(path);
  if (NamesFolder(path)) Raise(ErrorNumber::PathNotFound);
  if (!position.node && !position.parent) Raise(ErrorNumber::PathNotFound);
  if (!position.node && !create) Raise(ErrorNumber::FileNotFound);
  return OpenStream(disk_, position.node ? position.node : NewItem(position, false), mode);
}

void MemoryFileSystem::DeleteFile(std::string_view path, bool force) {
  const MemoryDisk::Position position = disk_->Locate(path);
  if (!position.node || position.node->isFolder || NamesFolder(path)) Raise(ErrorNumber::FileNotFound);
  Refuse(*position.node, force);
  position.parent->children.erase(position.name);
}

void MemoryFileSystem::DeleteFolder(std::string_view path, bool force) {
  const MemoryDisk::Position position = disk_->Locate(path);
  if (!position.node || !position.node->isFolder) Raise(ErrorNumber::PathNotFound);
  Empty(*position.node, force);
  Refuse(*position.node, force);
  if (!position.parent) Raise(ErrorNumber::PermissionDenied);
  position.parent->children.erase(position.name);
}

std::string MemoryFileSystem::GetParentFolderName(std::string_view path) const {
  return ParentFolderName(path);
}

}  // namespace Scripting::memory
