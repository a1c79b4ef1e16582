// A file's content, read again only when the file may have changed.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/file_stamp.hpp"

namespace suite {

// Checks the file on every call, so that an edit counts at once, and says whether the content differs, so
// that callers parse it again only then. A file is not read again while it has the stamp that it was read
// with, unless it had been changed shortly before.
class RereadFile {
 public:
  enum class Outcome { Unchanged, Changed, TooLarge };

  explicit RereadFile(std::chrono::nanoseconds settledAfter = base::kAnyGranularity)
      : settledAfter_(settledAfter) {}

  // Reads the file, up to its end or past `most` bytes. Raises std::system_error (EISDIR for a folder, EINVAL
  // for a pipe or a device, which is not waited for) when it cannot be read; the next content counts as
  // changed then.
  Outcome Read(const std::filesystem::path& file, std::size_t most);
  // The same for what NativePath gives for a suite's path; it is looked for in other spellings only where the
  // file is not as it was.
  Outcome Read(std::string_view path, std::string_view base, std::size_t most);

  // The file that was read last, or could not be, and its content.
  const std::string& File() const { return file_; }
  std::string_view Content() const { return content_; }

 private:
  bool IsAsItWas(const std::string& file, std::size_t most) const;

  std::chrono::nanoseconds settledAfter_;
  std::string file_;
  std::string content_;
  bool complete_ = false;                 // content_ is the whole of file_, as read last
  std::optional<base::FileStamp> stamp_;  // of file_ before it was read; nothing while it had not settled
};

}  // namespace suite
