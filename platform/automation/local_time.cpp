#include "platform/automation/local_time.hpp"

#include <algorithm>

namespace automation {

DateTime LocalTime(const std::timespec& moment) {
  std::tm local{};
  localtime_r(&moment.tv_sec, &local);
  return DateTime::FromParts({.year = local.tm_year + 1900,
                              .month = local.tm_mon + 1,
                              .day = local.tm_mday,
                              .hour = local.tm_hour,
                              .minute = local.tm_min,
                              .second = std::min(local.tm_sec, 59),
                              .microsecond = static_cast<int>(moment.tv_nsec / 1000)});
}

}  // namespace automation
