// A file that grows piece by piece, with room kept for its last pieces.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/base/descriptor.hpp"

namespace base {

// Each piece is in the file, whole, or not at all. Beside the file lies another one, NAME.reserve, which
// takes up room on the disk until that is full: then it goes, and the next pieces fit into its place.
// Failures raise std::system_error.
class GrowingFile {
 public:
  // Makes the file, which must not exist, and the reserve; `mode` whatever the umask says. Both names are on
  // the disk afterwards.
  GrowingFile(std::string path, mode_t mode, std::size_t reserveBytes);
  // Removes the reserve.
  ~GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  // The piece reaches the operating system: it survives the end of the process, however that ends.
  void Append(std::string_view piece);
  // What was appended so far survives a power cut. May be called on another thread.
  void Sync() const;

  // Whether the reserve is being used up: there is no room for much more.
  bool IsOutOfRoom() const { return outOfRoom_; }

  const std::string& Path() const { return path_; }

  // Whether the name is that of a reserve: one that a killed process has left is only in the way.
  static bool IsReserve(std::string_view name);

 private:
  // The whole piece or nothing of it: half a piece would spoil those that still fit. 0 or an errno value.
  int Write(std::string_view piece) const;

  const std::string path_;
  const std::string reserve_;
  Descriptor descriptor_;
  off_t size_ = 0;
  bool outOfRoom_ = false;
};

}  // namespace base
