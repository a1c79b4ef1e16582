// Space on disk for contents that nobody else is to see.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/descriptor.hpp"

namespace base {

// A file without a name: it goes with the object, or with the process however that ends. Space that is given
// back is used again.
class ScratchFile {
 public:
  struct Piece {
    off_t offset = 0;
    std::size_t size = 0;
  };

  // `onFull` is called with the errno value when bytes cannot be kept. FAILS: std::system_error.
  ScratchFile(const std::string& folder, std::function<void(int error)> onFull);

  // Appends the bytes to a content.
  void Write(std::string_view bytes, std::vector<Piece>& content);
  std::string Read(const std::vector<Piece>& content) const;
  void GiveBack(const std::vector<Piece>& content);

  static std::size_t SizeOf(const std::vector<Piece>& content);

 private:
  Piece Take(std::size_t size);

  Descriptor file_;
  std::function<void(int)> onFull_;
  off_t end_ = 0;
  std::multimap<std::size_t, off_t> free_;  // offsets by size
};

}  // namespace base
