#include "platform/msxml2/libxml/names.hpp"

#include <algorithm>

namespace MSXML2::libxml {
namespace {

constexpr std::size_t kOwnBits = 63;

std::size_t Hash(std::string_view name) {
  const auto at = [name](std::size_t i) {
    return static_cast<std::size_t>(static_cast<unsigned char>(name[i]));
  };
  const std::size_t size = name.size();
  return size + at(0) * 5 + at(size / 2) * 17 + at(size - 1) * 31 + at(size - size / 4 - 1) * 3;
}

}  // namespace

bool IsPlainName(std::string_view name) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
  return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [isLetter](char c) {
    return isLetter(c) || (c >= '0' && c <= '9');
  });
}

const Name* Names::Of(std::string_view name) {
  // Records have the same columns in the same order.
  if (last_ != nullptr && last_->next != nullptr && last_->next->text == name) return last_ = last_->next;
  Name* const found = Find(name);
  if (found == nullptr) return nullptr;
  if (last_ != nullptr) last_->next = found;
  return last_ = found;
}

Name* Names::Find(std::string_view name) {
  if (name.empty()) return nullptr;
  Name*& recent = recent_[Hash(name) % recent_.size()];
  if (recent != nullptr && recent->text == name) return recent;
  auto found = names_.find(name);
  if (found == names_.end()) {
    if (!IsPlainName(name)) return nullptr;
    const bool hasOwnBit = names_.size() < kOwnBits;
    const NameSet bit = NameSet{1} << (hasOwnBit ? names_.size() : kOwnBits);
    found = names_.emplace(name, Name{{}, bit, hasOwnBit, nullptr}).first;
    found->second.text = found->first;
  }
  recent = &found->second;
  return recent;
}

NameSet Names::BitOf(std::string_view name) const {
  const auto found = names_.find(name);
  return found == names_.end() ? 0 : found->second.bit;
}

}  // namespace MSXML2::libxml
