#include "platform/scripting/local/native_name.hpp"

#include <algorithm>
#include <cstddef>

#include "platform/base/text.hpp"

namespace Scripting::local {
namespace {

// U+F000 + byte in UTF-8: EF, then 80 + the byte's two highest bits, then 80 + its six lowest.
constexpr unsigned char kLead = 0xEF;

void AppendStandIn(std::string& shown, unsigned char byte) {
  shown += static_cast<char>(kLead);
  shown += static_cast<char>(0x80 | (byte >> 6));
  shown += static_cast<char>(0x80 | (byte & 0x3F));
}

bool NeedsStandIn(unsigned char byte) {
  return byte == '\\' || byte >= 0x80;
}

// The byte that the character at the start of `text` stands for, or -1.
int StandInByte(std::string_view text) {
  if (text.size() < 3 || static_cast<unsigned char>(text[0]) != kLead) return -1;
  const auto second = static_cast<unsigned char>(text[1]);
  const auto third = static_cast<unsigned char>(text[2]);
  if (second < 0x80 || second > 0x83 || !base::IsUtf8Continuation(text[2])) return -1;
  const auto byte = static_cast<unsigned char>(((second & 0x03) << 6) | (third & 0x3F));
  return NeedsStandIn(byte) ? byte : -1;
}

bool IsPlain(char c) {
  return static_cast<unsigned char>(c) < 0x80 && c != '\\';
}

}  // namespace

std::string ShownName(std::string_view native) {
  if (std::all_of(native.begin(), native.end(), IsPlain)) return std::string(native);
  std::string shown;
  while (!native.empty()) {
    const std::size_t length = native.front() == '\\' ? 0 : base::Utf8Length(native);
    // A character of the stand-in range that a name really holds is shown byte by byte, or it would read back
    // as the byte it looks like.
    if (length == 0 || StandInByte(native) >= 0) {
      AppendStandIn(shown, static_cast<unsigned char>(native.front()));
      native.remove_prefix(1);
    } else {
      shown += native.substr(0, length);
      native.remove_prefix(length);
    }
  }
  return shown;
}

std::string NativeName(std::string_view shown) {
  if (shown.find(static_cast<char>(kLead)) == std::string_view::npos) return std::string(shown);
  std::string native;
  native.reserve(shown.size());
  for (std::size_t i = 0; i < shown.size();) {
    const int byte = StandInByte(shown.substr(i, 3));
    if (byte >= 0) {
      native += static_cast<char>(byte);
      i += 3;
    } else {
      native += shown[i++];
    }
  }
  return native;
}

}  // namespace Scripting::local
