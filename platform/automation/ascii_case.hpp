// Names that are the same but for the case of their ASCII letters, as those of classes, columns and files
// are.
#pragma once

#include <algorithm>
#include <string_view>

namespace automation {

// An ASCII letter in lower case; any other character as it is.
constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool EqualIgnoringAsciiCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(),
                    [](char a, char b) { return AsciiLower(a) == AsciiLower(b); });
}

}  // namespace automation
