// Dates as the users of a Windows locale id read them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/automation/date_time.hpp"

namespace automation {

// Safe to share between threads; ICU's formatters are made on first use and kept.
class DateTexts {
 public:
  DateTexts();
  ~DateTexts();

  // As Locale::DateText says.
  std::string Text(DateTime value, int style, std::int32_t localeId) const;

 private:
  struct Formatters;
  std::unique_ptr<Formatters> formatters_;
};

// ICU's short date pattern of a locale, in the Gregorian calendar.
std::string ShortDatePattern(const std::string& icuLocaleName);

}  // namespace automation
