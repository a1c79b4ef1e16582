#include "effects/json_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <variant>

#include "platform/automation/iso_text.hpp"
#include "platform/base/base64.hpp"
#include "platform/base/text.hpp"

namespace effects {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kHex = "0123456789abcdef";

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

bool IsUtf8(std::string_view text) {
  std::size_t at = 0;  // most texts are ASCII to their end, or nearly
  while (at + kEight <= text.size() && AreAscii(EightBytes(text, at))) at += kEight;
  return base::IsUtf8(text.substr(at));
}

void AppendEscape(std::string& to, unsigned int code) {
  to += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) to += kHex[(code >> shift) & 0xF];
}

template <class Number>
void AppendNumber(std::string& to, Number number) {
  std::array<char, 40> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  to.append(digits.data(), end);
}

void AppendBytes(std::string& to, std::string_view bytes) {
  to += R"({"base64":")";
  base::AppendBase64(to, bytes);
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
    to_.append("\"").append(automation::IsoText(moment)).append("\"");
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
    const std::size_t length = base::Utf8Length(text.substr(at));
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

}  // namespace effects
