#include "platform/msxml2/libxml/characters.hpp"

#include <libxml/tree.h>

#include <array>
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

// What there is to say about a character by itself.
constexpr std::uint8_t kOdd = 1;     // a control character, or a part of one that is not ASCII
constexpr std::uint8_t kMarkup = 2;  // may be replaced by a reference in markup

constexpr std::uint8_t KindOf(std::uint8_t c) {
  const bool odd = c < 0x20 || c >= 0x80;
  const bool markup = c < 0x20 || c == '&' || c == '<' || c == '>' || c == '"';
  return static_cast<std::uint8_t>((odd ? kOdd : 0) | (markup ? kMarkup : 0));
}

constexpr std::array<std::uint8_t, 256> kKinds = [] {
  std::array<std::uint8_t, 256> kinds{};
  for (std::size_t c = 0; c < kinds.size(); ++c) kinds[c] = KindOf(static_cast<std::uint8_t>(c));
  return kinds;
}();

// Looked at together, so that the compiler can do it in a few steps.
constexpr std::size_t kBlock = 16;

// What is to be said about the characters of a block, eight in each half of the answer.
std::uint64_t KindsInBlock(const char* block) {
  std::array<std::uint8_t, kBlock> found;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const auto c = static_cast<std::uint8_t>(block[i]);
    // What is not ASCII is negative; "<" and ">" are the two that "|2" makes equal to ">".
    const bool odd = static_cast<std::int8_t>(c) < 0x20;
    const bool markup = (c | 2) == '>' || c == '&' || c == '"' || c < 0x20;
    found[i] = static_cast<std::uint8_t>((odd ? kOdd : 0) | (markup ? kMarkup : 0));
  }
  std::array<std::uint64_t, kBlock / sizeof(std::uint64_t)> together;
  std::memcpy(together.data(), found.data(), kBlock);
  return together[0] | together[1];
}

// What is to be said about any of the characters.
std::uint8_t KindsIn(std::string_view text) {
  std::uint64_t inBlocks = 0;
  for (; text.size() >= kBlock; text.remove_prefix(kBlock)) inBlocks |= KindsInBlock(text.data());
  constexpr std::uint64_t kEach = 0x0101010101010101U;
  std::uint8_t kinds = static_cast<std::uint8_t>(((inBlocks & kEach * kOdd) != 0 ? kOdd : 0) |
                                                 ((inBlocks & kEach * kMarkup) != 0 ? kMarkup : 0));
  for (const char c : text) kinds = static_cast<std::uint8_t>(kinds | kKinds[static_cast<std::uint8_t>(c)]);
  return kinds;
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

}  // namespace

bool RequireXmlText(std::string_view text, const char* source) {
  bool markup = false;
  constexpr std::size_t kStretch = 256;
  for (std::size_t i = 0; i < text.size();) {
    const std::string_view stretch = text.substr(i, kStretch);
    const std::uint8_t kinds = KindsIn(stretch);
    markup = markup || (kinds & kMarkup) != 0;
    if ((kinds & kOdd) == 0) {
      i += stretch.size();
      continue;
    }
    for (const std::size_t end = i + stretch.size(); i < end;) {
      if ((kKinds[static_cast<std::uint8_t>(text[i])] & kOdd) == 0) {
        ++i;
        continue;
      }
      const Decoded decoded = Decode(text.substr(i));
      if (decoded.length == 0 || !AllowedByXml(decoded.character)) RefuseCharacter(decoded, text, i, source);
      i += decoded.length;
    }
  }
  return markup;
}

void RequireXmlName(std::string_view name) {
  const std::string text(name);
  const bool holdsNul = std::strlen(text.c_str()) != text.size();
  if (holdsNul || xmlValidateQName(reinterpret_cast<const xmlChar*>(text.c_str()), 0) != 0) {
    Fail("'" + text + "' is no name of an element or attribute.");
  }
}

}  // namespace MSXML2::libxml
