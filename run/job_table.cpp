#include "run/job_table.hpp"

#include <cstddef>

#include "platform/base/text.hpp"

namespace orvane {
namespace {

constexpr std::string_view kLibrary = "OrvaneProcess.";

std::optional<std::string> Time(const JobInfo& job, std::string_view text, std::string_view line) {
  if (job.separator.empty()) {
    if (!line.starts_with(text)) return std::nullopt;
    return std::string(line.substr(text.size()));
  }
  const std::size_t separator = line.find(job.separator);
  if (separator == std::string_view::npos) return std::nullopt;
  if (!line.substr(separator + job.separator.size()).starts_with(text)) return std::nullopt;
  return std::string(line.substr(0, separator));
}

}  // namespace

const std::vector<JobInfo>& Jobs() {
  return OrvaneProcess::JobLogs();
}

const JobInfo* FindJob(std::string_view name) {
  for (const JobInfo& job : Jobs()) {
    if (base::EqualsIgnoringAsciiCase(name, job.progId) ||
        base::EqualsIgnoringAsciiCase(name, ClassName(job))) {
      return &job;
    }
  }
  return nullptr;
}

std::string_view ClassName(const JobInfo& job) {
  return job.progId.substr(kLibrary.size());
}

std::optional<std::string> StartTime(const JobInfo& job, std::string_view line) {
  return Time(job, job.startText, line);
}

std::optional<std::string> StopTime(const JobInfo& job, std::string_view line) {
  return Time(job, job.stopText, line);
}

std::optional<std::string> Failure(const JobInfo& job, std::string_view line) {
  if (job.tellsFailure == nullptr) return std::nullopt;
  const std::size_t separator = line.find(job.separator);
  if (separator == std::string_view::npos) return std::nullopt;
  const std::string_view message = line.substr(separator + job.separator.size());
  return job.tellsFailure(message) ? std::optional<std::string>(message) : std::nullopt;
}

}  // namespace orvane
