// The keys of a cursor's rows, as far as they are known.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "platform/adodb/cursor/key_list.hpp"

namespace ADODB::engine {

// In the order of the rows. The first ones ascend; what was added or changed through the set stands where it
// stands.
class KnownKeys {
 public:
  const KeyList& List() const { return keys_; }
  std::size_t Size() const { return keys_.Size(); }
  // Keys before this ordinal ascend.
  std::size_t SortedCount() const { return sorted_; }
  std::string BytesAt(std::size_t ordinal) const { return KeyList::Bytes(keys_.Get(ordinal)); }
  // The last key; empty when none is known.
  Row Last() const { return Size() == 0 ? Row() : keys_.Get(Size() - 1); }

  // A key that comes next in its order when `ascends`.
  void Push(KeyView key, bool ascends) {
    if (ascends && sorted_ == keys_.Size()) ++sorted_;
    keys_.Push(key);
  }
  void Change(std::size_t ordinal, KeyView key) {
    keys_.Set(ordinal, key);
    sorted_ = std::min(sorted_, ordinal);
  }
  // Keeps the first `size` keys. REQUIRES: none was changed, or `size` is 0.
  void Truncate(std::size_t size) {
    if (size == 0) {
      keys_.Clear();
    } else {
      keys_.Truncate(size);
    }
    sorted_ = std::min(sorted_, size);
  }

 private:
  KeyList keys_;
  std::size_t sorted_ = 0;
};

}  // namespace ADODB::engine
