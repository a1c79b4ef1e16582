// Dates as databases without a date type keep them: "2004-07-26 09:05:03", as automation::IsoText writes
// them.
#pragma once

#include <optional>
#include <string_view>

#include "platform/automation/date_time.hpp"

namespace ADODB::engine {

// Reads "YYYY-MM-DD", maybe followed by a space or "T" and HH:MM[:SS[.fraction]]; digits of the fraction
// beyond the sixth are dropped. Nothing for anything else, and for a day or time that does not exist.
std::optional<automation::DateTime> ParseIso(std::string_view text);

}  // namespace ADODB::engine
