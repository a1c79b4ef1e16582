#include "platform/locale/short_date.hpp"

#include <array>
#include <charconv>
#include <cstddef>
#include <optional>

#include "platform/automation/error.hpp"

namespace automation {
namespace {

[[noreturn]] void RaiseMismatch() {
  throw Error(ErrorNumber::TypeMismatch);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsSpace(char c) {
  return c == ' ' || c == '\t';
}

// The part of a date that a pattern letter stands for, or 0.
char PartOf(char letter) {
  switch (letter) {
    case 'd':
      return 'd';
    case 'M':
    case 'L':
      return 'M';
    case 'y':
    case 'u':
      return 'y';
    default:
      return 0;
  }
}

struct Number {
  int value = 0;
  int digits = 0;
};

class Reader {
 public:
  Reader(const ShortDateForm& form, std::string_view text) : form_(form), rest_(text) {}

  DateTime Read() {
    SkipSpaces();
    const Number first = TakeNumber();
    DateTimeParts parts;
    if (At(":")) {
      ReadTime(first, parts);
    } else {
      ReadDate(first, parts);
      if (!rest_.empty() && (IsSpace(rest_.front()) || rest_.front() == 'T')) {
        rest_.remove_prefix(1);
        SkipSpaces();
        if (!rest_.empty()) ReadTime(TakeNumber(), parts);
      }
    }
    SkipSpaces();
    if (!rest_.empty() || !DateTime::IsValid(parts)) RaiseMismatch();
    return DateTime::FromParts(parts);
  }

 private:
  void SkipSpaces() {
    while (!rest_.empty() && IsSpace(rest_.front())) rest_.remove_prefix(1);
  }

  bool At(std::string_view text) const { return !text.empty() && rest_.substr(0, text.size()) == text; }

  bool Take(std::string_view text) {
    if (!At(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  Number TakeNumber() {
    Number number;
    while (!rest_.empty() && IsDigit(rest_.front())) {
      if (++number.digits > 4) RaiseMismatch();
      number.value = number.value * 10 + (rest_.front() - '0');
      rest_.remove_prefix(1);
    }
    if (number.digits == 0) RaiseMismatch();
    return number;
  }

  void TakeSeparator() {
    if (!Take(form_.separator) && !Take("/") && !Take("-") && !Take(".")) RaiseMismatch();
  }

  static int Year(Number number) {
    if (number.digits > 2) return number.value;
    return number.value < 30 ? 2000 + number.value : 1900 + number.value;
  }

  void ReadDate(Number first, DateTimeParts& parts) {
    TakeSeparator();
    const Number second = TakeNumber();
    TakeSeparator();
    const Number third = TakeNumber();
    const std::array<Number, 3> numbers = {first, second, third};
    const std::array<char, 3> order = first.digits > 2 ? std::array<char, 3>{'y', 'M', 'd'} : form_.order;
    for (std::size_t i = 0; i < order.size(); ++i) {
      if (order[i] == 'y') {
        parts.year = Year(numbers[i]);
      } else {
        if (numbers[i].digits > 2) RaiseMismatch();
        (order[i] == 'M' ? parts.month : parts.day) = numbers[i].value;
      }
    }
  }

  void ReadTime(Number hour, DateTimeParts& parts) {
    parts.hour = hour.value;
    if (!Take(":")) RaiseMismatch();
    parts.minute = TakeNumber().value;
    if (Take(":")) {
      parts.second = TakeNumber().value;
      if (Take(".")) parts.microsecond = TakeFraction();
    }
    SkipSpaces();
    if (const std::optional<bool> afternoon = TakeHalfOfDay()) {
      if (parts.hour < 1 || parts.hour > 12) RaiseMismatch();
      parts.hour = parts.hour % 12 + (*afternoon ? 12 : 0);
    }
  }

  // Microseconds; finer digits are dropped.
  int TakeFraction() {
    int value = 0;
    int unit = 100'000;
    if (rest_.empty() || !IsDigit(rest_.front())) RaiseMismatch();
    while (!rest_.empty() && IsDigit(rest_.front())) {
      value += unit * (rest_.front() - '0');
      unit /= 10;
      rest_.remove_prefix(1);
    }
    return value;
  }

  // False for AM, true for PM.
  std::optional<bool> TakeHalfOfDay() {
    if (Take("AM") || Take("am")) return false;
    if (Take("PM") || Take("pm")) return true;
    return std::nullopt;
  }

  const ShortDateForm& form_;
  std::string_view rest_;
};

}  // namespace

ShortDateForm ShortDateFormOf(std::string_view pattern) {
  ShortDateForm form;
  std::string order;
  std::string separator;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size();) {
    const char c = pattern[i];
    const char part = quoted ? '\0' : PartOf(c);
    std::size_t run = 1;
    while (i + run < pattern.size() && pattern[i + run] == c) ++run;
    if (part != 0) {
      if (order.find(part) == std::string::npos) order += part;
      // A month by name (three letters and more) is shown by number.
      if (part == 'd') form.dayDigits = run == 1 ? 1 : 2;
      if (part == 'M') form.monthDigits = run == 1 ? 1 : 2;
      i += run;
      continue;
    }
    if (c == '\'') quoted = !quoted;
    if (separator.empty() && !order.empty() && (c == '/' || c == '.' || c == '-')) separator = c;
    ++i;
  }
  if (order.size() != form.order.size()) return {};
  for (std::size_t i = 0; i < order.size(); ++i) form.order[i] = order[i];
  if (!separator.empty()) form.separator = separator;
  return form;
}

void AppendNumber(std::string& text, int number, int digits) {
  std::array<char, 12> buffer;
  const std::to_chars_result written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  const auto length = static_cast<std::size_t>(written.ptr - buffer.data());
  const auto wanted = static_cast<std::size_t>(digits);
  if (length < wanted) text.append(wanted - length, '0');
  text.append(buffer.data(), length);
}

std::string FormatShortDate(const ShortDateForm& form, DateTime value) {
  const DateTimeParts parts = value.Parts();
  std::string text;
  for (const char part : form.order) {
    if (!text.empty()) text += form.separator;
    if (part == 'd') AppendNumber(text, parts.day, form.dayDigits);
    if (part == 'M') AppendNumber(text, parts.month, form.monthDigits);
    if (part == 'y') AppendNumber(text, parts.year, 4);
  }
  return text;
}

DateTime ParseDateTime(const ShortDateForm& form, std::string_view text) {
  return Reader(form, text).Read();
}

}  // namespace automation
