// The machine's time in the zone of this process.
#pragma once

#include <ctime>

#include "platform/automation/date_time.hpp"

namespace automation {

// A leap second that the zone data may report is folded into the second before it.
ORVANE_EXPORT DateTime LocalTime(const std::timespec& moment);

}  // namespace automation
