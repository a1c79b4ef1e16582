#include "platform/adodb/odbc/unicode.hpp"

#include <cstdint>

#include "platform/adodb/odbc/error.hpp"

namespace ADODB::odbc {
namespace {

[[noreturn]] void RaiseNotUtf8() {
  Raise({.sqlState = "22021", .nativeCode = 0, .message = "invalid byte sequence for encoding UTF-8"});
}

// The character that starts at `at`, which is moved behind it.
char32_t NextCharacter(std::string_view text, std::size_t& at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  std::size_t length = 0;
  char32_t value = 0;
  char32_t smallest = 0;
  if (lead >= 0xC2 && lead < 0xE0) {
    length = 2, value = lead & 0x1Fu, smallest = 0x80;
  } else if (lead >= 0xE0 && lead < 0xF0) {
    length = 3, value = lead & 0x0Fu, smallest = 0x800;
  } else if (lead >= 0xF0 && lead < 0xF5) {
    length = 4, value = lead & 0x07u, smallest = 0x10000;
  } else {
    RaiseNotUtf8();
  }
  if (text.size() - at < length) RaiseNotUtf8();
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0u) != 0x80u) RaiseNotUtf8();
    value = (value << 6) | (byte(at + i) & 0x3Fu);
  }
  if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) RaiseNotUtf8();
  at += length;
  return value;
}

void AppendUtf8(char32_t value, std::string& text) {
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (value < 0x80) {
    put(value);
  } else if (value < 0x800) {
    put(0xC0 | (value >> 6));
    put(0x80 | (value & 0x3F));
  } else if (value < 0x10000) {
    put(0xE0 | (value >> 12));
    put(0x80 | ((value >> 6) & 0x3F));
    put(0x80 | (value & 0x3F));
  } else {
    put(0xF0 | (value >> 18));
    put(0x80 | ((value >> 12) & 0x3F));
    put(0x80 | ((value >> 6) & 0x3F));
    put(0x80 | (value & 0x3F));
  }
}

}  // namespace

WideText ToWide(std::string_view utf8) {
  WideText wide;
  wide.reserve(utf8.size());
  for (std::size_t at = 0; at < utf8.size();) {
    const auto first = static_cast<unsigned char>(utf8[at]);
    if (first < 0x80) {
      wide.push_back(first);
      ++at;
      continue;
    }
    const char32_t value = NextCharacter(utf8, at);
    if (value < 0x10000) {
      wide.push_back(static_cast<SQLWCHAR>(value));
    } else {
      wide.push_back(static_cast<SQLWCHAR>(0xD800 + ((value - 0x10000) >> 10)));
      wide.push_back(static_cast<SQLWCHAR>(0xDC00 + ((value - 0x10000) & 0x3FF)));
    }
  }
  return wide;
}

void RequireUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    if (static_cast<unsigned char>(text[at]) < 0x80) {
      ++at;
    } else {
      NextCharacter(text, at);
    }
  }
}

std::string ToUtf8(const SQLWCHAR* text, std::size_t length) {
  std::string utf8;
  ToUtf8(text, length, utf8);
  return utf8;
}

void ToUtf8(const SQLWCHAR* text, std::size_t length, std::string& utf8) {
  // Most texts are ASCII to their end, or nearly.
  utf8.resize(length);
  std::size_t ascii = 0;
  for (; ascii < length && text[ascii] < 0x80; ++ascii) utf8[ascii] = static_cast<char>(text[ascii]);
  utf8.resize(ascii);
  for (std::size_t i = ascii; i < length; ++i) {
    char32_t value = text[i];
    if (value < 0x80) {
      utf8 += static_cast<char>(value);
      continue;
    }
    if (value >= 0xD800 && value < 0xE000) {
      const bool pair = value < 0xDC00 && i + 1 < length && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
      value = pair ? 0x10000 + ((value - 0xD800) << 10) + (char32_t{text[++i]} - 0xDC00) : 0xFFFD;
    }
    AppendUtf8(value, utf8);
  }
}

}  // namespace ADODB::odbc
