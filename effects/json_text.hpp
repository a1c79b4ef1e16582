// JSON, appended to a text piece by piece.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/adodb/changes.hpp"

namespace effects {

// In quotes, control characters escaped; what is no UTF-8 becomes U+FFFD.
void AppendJsonText(std::string& to, std::string_view text);
void AppendJsonNumber(std::string& to, std::int64_t number);
// In the shortest form that reads as the same number; null for what is no number.
void AppendJsonNumber(std::string& to, double number);

// Integers as numbers, doubles in their shortest exact form, decimals and dates as texts, bytes (and texts
// that are no UTF-8) as {"base64": ...}. REQUIRES: neither an array nor an object.
void AppendJson(std::string& to, const ADODB::NamedValue& value);
// An object of the columns and their values.
void AppendJson(std::string& to, const ADODB::NamedRow& row);

}  // namespace effects
