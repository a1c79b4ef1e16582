#include "platform/msxml2/dom/characters.hpp"

#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/msxml2/failure.hpp"

namespace MSXML2::dom {
namespace {

struct Decoded {
  std::uint32_t character = 0;
  std::size_t length = 0;  // 0: not valid UTF-8
};

Decoded Decode(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
  };
  const auto follows = [&](std::size_t i) { return i < text.size() && (byte(i) & 0xC0U) == 0x80U; };
  const std::uint32_t first = byte(0);
  if (first < 0x80) return {first, 1};
  if (first >= 0xC2 && first <= 0xDF && follows(1)) return {(first & 0x1FU) << 6 | (byte(1) & 0x3FU), 2};
  if (first >= 0xE0 && first <= 0xEF && follows(1) && follows(2)) {
    const std::uint32_t character = (first & 0x0FU) << 12 | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU);
    if (character >= 0x800) return {character, 3};
  }
  if (first >= 0xF0 && first <= 0xF4 && follows(1) && follows(2) && follows(3)) {
    const std::uint32_t character =
        (first & 0x07U) << 18 | (byte(1) & 0x3FU) << 12 | (byte(2) & 0x3FU) << 6 | (byte(3) & 0x3FU);
    if (character >= 0x10000 && character <= 0x10FFFF) return {character, 4};
  }
  return {};
}

bool AllowedByXml(std::uint32_t character) {
  if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
  if (character >= 0xD800 && character <= 0xDFFF) return false;
  return character != 0xFFFE && character != 0xFFFF;
}

// Whether the eight bytes are ASCII without control characters, as most are.
bool IsPlain(const char* eight) {
  std::uint64_t word = 0;
  std::memcpy(&word, eight, sizeof word);
  return (((word - 0x2020202020202020U) | word) & 0x8080808080808080U) == 0;
}

[[noreturn]] void RefuseCharacter(const Decoded& decoded, std::string_view text, std::size_t at,
                                  const char* source) {
  char what[64];
  if (decoded.length == 0) {
    std::snprintf(what, sizeof what, "byte 0x%02X, not UTF-8", static_cast<unsigned>(text[at]) & 0xFFU);
  } else {
    std::snprintf(what, sizeof what, "U+%04X", decoded.character);
  }
  Fail("An invalid character was found in text content (" + std::string(what) + " at position " +
           std::to_string(at) + ").",
       source);
}

constexpr std::array<bool, 256> kNameCharacters = [] {
  std::array<bool, 256> characters{};
  for (std::size_t c = '0'; c <= '9'; ++c) characters[c] = true;
  for (std::size_t c = 'A'; c <= 'Z'; ++c) characters[c] = characters[c | 0x20] = true;
  characters['_'] = true;
  return characters;
}();

// Whether a name is one beyond doubt, as nearly all are.
bool IsPlainName(std::string_view name) {
  return !name.empty() && !(name[0] >= '0' && name[0] <= '9') &&
         std::all_of(name.begin(), name.end(),
                     [](char c) { return kNameCharacters[static_cast<unsigned char>(c)]; });
}

}  // namespace

void RequireXmlText(std::string_view text, const char* source) {
  for (std::size_t at = 0; at < text.size();) {
    if (at + sizeof(std::uint64_t) <= text.size() && IsPlain(text.data() + at)) {
      at += sizeof(std::uint64_t);
      continue;
    }
    const Decoded decoded = Decode(text.substr(at));
    if (decoded.length == 0 || !AllowedByXml(decoded.character)) RefuseCharacter(decoded, text, at, source);
    at += decoded.length;
  }
}

void RequireXmlName(const std::string& name) {
  if (IsPlainName(name)) return;
  RequireXmlText(name, kDocumentSource);
  if (xmlValidateNCName(reinterpret_cast<const xmlChar*>(name.c_str()), 0) != 0) {
    Fail("'" + name + "' is no name of an element or attribute.");
  }
}

}  // namespace MSXML2::dom
