#include "platform/adodb/sql/iso_date_time.hpp"

namespace ADODB::engine {
namespace {

void AppendDigits(std::string& text, int value, int digits) {
  const std::size_t end = text.size() + static_cast<std::size_t>(digits);
  text.resize(end);
  for (std::size_t i = end; digits > 0; --digits, value /= 10)
    text[--i] = static_cast<char>('0' + value % 10);
}

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}
  bool AtEnd() const { return text_.empty(); }

  bool Skip(char c) {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }

  bool Digits(int count, int& value) {
    if (text_.size() < static_cast<std::size_t>(count)) return false;
    value = 0;
    for (int i = 0; i < count; ++i) {
      const char c = text_[static_cast<std::size_t>(i)];
      if (c < '0' || c > '9') return false;
      value = value * 10 + (c - '0');
    }
    text_.remove_prefix(static_cast<std::size_t>(count));
    return true;
  }

  bool Fraction(int& microseconds) {
    int digits = 0;
    for (microseconds = 0; !text_.empty() && text_.front() >= '0' && text_.front() <= '9'; ++digits) {
      if (digits < 6) microseconds = microseconds * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
    }
    for (int i = digits; i < 6; ++i) microseconds *= 10;
    return digits > 0;
  }

 private:
  std::string_view text_;
};

}  // namespace

std::string IsoText(automation::DateTime value) {
  const automation::DateTimeParts parts = value.Parts();
  std::string text;
  text.reserve(26);
  AppendDigits(text, parts.year, 4);
  text += '-';
  AppendDigits(text, parts.month, 2);
  text += '-';
  AppendDigits(text, parts.day, 2);
  text += ' ';
  AppendDigits(text, parts.hour, 2);
  text += ':';
  AppendDigits(text, parts.minute, 2);
  text += ':';
  AppendDigits(text, parts.second, 2);
  if (parts.microsecond != 0) {
    text += '.';
    AppendDigits(text, parts.microsecond, 6);
    while (text.back() == '0') text.pop_back();
  }
  return text;
}

std::optional<automation::DateTime> ParseIso(std::string_view text) {
  Reader reader(text);
  automation::DateTimeParts parts;
  parts.hour = parts.minute = parts.second = 0;
  if (!reader.Digits(4, parts.year) || !reader.Skip('-') || !reader.Digits(2, parts.month) ||
      !reader.Skip('-') || !reader.Digits(2, parts.day)) {
    return std::nullopt;
  }
  if (!reader.AtEnd()) {
    if (!reader.Skip(' ') && !reader.Skip('T')) return std::nullopt;
    if (!reader.Digits(2, parts.hour) || !reader.Skip(':') || !reader.Digits(2, parts.minute))
      return std::nullopt;
    if (reader.Skip(':')) {
      if (!reader.Digits(2, parts.second)) return std::nullopt;
      if (reader.Skip('.') && !reader.Fraction(parts.microsecond)) return std::nullopt;
    }
    if (!reader.AtEnd()) return std::nullopt;
  }
  if (!automation::DateTime::IsValid(parts)) return std::nullopt;
  return automation::DateTime::FromParts(parts);
}

}  // namespace ADODB::engine
