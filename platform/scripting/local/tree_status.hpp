// What lies at a path: in the file tree, or in a layer over it.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/file_layer.hpp"

namespace Scripting::local {

// Null: the tree itself.
using LayerPtr = std::shared_ptr<base::FileLayer>;

// 0 or an errno value.
inline int Lstat(const LayerPtr& layer, const std::string& path, struct stat& status) {
  if (layer) return layer->Lstat(path, status);
  return lstat(path.c_str(), &status) == 0 ? 0 : errno;
}

inline int Stat(const LayerPtr& layer, const std::string& path, struct stat& status) {
  if (layer) return layer->Stat(path, status);
  return stat(path.c_str(), &status) == 0 ? 0 : errno;
}

inline int List(const LayerPtr& layer, const std::string& path, std::vector<base::FolderEntry>& entries) {
  return layer ? layer->List(path, entries) : base::ListFolder(path, entries);
}

}  // namespace Scripting::local
