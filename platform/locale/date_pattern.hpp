// ICU's date patterns of plain numbers, written out without ICU.
//
// Most short dates and times of day are such patterns ("dd-MM-yyyy", "HH:mm:ss"), and the jobs write one for
// every request; ICU's formatter takes twenty times as long.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation/date_time.hpp"

namespace automation {

// A number that is not negative, with zeros in front if it has fewer digits.
void AppendNumber(std::string& text, int number, int digits);

class DatePattern {
 public:
  // Nothing for a pattern with anything else than years, days, months by number, hours, minutes, seconds, the
  // half of the day and text. `halvesOfDay`: how AM and PM are written.
  static std::optional<DatePattern> Read(std::string_view pattern, std::array<std::string, 2> halvesOfDay);

  std::string Text(const DateTimeParts& parts) const;

 private:
  struct Piece {
    char field = 0;    // a pattern letter, or 0 for text
    int digits = 0;    // least number of them
    std::string text;  // as it stands
  };

  std::vector<Piece> pieces_;
  std::array<std::string, 2> halvesOfDay_;
};

}  // namespace automation
