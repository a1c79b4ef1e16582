// The calls of this process that put files on the disk, as they are made.
#pragma once

#include <string>
#include <vector>

namespace orvane_test {

// While it lives: "fsync PATH" and "rename FROM TO", in order. One at a time.
class WatchedCalls {
 public:
  WatchedCalls();
  ~WatchedCalls();
  WatchedCalls(const WatchedCalls&) = delete;
  WatchedCalls& operator=(const WatchedCalls&) = delete;

  const std::vector<std::string>& Seen() const { return seen_; }

 private:
  std::vector<std::string> seen_;
};

}  // namespace orvane_test
