// OrvaneUtilities: dates, timestamps and folder paths as text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"

namespace OrvaneUtilities {

// A decimal number in at least two digits.
std::string TwoDigits(int number);

// The current local date in the locale's short form with "-" between its parts, a space, and hh:mm:ss.
std::string GetTimestampText();

// The locale's date separator; empty when the locale cannot be asked.
std::string GetDateSeparator();

// {ts 'yyyy-mm-dd hh:mm:ss'}, the literal that date comparisons in SQL use.
std::string ToOdbcTimestamp(automation::DateTime value);

// "/" becomes "\"; one trailing "\" is dropped.
std::string NormalizeFolderPath(std::string_view path);

// A date as users of a Windows locale id read it; styles and fallbacks are those of
// automation::Locale::DateText.
std::string GetDateText(automation::DateTime value, int style, std::int32_t localeId);

// Every occurrence of `what` replaced by `with`, from left to right; an empty `what` occurs nowhere.
std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view with);

}  // namespace OrvaneUtilities
