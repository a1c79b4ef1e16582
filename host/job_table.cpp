#include "host/job_table.hpp"

#include <algorithm>
#include <cstddef>

#include "host/arguments.hpp"
#include "platform/automation/error.hpp"
#include "platform/base/text.hpp"

namespace orvane_host {
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

std::vector<const JobInfo*> JobsNamed(const std::vector<std::string>& names) {
  std::vector<const JobInfo*> jobs;
  for (const JobInfo& job : Jobs()) {
    if (names.empty()) jobs.push_back(&job);
  }
  for (const std::string& name : names) {
    const JobInfo* job = FindJob(name);
    if (job == nullptr) throw UsageError("unknown job " + name + "; \"orvane-host list\" shows the jobs");
    if (std::find(jobs.begin(), jobs.end(), job) == jobs.end()) jobs.push_back(job);
  }
  return jobs;
}

std::string_view ClassName(const JobInfo& job) {
  return job.progId.substr(kLibrary.size());
}

std::optional<std::vector<const JobInfo*>> JobsNamed(const std::vector<std::string>& names,
                                                     std::ostream& err) {
  std::vector<const JobInfo*> jobs;
  for (const std::string& name : names) {
    const JobInfo* const job = FindJob(name);
    if (job == nullptr) {
      const automation::Error unknown(automation::ErrorNumber::CannotCreateObject);
      err << "orvane-host: " << name << ": " << unknown.Description() << " (" << unknown.Number()
          << "); \"orvane-host list\" shows the jobs\n";
      return std::nullopt;
    }
    jobs.push_back(job);
  }
  return jobs;
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

}  // namespace orvane_host
