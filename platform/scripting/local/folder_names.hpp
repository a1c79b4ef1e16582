// The names in folders, found without regard to case.
//
// A sweep may ask a folder of a hundred thousand entries for fifty thousand names that are not there; reading
// the folder for each of them would take hours. So the names of a large folder are kept, and kept up to date
// with the kernel's events for the folder. Where there are none (a disk that other machines write to),
// they are kept for as long as the folder's own time stamps say that nothing came or went.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/base/file_stamp.hpp"
#include "platform/scripting/local/folder_watch.hpp"

namespace Scripting::local {

class FolderNames {
 public:
  // The name in `folder` that equals `name` but for case, as the disk has it; of several the first in byte
  // order that `counts`. Nothing when there is none or no such folder; 70 when the folder may not be read.
  using Counts = std::function<bool(std::string_view name)>;
  std::optional<std::string> Find(const std::string& folder, const std::string& name,
                                  const Counts& counts = nullptr);

  // Calls `remove`, which deletes the item at `path`, and updates what is known of its folder. In a folder
  // that is not watched, a name that somebody else adds within the same step of the disk's clock may stay
  // unknown in other spellings than its own until the folder changes again.
  template <class Remove>
  void RemoveAndUpdate(const std::string& path, const Remove& remove) {
    const std::optional<std::size_t> known = BeforeRemoval(path);
    remove();
    if (known) AfterRemoval(path, *known);
  }

 private:
  struct Folder {
    std::string path;
    base::FileStamp stamp;
    std::optional<int> watch;
    std::unordered_map<std::string, std::vector<std::string>> names;  // by folded name, in byte order
  };

  const Folder* Known(const std::string& folder);
  void Keep(const std::string& folder);
  void Forget(std::vector<Folder>::iterator folder);
  void TakeChanges();
  std::optional<std::size_t> BeforeRemoval(const std::string& path);
  void AfterRemoval(const std::string& path, std::size_t known);

  std::vector<Folder> folders_;  // a handful
  FolderWatch watch_;
};

}  // namespace Scripting::local
