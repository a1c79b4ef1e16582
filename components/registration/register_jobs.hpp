// Puts the four job classes into a class table under their ProgIDs.
#pragma once

#include <string_view>

#include "platform/automation/class_table.hpp"

namespace OrvaneProcess {

inline constexpr std::string_view kDormantUserExpiryProgId = "OrvaneProcess.DormantUserExpiry";
inline constexpr std::string_view kCleanUpProgId = "OrvaneProcess.CleanUp";
inline constexpr std::string_view kArchiveProgId = "OrvaneProcess.Archive";
inline constexpr std::string_view kSolveOnNoResponseProgId = "OrvaneProcess.SolveOnNoResponse";

void RegisterJobs(automation::ClassTable& classes);

}  // namespace OrvaneProcess
