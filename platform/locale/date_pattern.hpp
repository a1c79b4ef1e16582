// A date or time as one of ICU's patterns shows it.
#pragma once

#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/automation/date_time.hpp"

namespace automation {

// Special spaces become spaces, and direction marks are dropped: these texts end up in single-byte files and
// old mail readers, where both would show as question marks.
std::string PlainUtf8(const icu::UnicodeString& text);

// The pattern is taken apart once. Numbers, which are most of a date and cost ICU most, are written here
// where the locale uses the digits 0 to 9; the names of months, halves of the day and whatever else there is
// by ICU, a pattern with parts of the day as a whole.
class DatePattern {
 public:
  // The pattern of `format`, whose calendar must be the Gregorian one of all times, in GMT.
  explicit DatePattern(const icu::SimpleDateFormat& format);

  // Fractions of a second are not shown. One thread at a time: ICU's formatters keep state while they format.
  std::string Text(DateTime value) const;

 private:
  // Of the three one is there.
  struct Piece {
    std::string words;
    char16_t number = 0;  // the pattern's letter
    int width = 0;        // of the number, filled with zeros
    std::unique_ptr<icu::SimpleDateFormat> field;
  };
  void AddField(const icu::SimpleDateFormat& format, char16_t letter, int width);

  std::vector<Piece> pieces_;
};

}  // namespace automation
