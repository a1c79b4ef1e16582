// The one place that knows which implementation stands behind which ProgID.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/session/provider.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/composition/register_suite.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/composition/wiring.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {

// Whether changes deeper in a folder that changes of files are counted under count under it as well.
bool IsCountedDeep(const std::string& folder);

// What reaches the databases that connection strings of this suite lead to.
std::vector<std::shared_ptr<ADODB::engine::Provider>> DatabaseProviders(const SuiteHome& home);

// The suite's configuration as it is now. Raises automation::Error for one that no job could run with.
Vantrel::SiteFile ReadConfiguration(const SuiteHome& home);

// Raises what RegisterSuite would raise.
void CheckSettings(const SuiteHome& home, const Vantrel::SiteFile& site);

// As the function of register_suite.hpp, with the configuration that was read, and with what stands between
// the classes and the jobs. Classes that are in the table stand below it, too; in a world of its own those
// that could change something are left out.
void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                   const Wiring& wiring = {});

}  // namespace orvane
