// A moment by its parts, for tests that need many.
#pragma once

#include "platform/automation/date_time.hpp"

namespace orvane_test {

inline automation::DateTime Moment(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                                   int microsecond = 0) {
  return automation::DateTime::FromParts({.year = year,
                                          .month = month,
                                          .day = day,
                                          .hour = hour,
                                          .minute = minute,
                                          .second = second,
                                          .microsecond = microsecond});
}

}  // namespace orvane_test
