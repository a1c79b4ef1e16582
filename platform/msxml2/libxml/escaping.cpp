#include "platform/msxml2/libxml/escaping.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace MSXML2::libxml {
namespace {

struct Replacement {
  char character;
  std::string_view reference;
  bool inContent;
};

constexpr std::array<Replacement, 7> kReplacements{{{'&', "&amp;", true},
                                                    {'<', "&lt;", true},
                                                    {'>', "&gt;", true},
                                                    {'\r', "&#13;", true},
                                                    {'"', "&quot;", false},
                                                    {'\t', "&#9;", false},
                                                    {'\n', "&#10;", false}}};

// Looked at together, so that the compiler can do it in a few steps.
constexpr std::size_t kBlock = 16;

bool MayNeedReplacing(const char* block) {
  std::array<std::uint8_t, kBlock> found;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const auto c = static_cast<std::uint8_t>(block[i]);
    // "<" and ">" are the two that "|2" makes equal to ">".
    const bool markup = (c | 2) == '>' || c == '&';
    found[i] = static_cast<std::uint8_t>(markup || c == '"' || c < 0x20 ? 0xFF : 0);
  }
  std::array<std::uint64_t, kBlock / sizeof(std::uint64_t)> together;
  std::memcpy(together.data(), found.data(), kBlock);
  return (together[0] | together[1]) != 0;
}

// By character: the number of its replacement, and one more; 0 for none.
using Numbers = std::array<std::uint8_t, 256>;

constexpr Numbers NumbersFor(Place place) {
  Numbers numbers{};
  for (std::size_t i = 0; i < kReplacements.size(); ++i) {
    if (place == Place::Content && !kReplacements[i].inContent) continue;
    numbers[static_cast<std::uint8_t>(kReplacements[i].character)] = static_cast<std::uint8_t>(i + 1);
  }
  return numbers;
}

constexpr Numbers kInContent = NumbersFor(Place::Content);
constexpr Numbers kInAttribute = NumbersFor(Place::Attribute);

}  // namespace

void AppendEscaped(std::string& out, std::string_view text, Place place) {
  const Numbers& numbers = place == Place::Content ? kInContent : kInAttribute;
  std::size_t from = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (i + kBlock <= text.size() && !MayNeedReplacing(text.data() + i)) {
      i += kBlock;
      continue;
    }
    for (const std::size_t end = std::min(i + kBlock, text.size()); i < end; ++i) {
      const std::uint8_t number = numbers[static_cast<std::uint8_t>(text[i])];
      if (number == 0) continue;
      out.append(text, from, i - from).append(kReplacements[number - std::size_t{1}].reference);
      from = i + 1;
    }
  }
  out.append(text, from);
}

void AppendUnescaped(std::string& out, std::string_view markup) {
  for (;;) {
    const std::size_t reference = markup.find('&');
    out.append(markup, 0, reference);
    if (reference == std::string_view::npos) return;
    markup.remove_prefix(reference);
    const auto* const known =
        std::find_if(kReplacements.begin(), kReplacements.end(), [markup](const Replacement& each) {
          return markup.substr(0, each.reference.size()) == each.reference;
        });
    out += known->character;
    markup.remove_prefix(known->reference.size());
  }
}

}  // namespace MSXML2::libxml
