// The exchange of a service request as its columns Q_TEXT and A_TEXT hold it.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"

namespace demo {

// One entry: four marking characters, one character that is skipped, 23 characters of date and time, the
// text.
std::string Post(automation::DateTime time, std::string_view text);    // of the customer
std::string Answer(automation::DateTime time, std::string_view text);  // of the staff

}  // namespace demo
