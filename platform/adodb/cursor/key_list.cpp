#include "platform/adodb/cursor/key_list.hpp"

#include <optional>

#include "platform/adodb/sql/parameters.hpp"

namespace ADODB::engine {
namespace {

std::optional<std::int64_t> WholeNumber(KeyView key) {
  if (key.size() != 1) return std::nullopt;
  const auto& value = key.front().Get();
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
  if (const auto* number = std::get_if<std::int16_t>(&value)) return *number;
  return std::nullopt;
}

}  // namespace

std::string KeyList::Bytes(KeyView key) {
  std::string bytes;
  for (const automation::Variant& value : key) Encode(value, bytes);
  return bytes;
}

void KeyList::Push(KeyView key) {
  if (numeric_) {
    if (const auto number = WholeNumber(key)) {
      numbers_.push_back(*number);
      return;
    }
    MakeGeneral();
  }
  width_ = key.size();
  offsets_.push_back(bytes_.size());
  for (const automation::Variant& value : key) Encode(value, bytes_);
}

void KeyList::Set(std::size_t index, KeyView key) {
  if (numeric_) {
    if (const auto number = WholeNumber(key)) {
      numbers_[index] = *number;
      return;
    }
    MakeGeneral();
  }
  offsets_[index] = bytes_.size();
  for (const automation::Variant& value : key) Encode(value, bytes_);
}

Row KeyList::Get(std::size_t index) const {
  Row key;
  if (numeric_) {
    key.push_back(OfWhole(numbers_[index]));
    return key;
  }
  const char* at = bytes_.data() + offsets_[index];
  for (std::size_t i = 0; i < width_; ++i) Decode(at, key.emplace_back());
  return key;
}

void KeyList::Clear() {
  *this = KeyList();
}

void KeyList::Truncate(std::size_t size) {
  if (size >= Size()) return;
  if (numeric_) {
    numbers_.resize(size);
    return;
  }
  bytes_.resize(offsets_[size]);
  offsets_.resize(size);
}

void KeyList::MakeGeneral() {
  numeric_ = false;
  for (const std::int64_t number : numbers_) {
    offsets_.push_back(bytes_.size());
    Encode(OfWhole(number), bytes_);
  }
  numbers_ = {};
}

}  // namespace ADODB::engine
