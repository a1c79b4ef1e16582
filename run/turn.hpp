// The turn of whoever changes a suite.
#pragma once

#include <memory>

#include "run/lock/suite_lock.hpp"
#include "run/run_job.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {

// Waits for the suite's lock as the options say, and says for whom; null, with the exit code set and the
// reason told, when the turn does not come. Of the options count caller, wait, stop and tell.
std::unique_ptr<orvane_lock::SuiteLock> TakeTurn(const SuiteHome& home, const Vantrel::SiteFile& site,
                                                 const RunOptions& options, int& exitCode);

}  // namespace orvane
