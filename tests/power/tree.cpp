#include "tests/power/tree.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <system_error>
#include <vector>

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

void Require(bool done, const fs::path& path) {
  if (!done) throw std::system_error(errno, std::generic_category(), path.string());
}

std::string ReadFile(const fs::path& path, std::size_t size) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOATIME);
  Require(file >= 0, path);
  std::string bytes(size, '\0');
  const bool whole = read(file, bytes.data(), size) == static_cast<ssize_t>(size);
  close(file);
  Require(whole, path);
  return bytes;
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  Require(file >= 0, path);
  const bool whole = write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  close(file);
  Require(whole, path);
}

TreeItem ReadItem(const fs::path& path) {
  struct stat status {};
  Require(lstat(path.c_str(), &status) == 0, path);
  TreeItem item{status.st_mode, {}, status.st_ino, {{status.st_atim, status.st_mtim}}};
  if (S_ISREG(status.st_mode)) item.bytes = ReadFile(path, static_cast<std::size_t>(status.st_size));
  if (S_ISLNK(status.st_mode)) item.bytes = fs::read_symlink(path).string();
  return item;
}

}  // namespace

Tree ReadTree(const fs::path& folder) {
  Tree tree{{"", ReadItem(folder)}};
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    tree[entry.path().lexically_relative(folder).string()] = ReadItem(entry.path());
  }
  return tree;
}

void WriteTree(const Tree& tree, const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
  for (const auto& [name, item] : tree) {
    const fs::path path = name.empty() ? folder : folder / name;
    if (S_ISLNK(item.mode)) {
      fs::create_symlink(item.bytes, path);
    } else if (S_ISREG(item.mode)) {
      WriteFile(path, item.bytes);
    } else {
      fs::create_directory(path);
    }
  }
  // From the leaves up: to make an entry changes its folder's times.
  for (auto at = tree.rbegin(); at != tree.rend(); ++at) {
    const fs::path path = at->first.empty() ? folder : folder / at->first;
    const TreeItem& item = at->second;
    if (!S_ISLNK(item.mode)) Require(chmod(path.c_str(), item.mode & 07777U) == 0, path);
    if (!item.times) continue;
    Require(utimensat(AT_FDCWD, path.c_str(), item.times->data(), AT_SYMLINK_NOFOLLOW) == 0, path);
  }
}

}  // namespace orvane_test
