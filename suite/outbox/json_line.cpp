#include "suite/outbox/json_line.hpp"

#include <cstddef>
#include <cstdio>

#include "platform/automation/error.hpp"

namespace suite {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Length of the well-formed UTF-8 character at the beginning of `text`; 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80                    ? 1
                             : lead >= 0xC2 && lead <= 0xDF ? 2
                             : lead >= 0xE0 && lead <= 0xEF ? 3
                             : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                            : 0;
  if (length == 0 || text.size() < length) return 0;
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

std::string Quoted(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const char c = text.front();
    std::size_t length = CharacterLength(text);
    if (length == 0) {
      result += kReplacement;
      length = 1;
    } else if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(c));
      result += escape;
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return result + "\"";
}

std::string DateAndTime(automation::DateTime value) {
  const automation::DateTimeParts parts = value.Parts();
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", parts.year, parts.month, parts.day,
                parts.hour, parts.minute, parts.second);
  return text;
}

std::string Json(const automation::Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return "null";
  if (const bool* flag = std::get_if<bool>(&value.Get())) return *flag ? "true" : "false";
  if (value.IsText()) return Quoted(std::get<std::string>(value.Get()));
  if (value.IsDate()) return Quoted(DateAndTime(std::get<automation::DateTime>(value.Get())));
  if (automation::IsNumeric(value)) return automation::ToText(value);
  throw automation::Error(automation::ErrorNumber::TypeMismatch);
}

}  // namespace

JsonLine& JsonLine::Add(std::string_view name, const automation::Variant& value) {
  if (!members_.empty()) members_ += ",";
  members_ += Quoted(name) + ":" + Json(value);
  return *this;
}

}  // namespace suite
