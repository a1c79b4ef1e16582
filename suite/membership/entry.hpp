// What the directory holds about one entry.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace VnMembership {

// Attribute names are compared without regard to (ASCII) case.
struct IgnoreCase {
  using is_transparent = void;
  bool operator()(std::string_view left, std::string_view right) const;
};

// A text with its ASCII letters in lower case.
std::string Folded(std::string_view text);

struct Entry {
  std::string dn;
  std::map<std::string, std::vector<std::string>, IgnoreCase> attributes;

  // The first value of an attribute; empty text when there is none.
  std::string Value(std::string_view attribute) const;
};

// Whether one of the entry's uids is `userId`, ASCII letters compared without regard to case.
bool HasId(const Entry& entry, std::string_view userId);

}  // namespace VnMembership
