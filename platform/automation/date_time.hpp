// A local date and time without a zone, to the microsecond, from year 100 to 9999.
#pragma once

#include <compare>
#include <cstdint>

#include "platform/automation/export.hpp"

namespace automation {

struct ORVANE_EXPORT DateTimeParts {
  int year = 1899;
  int month = 12;  // 1 to 12
  int day = 30;    // 1 to 31
  int hour = 0;    // 0 to 23
  int minute = 0;
  int second = 0;
  int microsecond = 0;
  friend auto operator<=>(const DateTimeParts&, const DateTimeParts&) = default;
};

class ORVANE_EXPORT DateTime {
 public:
  // Midnight of 30 December 1899, the platform's date zero.
  constexpr DateTime();

  // Raises error 5 (Invalid procedure call or argument) for parts that name no date between years 100 and
  // 9999.
  static DateTime FromParts(const DateTimeParts& parts);
  static DateTime FromDate(int year, int month, int day);
  // Microseconds since 1970-01-01 00:00:00 on the same local clock.
  static DateTime FromUnixMicroseconds(std::int64_t microseconds);
  static bool IsValid(const DateTimeParts& parts);

  DateTimeParts Parts() const;
  std::int64_t UnixMicroseconds() const { return microseconds_; }
  DateTime DatePart() const;         // the same day at midnight
  DateTime WithoutFraction() const;  // the fraction of a second dropped

  friend auto operator<=>(const DateTime&, const DateTime&) = default;

 private:
  constexpr explicit DateTime(std::int64_t microseconds) : microseconds_(microseconds) {}
  std::int64_t microseconds_;
};

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kMicrosecondsPerDay = 86'400 * kMicrosecondsPerSecond;
// Days from date zero (30 December 1899) to 1 January 1970.
constexpr std::int64_t kDateZeroToUnixDays = 25'569;

constexpr DateTime::DateTime() : microseconds_(-kDateZeroToUnixDays * kMicrosecondsPerDay) {}

// `value` moved by `count` units; a result outside the years 100 to 9999 raises error 5.
ORVANE_EXPORT DateTime AddDays(DateTime value, std::int64_t count);
ORVANE_EXPORT DateTime AddHours(DateTime value, std::int64_t count);
ORVANE_EXPORT DateTime AddMinutes(DateTime value, std::int64_t count);

// Number of minute (or calendar-month) boundaries crossed from `earlier` to `later`; seconds (or days) inside
// the two units do not count. Negative when `later` is the earlier one.
ORVANE_EXPORT std::int64_t MinuteBoundaries(DateTime earlier, DateTime later);
ORVANE_EXPORT std::int64_t MonthBoundaries(DateTime earlier, DateTime later);

}  // namespace automation
