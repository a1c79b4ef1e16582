// The one place that knows which implementation stands behind which ProgID.
#pragma once

#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/log/file_log.hpp"

namespace orvane_host {

// Fills the runtime with everything that the jobs of this suite can create. The machine-wide settings in
// `site` (mail transport, directory) count as they are now; connection strings are read again when the file
// changes.
void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                   Vantrel::LogListener listener);

}  // namespace orvane_host
