#include "platform/adodb/odbc/unicode.hpp"

#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/adodb/odbc/error.hpp"
#include "platform/base/text.hpp"

namespace ADODB::odbc {
namespace {

constexpr UChar32 kReplacement = 0xFFFD;

[[noreturn]] void RaiseNotUtf8() {
  Raise({.sqlState = "22021", .nativeCode = 0, .message = "invalid byte sequence for encoding UTF-8"});
}

// The library counts in 32 bits.
std::int32_t Count(std::size_t size) {
  constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(size, kMost));
}

}  // namespace

WideText ToWide(std::string_view utf8) {
  WideText wide(utf8.size());
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8(reinterpret_cast<UChar*>(wide.data()), Count(wide.size()), &length, utf8.data(),
                Count(utf8.size()), &status);
  if (U_FAILURE(status)) RaiseNotUtf8();
  wide.resize(static_cast<std::size_t>(length));
  return wide;
}

void RequireUtf8(std::string_view text) {
  if (!base::IsUtf8(text)) RaiseNotUtf8();
}

std::string ToUtf8(const SQLWCHAR* text, std::size_t length) {
  std::string utf8;
  ToUtf8(text, length, utf8);
  return utf8;
}

std::string ToUtf8(std::span<const SQLWCHAR> text) {
  const auto end = std::find(text.begin(), text.end(), SQLWCHAR{0});
  return ToUtf8(text.data(), static_cast<std::size_t>(end - text.begin()));
}

void ToUtf8(const SQLWCHAR* text, std::size_t length, std::string& utf8) {
  constexpr std::size_t kMostBytes = 3;  // for one unit; a pair takes four
  utf8.resize(kMostBytes * length);
  std::int32_t bytes = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(utf8.data(), Count(utf8.size()), &bytes, reinterpret_cast<const UChar*>(text),
                     Count(length), kReplacement, nullptr, &status);
  utf8.resize(static_cast<std::size_t>(bytes));
}

}  // namespace ADODB::odbc
