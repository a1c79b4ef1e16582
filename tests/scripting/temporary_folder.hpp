// A folder of the machine's file tree that goes when the test ends.
#pragma once

#include <errno.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace orvane_test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvane-scripting-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
      throw std::filesystem::filesystem_error("mkdtemp", std::error_code(errno, std::generic_category()));
    path_ = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace orvane_test
