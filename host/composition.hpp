// The one place that knows which implementation stands behind which ProgID.
#pragma once

#include <memory>
#include <vector>

#include "host/suite_home.hpp"
#include "host/wiring.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {

// What reaches the databases that connection strings of this suite lead to.
std::vector<std::shared_ptr<ADODB::engine::Provider>> DatabaseProviders(const SuiteHome& home);

// The suite's configuration as it is now. Raises automation::Error for one that no job could run with.
Vantrel::SiteFile ReadConfiguration(const SuiteHome& home);

// Raises what RegisterSuite would raise.
void CheckSettings(const SuiteHome& home, const Vantrel::SiteFile& site);

// Fills the runtime with everything that the jobs of this suite can create. The machine-wide settings in
// `site` (drives, mail transport) count as they are now, and one that means nothing raises
// Vantrel::kUnreadableFile; connection strings and the directory account are read again when they are needed.
void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                   const Wiring& wiring = {});

}  // namespace orvane_host
