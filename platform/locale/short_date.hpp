// The short form of dates in one locale: three numbers, always in the Gregorian calendar, with one separator.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"

namespace automation {

struct ShortDateForm {
  // 'd', 'M' and 'y' in the order of the locale.
  std::array<char, 3> order = {'M', 'd', 'y'};
  // Least number of digits of day and month; the year always has four.
  int dayDigits = 1;
  int monthDigits = 1;
  std::string separator = "/";

  friend bool operator==(const ShortDateForm&, const ShortDateForm&) = default;
};

// Reads a CLDR date pattern such as "dd.MM.yy". Marks around the numbers (words, dots at the end, direction
// marks) are dropped, so that every short date can be read back. A pattern without all three parts gives the
// default form.
ShortDateForm ShortDateFormOf(std::string_view pattern);

// Appends a number that is not negative, with zeros before it up to `digits` digits.
void AppendNumber(std::string& text, int number, int digits);

std::string FormatShortDate(const ShortDateForm& form, DateTime value);

// As Locale::ParseDateTime says: three numbers with "/", "-", "." or the form's separator between them, in
// the form's order or year first; a time of day hh:mm[:ss[.fraction]], with AM or PM if need be; or both. A
// year of one or two digits is read as 1930 to 2029. Raises 13 for anything else.
DateTime ParseDateTime(const ShortDateForm& form, std::string_view text);

}  // namespace automation
