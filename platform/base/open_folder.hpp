// A folder's entries, read with readdir.
#pragma once

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace base {

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
// As opendir and fdopendir return it; null, with errno set, when the folder cannot be opened.
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

// Calls `use` with each entry but "." and "..", in no order. 0 or an errno value.
template <class Use>
int ForEachEntry(const OpenFolder& folder, const Use& use) {
  while (true) {
    errno = 0;
    const dirent* const entry = readdir(folder.get());
    if (entry == nullptr) return errno;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") use(*entry);
  }
}

struct FolderEntry {
  std::string name;
  unsigned char type;  // as in dirent::d_type
};

// Appends what is in the folder at a path. 0 or an errno value.
inline int ListFolder(const std::string& path, std::vector<FolderEntry>& entries) {
  const OpenFolder folder(opendir(path.c_str()));
  if (!folder) return errno;
  return ForEachEntry(folder, [&](const dirent& entry) { entries.push_back({entry.d_name, entry.d_type}); });
}

}  // namespace base
