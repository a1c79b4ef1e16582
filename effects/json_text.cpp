#include "effects/json_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <variant>

namespace effects {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kHex = "0123456789abcdef";

// Length of the well-formed UTF-8 character at `at`; 0 when there is none.
std::size_t CharacterLength(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80                    ? 1
                             : lead >= 0xC2 && lead <= 0xDF ? 2
                             : lead >= 0xE0 && lead <= 0xEF ? 3
                             : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                            : 0;
  if (length == 0 || text.size() - at < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, surrogates and what lies beyond U+10FFFF.
  if (lead == 0xE0 && byte(1) < 0xA0) return 0;
  if (lead == 0xED && byte(1) > 0x9F) return 0;
  if (lead == 0xF0 && byte(1) < 0x90) return 0;
  if (lead == 0xF4 && byte(1) > 0x8F) return 0;
  return length;
}

bool IsPlain(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\';
}

// Texts are looked at by eight bytes, most of which stand for themselves.
constexpr std::size_t kEight = sizeof(std::uint64_t);
constexpr std::uint64_t kEach = 0x0101010101010101U;
constexpr std::uint64_t kHighBits = 0x80 * kEach;

std::uint64_t EightBytes(std::string_view text, std::size_t at) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, text.data() + at, sizeof bytes);
  return bytes;
}

bool AreAscii(std::uint64_t bytes) {
  return (bytes & kHighBits) == 0;
}

// REQUIRES: they are ASCII.
bool AreAllPlain(std::uint64_t bytes) {
  const auto holds = [bytes](char c) {
    const std::uint64_t zero = bytes ^ (static_cast<unsigned char>(c) * kEach);
    return ((zero - kEach) & ~zero & kHighBits) != 0;
  };
  const bool hasControl = (((bytes - 0x20 * kEach) | (bytes + kEach)) & kHighBits) != 0;
  return !hasControl && !holds('"') && !holds('\\');
}

// Where the characters from `at` on that stand for themselves end.
std::size_t EndOfPlain(std::string_view text, std::size_t at) {
  while (at + kEight <= text.size()) {
    const std::uint64_t bytes = EightBytes(text, at);
    if (!AreAscii(bytes) || !AreAllPlain(bytes)) break;
    at += kEight;
  }
  while (at < text.size() && IsPlain(text[at])) ++at;
  return at;
}

void AppendEscape(std::string& to, unsigned int code) {
  to += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) to += kHex[(code >> shift) & 0xF];
}

void AppendBase64(std::string& to, std::string_view bytes) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t left = bytes.size() - at;
    const auto byte = [&](std::size_t i) {
      return i < left ? static_cast<unsigned int>(static_cast<unsigned char>(bytes[at + i])) : 0U;
    };
    const unsigned int group = (byte(0) << 16) | (byte(1) << 8) | byte(2);
    to += kDigits[group >> 18];
    to += kDigits[(group >> 12) & 0x3F];
    to += left > 1 ? kDigits[(group >> 6) & 0x3F] : '=';
    to += left > 2 ? kDigits[group & 0x3F] : '=';
  }
}

template <class Number>
void AppendNumber(std::string& to, Number number) {
  std::array<char, 40> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  to.append(digits.data(), end);
}

void AppendDigits(std::string& to, int number, int width) {
  for (int divisor = width == 6 ? 100'000 : width == 4 ? 1000 : 10; divisor > 0; divisor /= 10) {
    to += static_cast<char>('0' + number / divisor % 10);
  }
}

void AppendBytes(std::string& to, std::string_view bytes) {
  to += R"({"base64":")";
  AppendBase64(to, bytes);
  to += "\"}";
}

class ValueWriter {
 public:
  ValueWriter(std::string& to, ADODB::NamedValue::Form form) : to_(to), form_(form) {}

  void operator()(automation::EmptyValue) const { to_ += "null"; }
  void operator()(automation::NullValue) const { to_ += "null"; }
  void operator()(bool flag) const { to_ += flag ? "true" : "false"; }
  void operator()(std::int16_t number) const { (*this)(std::int64_t{number}); }
  void operator()(std::int32_t number) const { (*this)(std::int64_t{number}); }
  void operator()(std::int64_t number) const {
    Quoted([&] { AppendNumber(to_, number); });
  }
  void operator()(double number) const {
    Quoted([&] { AppendJsonNumber(to_, number); });
  }
  void operator()(automation::DateTime moment) const {
    to_ += '"';
    AppendDateTime(to_, moment);
    to_ += '"';
  }
  void operator()(const std::string& text) const {
    if (form_ == ADODB::NamedValue::Form::Bytes || !IsUtf8(text)) {
      AppendBytes(to_, text);
    } else {
      AppendJsonText(to_, text);
    }
  }
  template <class Other>
  void operator()(const Other&) const {
    to_ += "null";
  }

 private:
  // A decimal is a text.
  template <class Append>
  void Quoted(Append append) const {
    const bool isText = form_ == ADODB::NamedValue::Form::Decimal;
    if (isText) to_ += '"';
    append();
    if (isText) to_ += '"';
  }

  std::string& to_;
  const ADODB::NamedValue::Form form_;
};

}  // namespace

void AppendJsonText(std::string& to, std::string_view text) {
  to += '"';
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = EndOfPlain(text, at);
    to.append(text, at, end - at);
    if (end == text.size()) break;
    at = end;
    const char c = text[at];
    const std::size_t length = CharacterLength(text, at);
    if (length == 0) {
      to += kReplacement;
      ++at;
      continue;
    }
    if (c == '"' || c == '\\') {
      to += '\\';
      to += c;
    } else if (length == 1) {
      AppendEscape(to, static_cast<unsigned char>(c));
    } else if (length == 2 && c == '\xC2' && static_cast<unsigned char>(text[at + 1]) < 0xA0) {
      // The other control characters, which terminals act on as well.
      AppendEscape(to, static_cast<unsigned char>(text[at + 1]));
    } else {
      to.append(text, at, length);
    }
    at += length;
  }
  to += '"';
}

void AppendJsonNumber(std::string& to, std::int64_t number) {
  AppendNumber(to, number);
}

void AppendJsonNumber(std::string& to, double number) {
  if (!std::isfinite(number)) {
    to += "null";
    return;
  }
  AppendNumber(to, number);
}

void AppendJson(std::string& to, const ADODB::NamedValue& value) {
  std::visit(ValueWriter(to, value.form), value.value.Get());
}

void AppendJson(std::string& to, const ADODB::NamedRow& row) {
  to += '{';
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (i > 0) to += ',';
    AppendJsonText(to, row[i].column);
    to += ':';
    AppendJson(to, row[i]);
  }
  to += '}';
}

void AppendDateTime(std::string& to, automation::DateTime value) {
  const automation::DateTimeParts parts = value.Parts();
  AppendDigits(to, parts.year, 4);
  for (const auto& [separator, part] :
       {std::pair('-', parts.month), std::pair('-', parts.day), std::pair(' ', parts.hour),
        std::pair(':', parts.minute), std::pair(':', parts.second)}) {
    to += separator;
    AppendDigits(to, part, 2);
  }
  if (parts.microsecond == 0) return;
  to += '.';
  AppendDigits(to, parts.microsecond, 6);
  while (to.back() == '0') to.pop_back();
}

bool IsUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    if (at + kEight <= text.size() && AreAscii(EightBytes(text, at))) {
      at += kEight;
      continue;
    }
    const std::size_t length = CharacterLength(text, at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

}  // namespace effects
