// The run log's file prefix, the lines from which a program reads how a run ended, and which of the job's
// entries in the error log need no attention.
#pragma once

#include <string_view>

namespace OrvaneProcess::clean_up_log {

inline constexpr std::string_view kFilePrefix = "OrvCleanUpSvc_log_";
// The time follows.
inline constexpr std::string_view kStarted = "Clean Up - NTService Started at : ";
inline constexpr std::string_view kStopped = " NTService Stopped at : ";

// Whether an entry is that of a sweep by age at its first file (see item_times.hpp): it stands in the log of
// every run that finds one, and nothing has gone wrong that an operator could set right.
bool IsAgeSweepsOwn(std::string_view entry);

// Whether an entry is that of the purge of old attachments at a folder that is not there, where it stops in
// every run until the folder or its row is put right by hand.
bool IsStuckAttachment(std::string_view entry);

}  // namespace OrvaneProcess::clean_up_log
