#include "common/text_helpers.hpp"

#include "platform/automation/runtime.hpp"

namespace OrvaneUtilities {
namespace {

std::string TimeText(const automation::DateTimeParts& parts) {
  return TwoDigits(parts.hour) + ":" + TwoDigits(parts.minute) + ":" + TwoDigits(parts.second);
}

}  // namespace

std::string TwoDigits(int number) {
  const std::string decimal = std::to_string(number);
  return decimal.size() == 1 ? "0" + decimal : decimal;
}

std::string GetTimestampText() {
  const automation::DateTime now = automation::Now();
  std::string date = automation::CurrentLocale().ShortDate(now.DatePart());
  const std::string separator = GetDateSeparator();
  if (!separator.empty()) date = ReplaceAll(date, separator, "-");
  return date + " " + TimeText(now.Parts());
}

std::string GetDateSeparator() {
  try {
    const std::string separator = automation::CurrentLocale().DateSeparator();
    return separator.substr(0, separator.find('\0'));
  } catch (...) {
    return {};  // leaves the date text as the locale wrote it
  }
}

std::string ToOdbcTimestamp(automation::DateTime value) {
  const automation::DateTimeParts parts = value.Parts();
  return "{ts '" + TwoDigits(parts.year) + "-" + TwoDigits(parts.month) + "-" + TwoDigits(parts.day) + " " +
         TimeText(parts) + "'}";
}

std::string NormalizeFolderPath(std::string_view path) {
  std::string normal = ReplaceAll(path, "/", "\\");
  if (!normal.empty() && normal.back() == '\\') normal.pop_back();
  return normal;
}

std::string GetDateText(automation::DateTime value, int style, std::int32_t localeId) {
  return automation::CurrentLocale().DateText(value, style, localeId);
}

std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view with) {
  if (what.empty()) return std::string(text);
  std::string result;
  std::size_t from = 0;
  for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, from)) {
    result.append(text, from, at - from);
    result += with;
    from = at + what.size();
  }
  result.append(text, from);
  return result;
}

}  // namespace OrvaneUtilities
