#include "suite/outbox/json_line.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "platform/automation/error.hpp"
#include "platform/automation/iso_text.hpp"
#include "platform/base/text.hpp"

namespace suite {
namespace {

std::string Quoted(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const char c = text.front();
    const std::size_t length = base::Utf8Length(text);
    if (length == 0) {
      result += "\xEF\xBF\xBD";  // U+FFFD
    } else if (base::IsControl(c)) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(c));
      result += escape;
    } else {
      if (c == '"' || c == '\\') result += '\\';
      result += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result + "\"";
}

std::string Json(const automation::Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return "null";
  if (const bool* flag = std::get_if<bool>(&value.Get())) return *flag ? "true" : "false";
  if (value.IsText()) return Quoted(std::get<std::string>(value.Get()));
  if (value.IsDate())
    return Quoted(automation::IsoText(std::get<automation::DateTime>(value.Get()).WithoutFraction()));
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
