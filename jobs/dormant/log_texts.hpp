// The run log's file prefix, and the lines from which a program reads how a run ended.
#pragma once

#include <string_view>

namespace OrvaneProcess::dormant_log {

inline constexpr std::string_view kFilePrefix = "OrvDormantUserExpirySvc_log_";
// The time follows.
inline constexpr std::string_view kStarted = "Dormant User Expiry - NTService Started at : ";
inline constexpr std::string_view kStopped = " NTService Stopped at : ";

}  // namespace OrvaneProcess::dormant_log
