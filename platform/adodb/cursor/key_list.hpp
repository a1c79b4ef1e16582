// The keys of the rows of a cursor, in order: eight bytes each for whole numbers.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "platform/adodb/cursor/row_codec.hpp"

namespace ADODB::engine {

using KeyView = std::span<const automation::Variant>;

class KeyList {
 public:
  std::size_t Size() const { return numeric_ ? numbers_.size() : offsets_.size(); }
  void Push(KeyView key);
  void Set(std::size_t index, KeyView key);
  Row Get(std::size_t index) const;
  void Clear();
  // Keeps the first `size` keys. REQUIRES: none was Set.
  void Truncate(std::size_t size);

  // Single whole numbers: the list can be compared and counted with. True for an empty list.
  bool IsNumeric() const { return numeric_; }
  std::int64_t Number(std::size_t index) const { return numbers_[index]; }

  // The bytes that stand for a key; equal keys have equal bytes.
  static std::string Bytes(KeyView key);

 private:
  void MakeGeneral();

  bool numeric_ = true;
  std::size_t width_ = 1;
  std::deque<std::int64_t> numbers_;  // a vector would hold them twice whenever it grows
  std::vector<std::uint64_t> offsets_;
  std::string bytes_;
};

}  // namespace ADODB::engine
