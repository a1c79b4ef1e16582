#include "host/services.hpp"

#include <string_view>

#include "host/composition.hpp"
#include "host/site_settings.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_host {

orvane_preflight::Probes ProbesOf(const SuiteHome& home, const Vantrel::SiteFile& site) {
  return {.directory = &orvane_preflight::AskDirectory,
          .mail = [&home, &site] { CDO::AskTransport(MailSettings(site, home)); }};
}

bool ServicesAnswer(const std::vector<const JobInfo*>& jobs, const SuiteHome& home,
                    const Vantrel::SiteFile& site, const Console& console) {
  std::vector<std::string_view> progIds;
  for (const JobInfo* job : jobs) progIds.push_back(job->progId);
  automation::Runtime runtime;
  RegisterSuite(runtime, home, site);
  const automation::RuntimeScope scope(runtime);
  const auto refusals = orvane_preflight::Ask(progIds, ProbesOf(home, site));
  for (const auto& [progId, service, reason] : refusals) {
    console.err << "orvane-host: " << service << " does not do what " << progId
                << " needs of it, nothing was begun: " << reason << '\n';
  }
  if (!refusals.empty()) console.err << "orvane-host: --no-preflight begins all the same\n";
  return refusals.empty();
}

}  // namespace orvane_host
