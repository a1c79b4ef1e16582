// The content of a file that is read anew each time it is asked for, and whether it is still the same.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace suite {

// Reads a file whenever it is asked, so that an edit counts at once; whoever has worked the content into
// something else needs to do that again only when other bytes came.
class RereadFile {
 public:
  enum class Outcome { Same, Other, TooLarge };

  // Reads the file, up to its end or past `most` bytes. Raises std::system_error (EISDIR for a folder) when
  // it cannot be read; the next content counts as other then.
  Outcome Read(const std::filesystem::path& file, std::size_t most);

  // The content as it was read last.
  std::string_view Content() const { return content_; }

 private:
  std::string file_;
  std::string content_;
  bool complete_ = false;  // content_ is the whole of file_, as read last
};

}  // namespace suite
