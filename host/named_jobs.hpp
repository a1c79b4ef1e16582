// The jobs that a command line names.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "run/job_table.hpp"

namespace orvane::host {

// The jobs of these names, each once; all of them when there are no names. Raises UsageError for a name that
// is none.
std::vector<const JobInfo*> JobsNamed(const std::vector<std::string>& names);

// The jobs meant by several names; nothing when one is unknown, which is told.
std::optional<std::vector<const JobInfo*>> JobsNamed(const std::vector<std::string>& names,
                                                     std::ostream& err);

}  // namespace orvane::host
