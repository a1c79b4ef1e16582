#include "platform/adodb/sql/collation_key.hpp"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>

namespace ADODB::engine {
namespace {

// The bare letters of U+00C0 to U+017F; a blank where there is none.
constexpr std::string_view kBareLetters =
    "aaaaaa ceeeeiiii nooooo  uuuuy  aaaaaa ceeeeiiii nooooo  uuuuy y"
    "aaaaaaccccccccdd  eeeeeeeeeegggggggghh  iiiiiiiii   jjkk llllll "
    "   nnnnnn   oooooo  rrrrrrsssssssstttt  uuuuuuuuuuuuwwyyyzzzzzz ";

UChar32 BareLetter(UChar32 c) {
  constexpr UChar32 kFirst = 0xC0;
  const auto place = static_cast<std::size_t>(c - kFirst);
  return c < kFirst || place >= kBareLetters.size() || kBareLetters[place] == ' ' ? c : kBareLetters[place];
}

// An I with a dot is no other case of the plain one.
UChar32 LowerCase(UChar32 c) {
  constexpr UChar32 kDottedI = 0x130;
  return c == kDottedI ? c : u_tolower(c);
}

std::string Reduced(std::string_view utf8, bool accentsToo) {
  std::string text;
  text.reserve(utf8.size());
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(utf8.data());
  const auto length = static_cast<std::int64_t>(utf8.size());
  for (std::int64_t at = 0; at < length;) {
    const std::int64_t start = at;
    UChar32 c = 0;
    U8_NEXT(bytes, at, length, c);
    if (c < 0) {  // what is no UTF-8 stays as it is
      text.append(utf8, static_cast<std::size_t>(start), static_cast<std::size_t>(at - start));
      continue;
    }
    c = LowerCase(c);
    if (accentsToo) c = BareLetter(c);
    std::uint8_t character[U8_MAX_LENGTH];
    std::size_t count = 0;
    U8_APPEND_UNSAFE(character, count, static_cast<std::uint32_t>(c));
    text.append(character, character + count);
  }
  return text;
}

}  // namespace

std::string WithoutCase(std::string_view utf8) {
  return Reduced(utf8, false);
}
std::string WithoutCaseAndAccents(std::string_view utf8) {
  return Reduced(utf8, true);
}

}  // namespace ADODB::engine
