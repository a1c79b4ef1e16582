// What the directory holds about one entry.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/text.hpp"

namespace VnMembership {

struct Entry {
  std::string dn;
  std::map<std::string, std::vector<std::string>, base::LessIgnoringAsciiCase> attributes;

  // The first value of an attribute; empty text when there is none.
  std::string Value(std::string_view attribute) const;
};

// Whether one of the entry's uids is `userId`, ASCII letters compared without regard to case.
bool HasId(const Entry& entry, std::string_view userId);

}  // namespace VnMembership
