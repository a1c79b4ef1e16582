// Dates in the order of ISO 8601, for files, databases and programs.
#pragma once

#include <string>

#include "platform/automation/date_time.hpp"
#include "platform/automation/export.hpp"

namespace automation {

// "YYYY-MM-DD HH:MM:SS", and the fraction without its trailing zeros when there is one, so that strings
// compare as the moments do.
ORVANE_EXPORT std::string IsoText(DateTime value);

}  // namespace automation
