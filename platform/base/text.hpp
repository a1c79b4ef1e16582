// What every room does with text: ASCII letters without case, white space, control characters, UTF-8. On the
// standard library alone, so that every room may use it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace base {

// An ASCII letter in lower (or upper) case; any other character as it is.
constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char AsciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline std::string ToAsciiLower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), AsciiLower);
  return lower;
}
inline std::string ToAsciiUpper(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), AsciiUpper);
  return upper;
}

inline bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(),
                    [](char a, char b) { return a == b || AsciiLower(a) == AsciiLower(b); });
}

// Orders names that are the same but for the case of their ASCII letters as one; for maps.
struct LessIgnoringAsciiCase {
  using is_transparent = void;
  bool operator()(std::string_view left, std::string_view right) const {
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [](char a, char b) { return AsciiLower(a) < AsciiLower(b); });
  }
};

inline constexpr std::string_view kWhiteSpace = " \t\r\n";

// Without the characters of `what` at its ends; a view of the same text.
constexpr std::string_view Trimmed(std::string_view text, std::string_view what = kWhiteSpace) {
  const std::size_t first = text.find_first_not_of(what);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(what) - first + 1);
}

// U+0000 to U+001F, and U+007F.
constexpr bool IsControl(char c) {
  return (c >= '\0' && c < ' ') || c == '\x7F';
}
constexpr bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), IsControl);
}

// The byte in two hexadecimal digits, upper case.
inline void AppendHex(std::string& text, char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  text += kDigits[value >> 4];
  text += kDigits[value & 15];
}

// The text with each control character as "\x0D", for messages.
inline std::string WithControlsShown(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    if (IsControl(c)) {
      AppendHex(shown.append("\\x"), c);
    } else {
      shown += c;
    }
  }
  return shown;
}

// Whether the byte is the second or a later one of a UTF-8 character.
constexpr bool IsUtf8Continuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// The length in bytes of the well-formed UTF-8 character that a text begins with; 0 when there is none.
constexpr std::size_t Utf8Length(std::string_view text) {
  if (text.empty()) return 0;
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return 1;
  const std::size_t length = lead < 0xC2 ? 0U : lead < 0xE0 ? 2U : lead < 0xF0 ? 3U : lead < 0xF5 ? 4U : 0U;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsUtf8Continuation(text[i])) return 0;
  }
  // Overlong forms, surrogates and what lies beyond U+10FFFF.
  const auto second = static_cast<unsigned char>(text[1]);
  if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F)) return 0;
  if ((lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) return 0;
  return length;
}

constexpr bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace base
