// Runs that the host stopped at a safe point, by their journals.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "effects/journal_files.hpp"
#include "platform/automation/date_time.hpp"
#include "run/job_table.hpp"

namespace orvane::host {

class StoppedRuns {
 public:
  // Of the journals in the folder; a journal that cannot be read tells nothing.
  explicit StoppedRuns(const std::filesystem::path& folder);

  // "stopped on request", or why else the job's run was stopped whose run log says that it began at this
  // moment, in one line. Nothing for a run that was not stopped, or has no journal.
  std::optional<std::string> HowStopped(const JobInfo& job, automation::DateTime began) const;

 private:
  std::vector<effects::JournalFile> journals_;
};

}  // namespace orvane::host
