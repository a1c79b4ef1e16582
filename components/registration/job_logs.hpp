// The format of the jobs' run logs, for programs that read from them how a run ended.
#pragma once

#include <string_view>
#include <vector>

namespace OrvaneProcess {

// Texts live as long as the program.
struct JobLog {
  std::string_view progId;
  std::string_view filePrefix;  // the day and ".txt" follow
  // What a run's first and last lines say. Without a separator such a line begins with its text and ends with
  // the time; with one it begins with the time and the separator.
  std::string_view startText;
  std::string_view stopText;
  std::string_view separator;

  // Whether a line's message reports a failure; null for a job whose run log has no such lines.
  bool (*tellsFailure)(std::string_view message);
  // Entries in the error log that every run makes, and those that recur until an operator acts; null for a
  // job without such entries.
  bool (*isKnownEntry)(std::string_view entry);
  bool (*needsHands)(std::string_view entry);
};

// In alphabetical order of the ProgIDs.
const std::vector<JobLog>& JobLogs();

}  // namespace OrvaneProcess
