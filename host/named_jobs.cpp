#include "host/named_jobs.hpp"

#include <algorithm>

#include "host/arguments.hpp"
#include "platform/automation/error.hpp"

namespace orvane::host {

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

}  // namespace orvane::host
