#include "run/services.hpp"

#include <string>
#include <string_view>

#include "platform/automation/runtime.hpp"
#include "run/run_jobs.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/site_settings.hpp"

namespace orvane {

orvane_preflight::Probes ProbesOf(const SuiteHome& home, const Vantrel::SiteFile& site) {
  return {.directory = &orvane_preflight::ProbeDirectory,
          .mail = [&home, &site] { CDO::ProbeTransport(MailSettings(site, home)); }};
}

bool ServicesAnswer(const std::vector<const JobInfo*>& jobs, const SuiteHome& home,
                    const Vantrel::SiteFile& site, const RunOptions& options) {
  std::vector<std::string_view> progIds;
  for (const JobInfo* job : jobs) progIds.push_back(job->progId);
  automation::Runtime runtime;
  runtime.classes = options.classes;
  RegisterSuite(runtime, home, site);
  const automation::RuntimeScope scope(runtime);
  const auto refusals = orvane_preflight::Ask(progIds, ProbesOf(home, site));
  for (const auto& [progId, service, reason] : refusals) {
    Tell(options, MessageKind::Error,
         std::string(service) + " does not do what " + std::string(progId) +
             " needs of it, nothing was begun: " + reason);
  }
  return refusals.empty();
}

}  // namespace orvane
