#include "platform/base/base64.hpp"

#include <cstddef>
#include <cstdint>

namespace base {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t Byte(char c) {
  return static_cast<unsigned char>(c);
}

}  // namespace

void AppendBase64(std::string& text, std::string_view bytes) {
  const std::size_t start = text.size();
  text.resize(start + (bytes.size() + 2) / 3 * 4);
  char* to = text.data() + start;
  std::size_t i = 0;
  for (; i + 2 < bytes.size(); i += 3) {
    const std::uint32_t group = Byte(bytes[i]) << 16 | Byte(bytes[i + 1]) << 8 | Byte(bytes[i + 2]);
    *to++ = kDigits[group >> 18];
    *to++ = kDigits[group >> 12 & 63U];
    *to++ = kDigits[group >> 6 & 63U];
    *to++ = kDigits[group & 63U];
  }
  if (i == bytes.size()) return;
  const bool two = bytes.size() - i == 2;
  const std::uint32_t group = Byte(bytes[i]) << 16 | (two ? Byte(bytes[i + 1]) << 8 : 0U);
  *to++ = kDigits[group >> 18];
  *to++ = kDigits[group >> 12 & 63U];
  *to++ = two ? kDigits[group >> 6 & 63U] : '=';
  *to++ = '=';
}

}  // namespace base
