#include "platform/adodb/sql/collation_key.hpp"

#include <cstddef>

namespace ADODB::engine {
namespace {

// A character of two UTF-8 bytes, U+0080 to U+07FF.
unsigned Character(unsigned char first, unsigned char second) {
  return (static_cast<unsigned>(first & 0x1F) << 6) | (second & 0x3Fu);
}

void Append(unsigned character, std::string& text) {
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else {
    text += static_cast<char>(0xC0 | (character >> 6));
    text += static_cast<char>(0x80 | (character & 0x3F));
  }
}

unsigned LowerCase(unsigned c) {
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 0x20;       // Latin-1
  if (c >= 0x100 && c <= 0x137 && c != 0x130) return c | 1;       // Latin Extended-A: pairs, upper case first
  if (c >= 0x139 && c <= 0x148) return (c & 1) != 0 ? c + 1 : c;  // ... odd upper case
  if (c >= 0x14A && c <= 0x177) return c | 1;
  if (c == 0x178) return 0xFF;
  if (c >= 0x179 && c <= 0x17E) return (c & 1) != 0 ? c + 1 : c;
  if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return c + 0x20;  // Greek
  if (c >= 0x410 && c <= 0x42F) return c + 0x20;                // Cyrillic
  if (c >= 0x400 && c <= 0x40F) return c + 0x50;
  return c;
}

// The bare letters of U+00C0 to U+017F; a blank where there is none.
constexpr std::string_view kBareLetters =
    "aaaaaa ceeeeiiii nooooo  uuuuy  aaaaaa ceeeeiiii nooooo  uuuuy y"
    "aaaaaaccccccccdd  eeeeeeeeeegggggggghh  iiiiiiiii   jjkk llllll "
    "   nnnnnn   oooooo  rrrrrrsssssssstttt  uuuuuuuuuuuuwwyyyzzzzzz ";

unsigned BareLetter(unsigned c) {
  if (c < 0xC0 || c - 0xC0 >= kBareLetters.size()) return c;
  const char bare = kBareLetters[c - 0xC0];
  return bare == ' ' ? c : static_cast<unsigned char>(bare);
}

std::string Reduced(std::string_view utf8, bool accentsToo) {
  std::string text;
  text.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto first = static_cast<unsigned char>(utf8[i]);
    if (first >= 'A' && first <= 'Z') {
      text += static_cast<char>(first - 'A' + 'a');
    } else if (first >= 0xC2 && first < 0xE0 && i + 1 < utf8.size()) {
      const unsigned lower = LowerCase(Character(first, static_cast<unsigned char>(utf8[++i])));
      Append(accentsToo ? BareLetter(lower) : lower, text);
    } else {
      text += static_cast<char>(first);
    }
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
