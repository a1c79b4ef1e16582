#include "platform/automation/date_time.hpp"

#include <chrono>
#include <limits>

#include "platform/automation/error.hpp"

namespace automation {
namespace {

constexpr std::int64_t kMicrosecondsPerMinute = 60 * kMicrosecondsPerSecond;
constexpr std::int64_t kMicrosecondsPerHour = 60 * kMicrosecondsPerMinute;

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t unit) {
  return value / unit - (value % unit < 0 ? 1 : 0);
}

constexpr std::int64_t DaysFromCivil(int year, int month, int day) {
  using namespace std::chrono;
  const year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                            std::chrono::day{static_cast<unsigned>(day)}};
  return sys_days{date}.time_since_epoch().count();
}

constexpr std::int64_t kFirst = DaysFromCivil(100, 1, 1) * kMicrosecondsPerDay;
constexpr std::int64_t kPastLast = DaysFromCivil(10000, 1, 1) * kMicrosecondsPerDay;

DateTime Checked(std::int64_t microseconds) {
  if (microseconds < kFirst || microseconds >= kPastLast) throw Error(ErrorNumber::InvalidProcedureCall);
  return DateTime::FromUnixMicroseconds(microseconds);
}

DateTime Shift(DateTime value, std::int64_t count, std::int64_t unit) {
  // Farther than the calendar is long, and the sum still fits.
  const std::int64_t farthest = std::numeric_limits<std::int64_t>::max() / 2 / unit;
  if (count > farthest || count < -farthest) throw Error(ErrorNumber::InvalidProcedureCall);
  return Checked(value.UnixMicroseconds() + count * unit);
}

}  // namespace

bool DateTime::IsValid(const DateTimeParts& parts) {
  using namespace std::chrono;
  // std::chrono keeps months and days in a byte, so larger numbers must not get there.
  if (parts.year < 100 || parts.year > 9999 || parts.month < 1 || parts.month > 12 || parts.day < 1 ||
      parts.day > 31) {
    return false;
  }
  const year_month_day date{std::chrono::year{parts.year},
                            std::chrono::month{static_cast<unsigned>(parts.month)},
                            std::chrono::day{static_cast<unsigned>(parts.day)}};
  return date.ok() && parts.hour >= 0 && parts.hour < 24 && parts.minute >= 0 && parts.minute < 60 &&
         parts.second >= 0 && parts.second < 60 && parts.microsecond >= 0 &&
         parts.microsecond < kMicrosecondsPerSecond;
}

DateTime DateTime::FromParts(const DateTimeParts& parts) {
  if (!IsValid(parts)) throw Error(ErrorNumber::InvalidProcedureCall);
  const std::int64_t seconds = parts.hour * 3600 + parts.minute * 60 + parts.second;
  return DateTime(DaysFromCivil(parts.year, parts.month, parts.day) * kMicrosecondsPerDay +
                  seconds * kMicrosecondsPerSecond + parts.microsecond);
}

DateTime DateTime::FromDate(int year, int month, int day) {
  return FromParts({.year = year, .month = month, .day = day});
}

DateTime DateTime::FromUnixMicroseconds(std::int64_t microseconds) {
  return DateTime(microseconds);
}

DateTimeParts DateTime::Parts() const {
  using namespace std::chrono;
  const std::int64_t dayNumber = FloorDivide(microseconds_, kMicrosecondsPerDay);
  const std::int64_t inDay = microseconds_ - dayNumber * kMicrosecondsPerDay;
  const year_month_day date{sys_days{days{dayNumber}}};
  const std::int64_t seconds = inDay / kMicrosecondsPerSecond;
  return {.year = static_cast<int>(date.year()),
          .month = static_cast<int>(static_cast<unsigned>(date.month())),
          .day = static_cast<int>(static_cast<unsigned>(date.day())),
          .hour = static_cast<int>(seconds / 3600),
          .minute = static_cast<int>(seconds / 60 % 60),
          .second = static_cast<int>(seconds % 60),
          .microsecond = static_cast<int>(inDay % kMicrosecondsPerSecond)};
}

DateTime DateTime::DatePart() const {
  return DateTime(FloorDivide(microseconds_, kMicrosecondsPerDay) * kMicrosecondsPerDay);
}

DateTime DateTime::WithoutFraction() const {
  return DateTime(FloorDivide(microseconds_, kMicrosecondsPerSecond) * kMicrosecondsPerSecond);
}

DateTime AddDays(DateTime value, std::int64_t count) {
  return Shift(value, count, kMicrosecondsPerDay);
}
DateTime AddHours(DateTime value, std::int64_t count) {
  return Shift(value, count, kMicrosecondsPerHour);
}
DateTime AddMinutes(DateTime value, std::int64_t count) {
  return Shift(value, count, kMicrosecondsPerMinute);
}

std::int64_t MinuteBoundaries(DateTime earlier, DateTime later) {
  return FloorDivide(later.UnixMicroseconds(), kMicrosecondsPerMinute) -
         FloorDivide(earlier.UnixMicroseconds(), kMicrosecondsPerMinute);
}

std::int64_t MonthBoundaries(DateTime earlier, DateTime later) {
  const DateTimeParts from = earlier.Parts();
  const DateTimeParts to = later.Parts();
  return (to.year - from.year) * 12 + (to.month - from.month);
}

}  // namespace automation
