// The jobs that the host knows, and how their run logs read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane_host {

struct JobInfo {
  std::string_view progId;
  std::string_view logPrefix;  // of the run log's file name
  // What a run's first and last lines say. A banner line begins with its text and ends with the time; a
  // message line begins with the time.
  std::string_view startText;
  std::string_view stopText;
  enum class LineForm { Banner, Message } form;
};

// In alphabetical order of the ProgIDs.
const std::vector<JobInfo>& Jobs();

// The job meant by a ProgID or a class name, in any case; null when there is none.
const JobInfo* FindJob(std::string_view name);

// The time that a start (or stop) line of the job gives, without the line's CR LF; nothing for any other
// line.
std::optional<std::string> StartTime(const JobInfo& job, std::string_view line);
std::optional<std::string> StopTime(const JobInfo& job, std::string_view line);

}  // namespace orvane_host
