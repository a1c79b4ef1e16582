// Reads the run logs that the jobs write: whether a run ended, and which runs there were.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/automation/date_time.hpp"
#include "run/job_table.hpp"

namespace orvane {

// What a run has added to its log.
struct AddedLines {
  bool started = false;
  bool stopped = false;
  std::vector<std::string> failures;  // their messages, in the code page of the log
};

// One job's run logs as they are before a run, to tell afterwards what the run added.
class RunLogWatch {
 public:
  RunLogWatch(std::filesystem::path folder, const JobInfo& job);

  // What was added since. A run across midnight adds to two files; a file that is new counts from its
  // beginning.
  AddedLines Added() const;

 private:
  const std::filesystem::path folder_;
  const JobInfo& job_;
  std::map<std::filesystem::path, std::uintmax_t> sizes_;
};

// A moment as a run log tells it.
struct LoggedTime {
  std::string text;  // as the job wrote it
  // By the name of the log and the time of day at the end of the text, which no locale changes; nothing where
  // the text does not end in one.
  std::optional<automation::DateTime> at;
};

struct LoggedRun {
  LoggedTime started;
  std::optional<LoggedTime> stopped;  // nothing: unfinished
};

// The job's last runs, at most `count`, the oldest of them first. A stop line ends the latest run that was
// still open; a start line after an open run leaves that one unfinished.
std::vector<LoggedRun> LastRuns(const std::filesystem::path& folder, const JobInfo& job, std::size_t count);

}  // namespace orvane
