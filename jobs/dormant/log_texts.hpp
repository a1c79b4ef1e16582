// The lines of the job's run log that tell how a run went, and where they stand.
#pragma once

#include <string_view>

namespace OrvaneProcess::dormant_log {

inline constexpr std::string_view kFilePrefix = "OrvDormantUserExpirySvc_log_";
// The time follows.
inline constexpr std::string_view kStarted = "Dormant User Expiry - NTService Started at : ";
inline constexpr std::string_view kStopped = " NTService Stopped at : ";

}  // namespace OrvaneProcess::dormant_log
