#include "platform/adodb/sql/iso_date_time.hpp"

namespace ADODB::engine {
namespace {

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
