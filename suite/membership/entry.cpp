#include "suite/membership/entry.hpp"

#include <algorithm>

namespace VnMembership {

namespace {

char FoldedCharacter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool IgnoreCase::operator()(std::string_view left, std::string_view right) const {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [](char a, char b) { return FoldedCharacter(a) < FoldedCharacter(b); });
}

std::string Folded(std::string_view text) {
  std::string folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), FoldedCharacter);
  return folded;
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
