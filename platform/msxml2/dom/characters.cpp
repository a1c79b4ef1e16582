#include "platform/msxml2/dom/characters.hpp"

#include <libxml/chvalid.h>
#include <libxml/tree.h>
#include <libxml/xmlstring.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/base/text.hpp"
#include "platform/msxml2/failure.hpp"

namespace MSXML2::dom {
namespace {

// Whether the eight bytes are ASCII without control characters, as most are.
bool IsPlain(const char* eight) {
  std::uint64_t word = 0;
  std::memcpy(&word, eight, sizeof word);
  return (((word - 0x2020202020202020U) | word) & 0x8080808080808080U) == 0;
}

[[noreturn]] void RefuseCharacter(int character, std::string_view text, std::size_t at, const char* source) {
  char what[64];
  if (character < 0) {
    std::snprintf(what, sizeof what, "byte 0x%02X, not UTF-8", static_cast<unsigned>(text[at]) & 0xFFU);
  } else {
    std::snprintf(what, sizeof what, "U+%04X", static_cast<unsigned>(character));
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
    if (static_cast<signed char>(text[at]) >= ' ') {  // the rest of ASCII
      ++at;
      continue;
    }
    int length = static_cast<int>(base::Utf8Length(text.substr(at)));
    const int character =
        length == 0 ? -1 : xmlGetUTF8Char(reinterpret_cast<const xmlChar*>(text.data() + at), &length);
    if (character < 0 || !xmlIsCharQ(character)) RefuseCharacter(character, text, at, source);
    at += static_cast<std::size_t>(length);
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
