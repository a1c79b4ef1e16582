// OrvaneUtilities: the parts of the job run logs that all jobs share. Each job holds its own writer.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"

namespace OrvaneUtilities {

// The lines of 53 asterisks that frame the banners.
std::string_view RunLogRuler();

// Year "_" month "_" day without leading zeros: 2004_7_26.
std::string RunLogDatePart(automation::DateTime date);

}  // namespace OrvaneUtilities
