// A previewed job in words.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "run/preview_run.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane::host {

// What the last runs of a job did, the oldest first, by kind and subject (see effects::Counts::Key).
using RunCounts = std::map<std::pair<std::string, std::string>, std::uint64_t>;

// From the journals of the suite, at most ten runs that came to their end. Journals that cannot be read are
// left out.
std::vector<RunCounts> LastRunsOf(const SuiteHome& home, const JobInfo& job);

void PrintSummary(const PreviewedJob& previewed, const std::vector<RunCounts>& lastRuns, std::ostream& out);

}  // namespace orvane::host
