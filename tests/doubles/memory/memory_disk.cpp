#include "tests/doubles/memory/memory_disk.hpp"

#include <algorithm>
#include <cstddef>

#include "platform/scripting/path_text.hpp"
#include "tests/doubles/memory/items.hpp"

namespace Scripting::memory {
namespace {

using automation::ErrorNumber;

// The parts after the drive, "." and ".." worked out.
std::vector<std::string> Parts(std::string_view path) {
  if (DriveLetter(path) != 0) path.remove_prefix(2);
  std::vector<std::string> parts;
  std::string part;
  const auto finish = [&parts, &part] {
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    part.clear();
  };
  for (const char c : path) {
    if (IsSeparator(c)) {
      finish();
    } else {
      part += c;
    }
  }
  finish();
  return parts;
}

NodePtr Child(const Node& folder, const std::string& name) {
  if (const auto exact = folder.children.find(name); exact != folder.children.end()) return exact->second;
  const std::string wanted = FoldedName(name);
  for (const auto& [candidate, node] : folder.children) {
    if (FoldedName(candidate) == wanted) return node;
  }
  return nullptr;
}

void Collect(const Node& folder, const std::string& path, std::vector<std::string>& paths) {
  for (const auto& [name, node] : folder.children) {
    const std::string child = path + "\\" + name;
    paths.push_back(child);
    Collect(*node, child, paths);
  }
}

NodePtr NewFolder(std::string name) {
  auto folder = std::make_shared<Node>();
  folder->name = std::move(name);
  folder->isFolder = true;
  return folder;
}

}  // namespace

MemoryDisk::MemoryDisk() : root_(NewFolder({})) {}

void MemoryDisk::AddDrive(char letter) {
  drives_.try_emplace(DriveLetter(std::string{letter, ':'}), NewFolder({}));
}

void MemoryDisk::MapDrive(char letter, std::string_view folder) {
  const NodePtr node = Locate(folder).node;
  if (!node || !node->isFolder) Raise(ErrorNumber::PathNotFound);
  drives_[DriveLetter(std::string{letter, ':'})] = node;
}

MemoryDisk::Position MemoryDisk::Locate(std::string_view path) const {
  if (path.empty()) Raise(ErrorNumber::InvalidProcedureCall);
  if (path.find('\0') != std::string_view::npos) RefuseControls(path);
  Position position;
  const char drive = DriveLetter(path);
  if (drive != 0) {
    const auto found = drives_.find(drive);
    if (found == drives_.end()) return position;
    position.node = found->second;
    position.shown = {drive, ':'};
  } else {
    position.node = root_;
  }
  const std::vector<std::string> parts = Parts(path);
  for (auto part = parts.begin(); part != parts.end(); ++part) {
    const NodePtr parent = position.node;
    if (!parent || !parent->isFolder) return {};
    if (parent->barred) Raise(ErrorNumber::PermissionDenied);
    position.node = Child(*parent, *part);
    const bool exact = position.node && position.node->name == *part;
    if (!exact && base::HasControl(*part)) RefuseControls(path);
    if (!position.node && std::any_of(part, parts.end(), base::HasControl)) RefuseControls(path);
    position.parent = parent;
    position.name = position.node ? position.node->name : *part;
    position.shown += "\\" + position.name;
  }
  if (parts.empty()) position.shown += "\\";
  return position;
}

NodePtr MemoryDisk::MakeFolders(const std::vector<std::string>& parts, NodePtr start) const {
  NodePtr folder = std::move(start);
  for (const std::string& part : parts) {
    NodePtr& place = folder->children[part];
    if (!place) place = NewFolder(part);
    NodePtr next = place;
    if (!next->isFolder) Raise(ErrorNumber::PathNotFound);
    folder = std::move(next);
  }
  return folder;
}

void MemoryDisk::AddFolder(std::string_view path) {
  const char drive = DriveLetter(path);
  MakeFolders(Parts(path), drive != 0 ? drives_.at(drive) : root_);
}

void MemoryDisk::AddFile(std::string_view path, std::string bytes, automation::DateTime accessed) {
  std::vector<std::string> parts = Parts(path);
  if (parts.empty()) Raise(ErrorNumber::BadFileName);
  const std::string name = parts.back();
  parts.pop_back();
  const char drive = DriveLetter(path);
  const NodePtr folder = MakeFolders(parts, drive != 0 ? drives_.at(drive) : root_);
  NodePtr& file = folder->children[name];
  if (!file) file = std::make_shared<Node>();
  if (file->isFolder) Raise(ErrorNumber::FileAlreadyExists);
  file->name = name;
  file->bytes = std::move(bytes);
  file->accessed = accessed;
}

Node& MemoryDisk::Get(std::string_view path, bool folderPreferred) const {
  const Position position = Locate(path);
  if (!position.node) Raise(folderPreferred ? ErrorNumber::PathNotFound : ErrorNumber::FileNotFound);
  return *position.node;
}

void MemoryDisk::SetAccessed(std::string_view path, automation::DateTime accessed) {
  Get(path, false).accessed = accessed;
}
void MemoryDisk::SetReadOnly(std::string_view path, bool readOnly) {
  Get(path, false).readOnly = readOnly;
}
void MemoryDisk::SetHeld(std::string_view path, bool held) {
  Get(path, false).held = held;
}
void MemoryDisk::SetBarred(std::string_view path, bool barred) {
  Get(path, true).barred = barred;
}

bool MemoryDisk::Exists(std::string_view path) const {
  return Locate(path).node != nullptr;
}

std::string MemoryDisk::Bytes(std::string_view path) const {
  return Get(path, false).bytes;
}

std::vector<std::string> MemoryDisk::Paths() const {
  std::vector<std::string> paths;
  Collect(*root_, "", paths);
  // A drive that stands for a folder of the tree has been listed with it.
  for (const auto& [letter, folder] : drives_) {
    if (folder->name.empty()) Collect(*folder, std::string{letter, ':'}, paths);
  }
  return paths;
}

std::vector<std::string> MemoryDisk::PathsUnder(std::string_view path) const {
  const Position position = Locate(path);
  if (!position.node) Raise(ErrorNumber::PathNotFound);
  std::vector<std::string> paths;
  Collect(*position.node, position.parent ? position.shown : std::string(), paths);
  return paths;
}

}  // namespace Scripting::memory
