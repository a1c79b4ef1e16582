#include "run/preflight/preflight.hpp"

#include "common/connections.hpp"
#include "common/directory_users.hpp"
#include "components/interfaces/user.hpp"
#include "components/registration/job_needs.hpp"
#include "platform/automation/error.hpp"

namespace orvane_preflight {
namespace {

using OrvaneProcess::JobNeeds;

void AskOne(std::span<const std::string_view> progIds, std::string_view service, bool JobNeeds::*needed,
            const std::function<void()>& probe, std::vector<Refusal>& refusals) {
  for (const std::string_view progId : progIds) {
    for (const JobNeeds& needs : OrvaneProcess::NeedsOfJobs()) {
      if (needs.progId != progId || !(needs.*needed)) continue;
      try {
        probe();
      } catch (const automation::Error& error) {
        refusals.push_back({needs.progId, service, error.Description()});
      }
      return;
    }
  }
}

}  // namespace

std::vector<Refusal> Ask(std::span<const std::string_view> progIds, const Probes& probes) {
  std::vector<Refusal> refusals;
  AskOne(progIds, kDirectory, &JobNeeds::directory, probes.directory, refusals);
  AskOne(progIds, kMail, &JobNeeds::mail, probes.mail, refusals);
  return refusals;
}

void ProbeDirectory() {
  constexpr std::string_view kNobody = "orvane-host.preflight";
  try {
    OrvaneUtilities::BindMembershipUser(
        OrvaneUtilities::GetInstallDirectory() + "\\config\\siteConfiguration.xml", kNobody);
  } catch (const automation::Error& error) {
    if (error.Number() != VnMembership::kUnknownUser) throw;
  }
}

}  // namespace orvane_preflight
