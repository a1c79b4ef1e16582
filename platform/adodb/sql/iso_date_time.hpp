// Dates as databases without a date type keep them: "2004-07-26 09:05:03".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"

namespace ADODB::engine {

// "YYYY-MM-DD HH:MM:SS", and the fraction without its trailing zeros when there is one, so that strings
// compare as the moments do.
std::string IsoText(automation::DateTime value);

// Reads "YYYY-MM-DD", maybe followed by a space or "T" and HH:MM[:SS[.fraction]]; digits of the fraction
// beyond the sixth are dropped. Nothing for anything else, and for a day or time that does not exist.
std::optional<automation::DateTime> ParseIso(std::string_view text);

}  // namespace ADODB::engine
