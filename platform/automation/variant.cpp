#include "platform/automation/variant.hpp"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "platform/automation/error.hpp"
#include "platform/automation/locale.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/text.hpp"

namespace automation {
namespace {

template <class... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};
template <class... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

// A decimal number with optional sign, fraction and exponent, white space around it allowed; nothing else.
std::optional<double> ParseNumber(std::string_view text) {
  text = base::Trimmed(text);
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return std::nullopt;
  }
  if (text.empty()) return std::nullopt;
  for (const char c : text) {
    const bool allowed = (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E';
    if (!allowed) return std::nullopt;
  }
  double number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (end != text.data() + text.size()) return std::nullopt;
  if (problem == std::errc::result_out_of_range) throw Error(ErrorNumber::Overflow);
  if (problem != std::errc{}) return std::nullopt;
  return number;
}

double NumberOfText(const std::string& text) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) throw Error(ErrorNumber::TypeMismatch);
  return *number;
}

double RoundHalfToEven(double value) {
  const double rounded = std::round(value);
  if (std::abs(value - std::trunc(value)) == 0.5) return 2.0 * std::round(value / 2.0);
  return rounded;
}

// Before date zero the day counts backwards but its time forwards: 6 hours into the day before date zero is
// -1.25.
double DaysSinceDateZero(DateTime value) {
  const DateTime midnight = value.DatePart();
  const std::int64_t days =
      (midnight.UnixMicroseconds() - DateTime().UnixMicroseconds()) / kMicrosecondsPerDay;
  const double time = static_cast<double>(value.UnixMicroseconds() - midnight.UnixMicroseconds()) /
                      static_cast<double>(kMicrosecondsPerDay);
  return days < 0 ? static_cast<double>(days) - time : static_cast<double>(days) + time;
}

template <class Integer>
Integer Narrow(std::int64_t value) {
  if (value < std::numeric_limits<Integer>::min() || value > std::numeric_limits<Integer>::max()) {
    throw Error(ErrorNumber::Overflow);
  }
  return static_cast<Integer>(value);
}

std::int64_t WholeNumber(double value) {
  const double rounded = RoundHalfToEven(value);
  constexpr double kPastMaximum = 9223372036854775808.0;
  if (!(rounded >= -kPastMaximum && rounded < kPastMaximum)) throw Error(ErrorNumber::Overflow);
  return static_cast<std::int64_t>(rounded);
}

std::string TextOfDouble(double value) {
  if (value == 0) return "0";  // minus zero included
  // Fifteen significant digits, the number of decimal digits a double always keeps.
  char buffer[40];
  const auto [end, problem] =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 15);
  if (problem != std::errc{}) throw Error(ErrorNumber::Overflow);
  std::string text(buffer, end);
  for (char& c : text) {
    if (c == 'e') c = 'E';
  }
  return text;
}

}  // namespace

bool operator==(const Variant& one, const Variant& other) {
  using ArrayPtr = std::shared_ptr<const VariantArray>;
  const auto* array = std::get_if<ArrayPtr>(&one.value_);
  const auto* otherArray = std::get_if<ArrayPtr>(&other.value_);
  if (array != nullptr && otherArray != nullptr) return **array == **otherArray;
  return one.value_ == other.value_;
}

std::int64_t ToInt64(const Variant& value) {
  return std::visit(
      Overloaded{[](EmptyValue) -> std::int64_t { return 0; },
                 [](NullValue) -> std::int64_t { throw Error(ErrorNumber::InvalidUseOfNull); },
                 [](bool flag) -> std::int64_t { return flag ? -1 : 0; },
                 [](std::int16_t number) -> std::int64_t { return number; },
                 [](std::int32_t number) -> std::int64_t { return number; },
                 [](std::int64_t number) -> std::int64_t { return number; },
                 [](double number) -> std::int64_t { return WholeNumber(number); },
                 [](DateTime date) -> std::int64_t { return WholeNumber(DaysSinceDateZero(date)); },
                 [](const std::string& text) -> std::int64_t {
                   const std::string_view trimmed = base::Trimmed(text);
                   std::int64_t exact = 0;
                   const auto [end, problem] =
                       std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), exact);
                   if (problem == std::errc{} && end == trimmed.data() + trimmed.size()) return exact;
                   return WholeNumber(NumberOfText(text));
                 },
                 [](const std::shared_ptr<const VariantArray>&) -> std::int64_t {
                   throw Error(ErrorNumber::TypeMismatch);
                 },
                 [](const ObjectPtr& object) -> std::int64_t {
                   throw Error(object ? ErrorNumber::MemberNotSupported : ErrorNumber::ObjectNotSet);
                 }},
      value.Get());
}

std::int32_t ToInt32(const Variant& value) {
  return Narrow<std::int32_t>(ToInt64(value));
}
std::int16_t ToInt16(const Variant& value) {
  return Narrow<std::int16_t>(ToInt64(value));
}

double ToDouble(const Variant& value) {
  if (const auto* number = std::get_if<double>(&value.Get())) return *number;
  if (const auto* text = std::get_if<std::string>(&value.Get())) return NumberOfText(*text);
  if (const auto* date = std::get_if<DateTime>(&value.Get())) return DaysSinceDateZero(*date);
  return static_cast<double>(ToInt64(value));
}

bool ToBoolean(const Variant& value) {
  if (const auto* text = std::get_if<std::string>(&value.Get())) {
    const std::string_view word = base::Trimmed(*text);
    if (base::EqualsIgnoringAsciiCase(word, "true")) return true;
    if (base::EqualsIgnoringAsciiCase(word, "false")) return false;
  }
  return ToDouble(value) != 0;
}

DateTime ToDateTime(const Variant& value) {
  if (const auto* date = std::get_if<DateTime>(&value.Get())) return *date;
  if (const auto* text = std::get_if<std::string>(&value.Get())) return CurrentLocale().ParseDateTime(*text);
  const double days = ToDouble(value);
  constexpr double kLastDay = 2958466;   // 1 January 10000
  constexpr double kFirstDay = -657434;  // 1 January 100
  // Before date zero the fraction still counts forward from midnight.
  const double whole = std::trunc(days);
  if (!(whole >= kFirstDay && whole < kLastDay)) throw Error(ErrorNumber::Overflow);
  const double inDay = std::round(std::abs(days - whole) * 86'400'000.0) * 1000.0;
  const std::int64_t microseconds = DateTime().UnixMicroseconds() +
                                    static_cast<std::int64_t>(whole) * kMicrosecondsPerDay +
                                    static_cast<std::int64_t>(inDay);
  if (DateTime::FromUnixMicroseconds(microseconds).Parts().year > 9999) throw Error(ErrorNumber::Overflow);
  return DateTime::FromUnixMicroseconds(microseconds);
}

std::string ToText(const Variant& value) {
  return std::visit(
      Overloaded{[](EmptyValue) { return std::string(); },
                 [](NullValue) -> std::string { throw Error(ErrorNumber::InvalidUseOfNull); },
                 [](bool flag) { return std::string(flag ? "True" : "False"); },
                 [](std::int16_t number) { return std::to_string(number); },
                 [](std::int32_t number) { return std::to_string(number); },
                 [](std::int64_t number) { return std::to_string(number); },
                 [](double number) { return TextOfDouble(number); },
                 [](DateTime date) { return CurrentLocale().GeneralDate(date); },
                 [](const std::string& text) { return text; },
                 [](const std::shared_ptr<const VariantArray>&) -> std::string {
                   throw Error(ErrorNumber::TypeMismatch);
                 },
                 [](const ObjectPtr& object) -> std::string {
                   throw Error(object ? ErrorNumber::MemberNotSupported : ErrorNumber::ObjectNotSet);
                 }},
      value.Get());
}

bool IsNumeric(const Variant& value) {
  if (const auto* text = std::get_if<std::string>(&value.Get())) {
    try {
      return ParseNumber(*text).has_value();
    } catch (const Error&) {
      return false;  // a number beyond every type is not usable as one
    }
  }
  return std::visit(
      [](const auto& held) {
        using Held = std::decay_t<decltype(held)>;
        return std::is_same_v<Held, EmptyValue> || std::is_arithmetic_v<Held>;
      },
      value.Get());
}

std::string ToTextOrEmpty(const Variant& value) {
  return value.IsNull() ? std::string() : ToText(value);
}

}  // namespace automation
