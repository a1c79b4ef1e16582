// A folder's content in memory: read from a disk, put back on one.
#pragma once

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace orvane_test {

struct TreeItem {
  mode_t mode = 0;         // type and permissions
  std::string bytes;       // a file's content, a link's target
  std::uint64_t node = 0;  // inode number where it was read
  // Last access and change; without them, those of the moment when it is written.
  std::optional<std::array<timespec, 2>> times;
};

// By path below the folder, which is "" itself.
using Tree = std::map<std::string, TreeItem>;

// Leaves the times of last access as they are.
Tree ReadTree(const std::filesystem::path& folder);
// The folder holds the tree afterwards, and nothing else. It must exist.
void WriteTree(const Tree& tree, const std::filesystem::path& folder);

}  // namespace orvane_test
