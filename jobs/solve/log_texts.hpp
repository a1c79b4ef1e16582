// The run log's file prefix, and the lines from which a program reads how a run ended.
#pragma once

#include <string_view>

namespace OrvaneProcess::solve_log {

inline constexpr std::string_view kFilePrefix = "OrvSolveOnNoResponseSvc_log_";
// The time follows.
inline constexpr std::string_view kStarted = "Solve On No Response - NTService Started at : ";
inline constexpr std::string_view kStopped = " Solve On No Response -NTService Stopped at : ";

}  // namespace OrvaneProcess::solve_log
