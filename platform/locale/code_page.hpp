// A single-byte code page as two tables.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>

namespace automation {

class CodePage {
 public:
  // Raises 5 when ICU does not know the page or it is not a single-byte one.
  explicit CodePage(const std::string& name);

  // A character that the page lacks, or a byte that is no UTF-8, becomes "?".
  std::string FromUtf8(std::string_view utf8) const;
  // A byte that the page leaves undefined becomes U+FFFD.
  std::string ToUtf8(std::string_view bytes) const;

 private:
  std::array<std::string, 256> characters_;  // in UTF-8
  std::unordered_map<char32_t, char> bytes_;
  bool hasAscii_ = true;  // in the usual places
};

}  // namespace automation
