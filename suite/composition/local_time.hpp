// The local time of jobs as the times that files have.
#pragma once

#include <ctime>

#include "platform/automation/date_time.hpp"

namespace orvane {

// In the zone of this process. Of an hour that comes twice it is one of both.
inline std::time_t UtcOf(automation::DateTime moment) {
  const automation::DateTimeParts parts = moment.Parts();
  std::tm local{};
  local.tm_year = parts.year - 1900;
  local.tm_mon = parts.month - 1;
  local.tm_mday = parts.day;
  local.tm_hour = parts.hour;
  local.tm_min = parts.minute;
  local.tm_sec = parts.second;
  local.tm_isdst = -1;
  return std::mktime(&local);
}

}  // namespace orvane
