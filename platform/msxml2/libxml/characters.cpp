#include "platform/msxml2/libxml/characters.hpp"

#include <libxml/tree.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/msxml2/libxml/failure.hpp"

namespace MSXML2::libxml {
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

// Whether eight bytes are ASCII characters from the blank on.
bool AllPlain(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  constexpr std::uint64_t kHigh = 0x8080808080808080U;
  constexpr std::uint64_t kBlanks = 0x2020202020202020U;
  // Without a high bit anywhere, adding 0x60 to a byte sets its high bit unless it is below 0x20.
  return (word & kHigh) == 0 && ((word + (kHigh - kBlanks)) & kHigh) == kHigh;
}

}  // namespace

void RequireXmlText(std::string_view text, const char* source) {
  for (std::size_t i = 0; i < text.size();) {
    if (i + sizeof(std::uint64_t) <= text.size() && AllPlain(text.data() + i)) {
      i += sizeof(std::uint64_t);
      continue;
    }
    if (text[i] >= 0x20) {
      ++i;
      continue;
    }
    const Decoded decoded = Decode(text.substr(i));
    char what[64];
    if (decoded.length == 0) {
      std::snprintf(what, sizeof what, "byte 0x%02X, not UTF-8", static_cast<unsigned>(text[i]) & 0xFFU);
    } else if (!AllowedByXml(decoded.character)) {
      std::snprintf(what, sizeof what, "U+%04X", decoded.character);
    } else {
      i += decoded.length;
      continue;
    }
    Fail("An invalid character was found in text content (" + std::string(what) + " at position " +
             std::to_string(i) + ").",
         source);
  }
}

void RequireXmlName(std::string_view name) {
  const std::string text(name);
  const bool holdsNul = std::strlen(text.c_str()) != text.size();
  if (holdsNul || xmlValidateQName(reinterpret_cast<const xmlChar*>(text.c_str()), 0) != 0) {
    Fail("'" + text + "' is no name of an element or attribute.");
  }
}

}  // namespace MSXML2::libxml
