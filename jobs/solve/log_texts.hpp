// The lines of the job's run log that tell how a run went, and where they stand.
#pragma once

#include <string_view>

namespace OrvaneProcess::solve_log {

inline constexpr std::string_view kFilePrefix = "OrvSolveOnNoResponseSvc_log_";
// The time follows.
inline constexpr std::string_view kStarted = "Solve On No Response - NTService Started at : ";
inline constexpr std::string_view kStopped = " Solve On No Response -NTService Stopped at : ";

}  // namespace OrvaneProcess::solve_log
