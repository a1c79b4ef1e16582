// The jobs of the library, and how their run logs read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "components/registration/job_logs.hpp"

namespace orvane {

using JobInfo = OrvaneProcess::JobLog;

// In alphabetical order of the ProgIDs.
const std::vector<JobInfo>& Jobs();

// The job meant by a ProgID or a class name, in any case; null when there is none.
const JobInfo* FindJob(std::string_view name);

// "Archive" of OrvaneProcess.Archive. Lives as long as the program.
std::string_view ClassName(const JobInfo& job);

// The time that a start (or stop) line of the job gives, without the line's CR LF; nothing for any other
// line.
std::optional<std::string> StartTime(const JobInfo& job, std::string_view line);
std::optional<std::string> StopTime(const JobInfo& job, std::string_view line);

// The message of a line that tells of a failure; nothing for any other line.
std::optional<std::string> Failure(const JobInfo& job, std::string_view line);

}  // namespace orvane
