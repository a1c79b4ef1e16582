// Writing a file so that its readers see either the old content or the whole new one, whatever happens
// meanwhile.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

namespace MSXML2::libxml {

// The new content is written to a file beside the target and takes its place in Commit. Every failure raises
// the platform's number for it (70, 76, 61, 57, 52, 75), leaves the target as it was and removes the file
// beside it.
class FileReplacement {
 public:
  // `target` is the operating system's path, `existing` what lies there now (a link not followed). A target
  // that nobody may write is refused with 70 at once.
  FileReplacement(std::string target, std::optional<struct stat> existing);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  void Write(std::string_view data);
  // Content and name are on the disk when it returns.
  void Commit();

 private:
  std::string target_;
  std::string folder_;
  std::string beside_;
  int descriptor_ = -1;
};

}  // namespace MSXML2::libxml
