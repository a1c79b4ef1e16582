// A folder's entries, read with readdir.
#pragma once

#include <dirent.h>

#include <memory>

namespace base {

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
// As opendir and fdopendir return it; null, with errno set, when the folder cannot be opened.
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

}  // namespace base
