// What a transformation may use up: memory and time.
#pragma once

#include <libxslt/xsltInternals.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace MSXML2::libxml {

struct Limits {
  std::size_t memory;
  std::chrono::milliseconds time;
};

// Makes the library's allocations pass through the budget of their thread. Called before a Budget is made;
// once is enough.
void WatchAllocations();

// While it lives, what the library allocates on this thread for the transformation counts. At the limit the
// transformation is told to stop, which it does at its next step; a large piece of memory beyond the limit is
// refused at once. Steps need not be many for either: a text that is doubled by each of thirty recursions is
// gigabytes long.
class Budget {
 public:
  Budget(const Limits& limits, xsltTransformContext& context);
  ~Budget();
  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;

  // Why the transformation was stopped; empty when it was not.
  const std::string& Exceeded() const { return exceeded_; }

  // For the allocator: whether `bytes` more may be had, and what was given and taken back.
  bool Allow(std::size_t bytes) {
    const bool looks = bytes >= kLarge || ++asked_ % kAskedBetweenClocks == 0 || !IsWithin(bytes);
    return !looks || AllowWithALook(bytes);
  }
  void Took(std::size_t bytes) { used_ += static_cast<std::ptrdiff_t>(bytes); }
  void Returned(std::size_t bytes) { used_ -= static_cast<std::ptrdiff_t>(bytes); }

 private:
  // Small pieces are given beyond the limit as well: the library gets out of a failed large one more surely,
  // and until its next step it asks for few of them.
  static constexpr std::size_t kLarge = 65'536;
  static constexpr unsigned int kAskedBetweenClocks = 256;

  bool IsWithin(std::size_t bytes) const {
    return used_ + static_cast<std::ptrdiff_t>(bytes) <= static_cast<std::ptrdiff_t>(limits_.memory);
  }
  bool AllowWithALook(std::size_t bytes);
  void Stop(std::string why);

  Limits limits_;
  xsltTransformContext& context_;
  std::chrono::steady_clock::time_point end_;
  std::ptrdiff_t used_ = 0;  // below 0 where more of the older memory was given back
  unsigned int asked_ = 0;
  std::string exceeded_;
  Budget* outer_;
  xmlGenericErrorFunc errors_;
  void* errorsContext_;
};

}  // namespace MSXML2::libxml
