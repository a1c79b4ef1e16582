// What the platform asks of the operating system's locale. The implementation lives in platform/locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"
#include "platform/automation/export.hpp"

namespace automation {

class ORVANE_EXPORT Locale {
 public:
  virtual ~Locale() = default;

  // The user's date separator, e.g. "/"; raises when the locale cannot be queried.
  virtual std::string DateSeparator() const = 0;

  // The date in the locale's short form; the year always has four digits. The time of day is not shown.
  virtual std::string ShortDate(DateTime value) const = 0;

  // The default text of a date-time: the short date, and, unless it is midnight, a space and the time of day
  // as hh:mm:ss on the 24-hour clock. Fractions of a second are not shown.
  virtual std::string GeneralDate(DateTime value) const = 0;

  // Reads a date, a time, or both, as this locale writes them: any of "/", "-", "." and the locale's
  // separator between the parts, the order of day, month and year being the locale's; year-month-day is
  // always understood. A text that is no date raises 13 (Type mismatch).
  virtual DateTime ParseDateTime(std::string_view text) const = 0;

  // A date-time as users of the given Windows locale id (1033, 1043, ...) read it. Style 1 is the short date,
  // 2 the long date, 3 the short date with the time; an unknown locale id falls back to 1033, an unknown
  // style to 1.
  virtual std::string DateText(DateTime value, int style, std::int32_t localeId) const = 0;

  // UTF-8 to and from the single-byte system code page. A character that the page lacks becomes "?"; a byte
  // that the page leaves undefined becomes U+FFFD.
  virtual std::string ToCodePage(std::string_view utf8) const = 0;
  virtual std::string FromCodePage(std::string_view bytes) const = 0;

  // The text in lower case, or in upper case, by Unicode's rules.
  virtual std::string ToLower(std::string_view utf8) const = 0;
  virtual std::string ToUpper(std::string_view utf8) const = 0;
};

}  // namespace automation
