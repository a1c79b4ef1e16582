#include "components/registration/job_logs.hpp"

#include "components/registration/register_jobs.hpp"
#include "jobs/archive/log_texts.hpp"
#include "jobs/cleanup/log_texts.hpp"
#include "jobs/dormant/log_texts.hpp"
#include "jobs/solve/log_texts.hpp"

namespace OrvaneProcess {

const std::vector<JobLog>& JobLogs() {
  static const std::vector<JobLog> logs = {
      {.progId = kArchiveProgId,
       .filePrefix = archive_log::kFilePrefix,
       .startText = archive_log::kStartedBy,
       .stopText = archive_log::kEnded,
       .separator = archive_log::kSeparator,
       .tellsFailure = &archive_log::TellsFailure,
       .isKnownEntry = nullptr,
       .needsHands = nullptr},
      {.progId = kCleanUpProgId,
       .filePrefix = clean_up_log::kFilePrefix,
       .startText = clean_up_log::kStarted,
       .stopText = clean_up_log::kStopped,
       .separator = {},
       .tellsFailure = nullptr,
       .isKnownEntry = &clean_up_log::IsAgeSweepsOwn,
       .needsHands = &clean_up_log::IsStuckAttachment},
      {.progId = kDormantUserExpiryProgId,
       .filePrefix = dormant_log::kFilePrefix,
       .startText = dormant_log::kStarted,
       .stopText = dormant_log::kStopped,
       .separator = {},
       .tellsFailure = nullptr,
       .isKnownEntry = nullptr,
       .needsHands = nullptr},
      {.progId = kSolveOnNoResponseProgId,
       .filePrefix = solve_log::kFilePrefix,
       .startText = solve_log::kStarted,
       .stopText = solve_log::kStopped,
       .separator = {},
       .tellsFailure = nullptr,
       .isKnownEntry = nullptr,
       .needsHands = nullptr},
  };
  return logs;
}

}  // namespace OrvaneProcess
