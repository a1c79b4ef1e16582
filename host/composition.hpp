// The one place that knows which implementation stands behind which ProgID.
#pragma once

#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/log/file_log.hpp"

namespace orvane_host {

// Fills the runtime with everything that the jobs of this suite can create. The machine-wide settings in
// `site` (drives, mail transport) count as they are now, and one that means nothing raises
// Vantrel::kUnreadableFile; connection strings and the directory account are read again when they are needed.
void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                   Vantrel::LogListener listener);

}  // namespace orvane_host
