// What lies at a path: in the file tree, or in a layer over it.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/file_layer.hpp"
#include "platform/base/open_folder.hpp"

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

// Calls `use` with the name of each entry of a folder, but "." and "..", and its type as in dirent::d_type;
// in no order. 0 or an errno value.
template <class Use>
int ForEachChild(const LayerPtr& layer, const std::string& path, const Use& use) {
  if (!layer) {
    const base::OpenFolder folder(opendir(path.c_str()));
    if (!folder) return errno;
    return base::ForEachEntry(folder, [&](const dirent& entry) { use(entry.d_name, entry.d_type); });
  }
  std::vector<base::FolderEntry> entries;
  if (const int failure = layer->List(path, entries)) return failure;
  for (const base::FolderEntry& entry : entries) use(entry.name.c_str(), entry.type);
  return 0;
}

}  // namespace Scripting::local
