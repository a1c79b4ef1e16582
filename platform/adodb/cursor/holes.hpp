// The ordinals of a record set whose rows were deleted through it.
#pragma once

#include <cstddef>
#include <vector>

namespace ADODB::engine {

class Holes {
 public:
  void Add(std::size_t ordinal) {
    if (Has(ordinal)) return;
    if (gone_.size() <= ordinal) gone_.resize(ordinal + 1, false);
    gone_[ordinal] = true;
    ++count_;
  }
  bool Has(std::size_t ordinal) const { return ordinal < gone_.size() && gone_[ordinal]; }
  std::size_t Count() const { return count_; }

  // Forgets the ordinals from `size` on.
  void Truncate(std::size_t size) {
    while (gone_.size() > size) {
      if (gone_.back()) --count_;
      gone_.pop_back();
    }
  }

 private:
  std::vector<bool> gone_;
  std::size_t count_ = 0;
};

}  // namespace ADODB::engine
