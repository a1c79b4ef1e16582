// A small file system of a test's own.
#pragma once

#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

namespace orvane_test {

class SmallDisk {
 public:
  // `size` as mount takes it, such as "size=64k".
  SmallDisk(std::filesystem::path folder, const std::string& size) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    mounted_ = mount("none", folder_.c_str(), "tmpfs", 0, size.c_str()) == 0;
    problem_ = std::strerror(errno);
  }
  ~SmallDisk() {
    if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  const std::filesystem::path& Folder() const { return folder_; }
  bool Mounted() const { return mounted_; }
  const std::string& Problem() const { return problem_; }

 private:
  std::filesystem::path folder_;
  bool mounted_ = false;
  std::string problem_;
};

}  // namespace orvane_test
