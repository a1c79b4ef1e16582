#include "suite/membership/entry.hpp"

#include <algorithm>

namespace VnMembership {

std::string Entry::Value(std::string_view attribute) const {
  const auto found = attributes.find(attribute);
  return found == attributes.end() || found->second.empty() ? std::string() : found->second.front();
}

bool HasId(const Entry& entry, std::string_view userId) {
  const auto ids = entry.attributes.find("uid");
  return ids != entry.attributes.end() &&
         std::any_of(ids->second.begin(), ids->second.end(),
                     [userId](const std::string& id) { return base::EqualsIgnoringAsciiCase(id, userId); });
}

}  // namespace VnMembership
