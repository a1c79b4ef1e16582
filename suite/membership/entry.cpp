#include "suite/membership/entry.hpp"

#include <algorithm>

namespace VnMembership {

bool IgnoreCase::operator()(std::string_view left, std::string_view right) const {
  const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [folded](char a, char b) { return folded(a) < folded(b); });
}

std::string Entry::Value(std::string_view attribute) const {
  const auto found = attributes.find(attribute);
  return found == attributes.end() || found->second.empty() ? std::string() : found->second.front();
}

bool HasId(const Entry& entry, std::string_view userId) {
  const auto ids = entry.attributes.find("uid");
  return ids != entry.attributes.end() &&
         std::any_of(ids->second.begin(), ids->second.end(), [userId](const std::string& id) {
           return !IgnoreCase()(id, userId) && !IgnoreCase()(userId, id);
         });
}

}  // namespace VnMembership
