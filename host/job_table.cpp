#include "host/job_table.hpp"

#include <algorithm>
#include <cstddef>

#include "components/registration/register_jobs.hpp"

namespace orvane_host {
namespace {

constexpr std::string_view kLibrary = "OrvaneProcess.";

bool EqualButForCase(std::string_view left, std::string_view right) {
  const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [folded](char a, char b) { return folded(a) == folded(b); });
}

std::optional<std::string> Time(const JobInfo& job, std::string_view text, std::string_view line) {
  if (job.form == JobInfo::LineForm::Banner) {
    if (line.substr(0, text.size()) != text) return std::nullopt;
    return std::string(line.substr(text.size()));
  }
  constexpr std::string_view kSeparator = "  : ";
  const std::size_t separator = line.find(kSeparator);
  if (separator == std::string_view::npos) return std::nullopt;
  if (line.substr(separator + kSeparator.size(), text.size()) != text) return std::nullopt;
  return std::string(line.substr(0, separator));
}

}  // namespace

const std::vector<JobInfo>& Jobs() {
  using Form = JobInfo::LineForm;
  static const std::vector<JobInfo> jobs = {
      {OrvaneProcess::kArchiveProgId, "OrvArchiveSvc_log_", "Archiving Process started by ",
       "Archiving Process ended.", Form::Message},
      {OrvaneProcess::kCleanUpProgId, "OrvCleanUpSvc_log_",
       "Clean Up - NTService Started at : ", " NTService Stopped at : ", Form::Banner},
      {OrvaneProcess::kDormantUserExpiryProgId, "OrvDormantUserExpirySvc_log_",
       "Dormant User Expiry - NTService Started at : ", " NTService Stopped at : ", Form::Banner},
      {OrvaneProcess::kSolveOnNoResponseProgId, "OrvSolveOnNoResponseSvc_log_",
       "Solve On No Response - NTService Started at : ", " Solve On No Response -NTService Stopped at : ",
       Form::Banner},
  };
  return jobs;
}

const JobInfo* FindJob(std::string_view name) {
  for (const JobInfo& job : Jobs()) {
    if (EqualButForCase(name, job.progId) || EqualButForCase(name, job.progId.substr(kLibrary.size()))) {
      return &job;
    }
  }
  return nullptr;
}

std::optional<std::string> StartTime(const JobInfo& job, std::string_view line) {
  return Time(job, job.startText, line);
}

std::optional<std::string> StopTime(const JobInfo& job, std::string_view line) {
  return Time(job, job.stopText, line);
}

}  // namespace orvane_host
