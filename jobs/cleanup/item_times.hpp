// How the clean-up job reads and compares the last-access times of files and folders.
#pragma once

#include <cstdint>
#include <string>

#include "platform/automation/date_time.hpp"
#include "platform/automation/variant.hpp"

namespace OrvaneProcess {

// The locale's short date with "-" between its parts, a space and hh:mm:ss.
std::string ItemTimeText(automation::DateTime value);

// Builds that text and then assigns it to the default property of the current timestamp, as if that were an
// object. It is a text, so every call raises 424 and nothing is ever returned: with KeepTemporaryFiles set,
// the comparisons below would delete the fresh files and keep the old ones, and installations have come to
// rely on nothing being deleted by age.
automation::Variant RenderItemTime(automation::DateTime value);

// Whether an item goes: the minute boundaries from its last access to the run start are at most
// `keepMinutes`. So an item used within the keep period (or in the future) passes and one left alone for
// longer does not. Both times are date-times or texts that the current locale reads; 13 for a text that is
// none.
bool AgeTestPasses(std::int32_t keepMinutes, const automation::Variant& lastAccessed,
                   const automation::Variant& runStart);

// The same with calendar-month boundaries, compared with the same number of minutes.
bool MonthTestPasses(std::int32_t keepMinutes, const automation::Variant& lastAccessed,
                     const automation::Variant& runStart);

}  // namespace OrvaneProcess
