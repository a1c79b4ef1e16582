// An entry as the text that journals and previews hold.
#pragma once

#include <string>
#include <string_view>

#include "effects/recorder.hpp"

namespace effects {

inline constexpr int kJournalVersion = 1;

// Appends the entry as one JSON object, without a line break. `run` is the name of the run.
void AppendLine(std::string& to, std::string_view run, const Entry& entry);

// "YYYYMMDDTHHMMSSZ-pid-Class"
std::string RunName(std::chrono::system_clock::time_point begin, std::int64_t process, std::string_view job);

// As failed lines and messages show it: the description and the number.
std::string ErrorText(const automation::Error& error);

}  // namespace effects
