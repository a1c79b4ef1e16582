// The frame of the commands that look at a run without making it.
#pragma once

#include <functional>

#include "host/commands.hpp"
#include "run/preview_call.hpp"

namespace orvane::host {

// As the library's, with the jobs that the command line names.
int LookAtRun(const Arguments& arguments, const Console& console,
              const std::function<int(const PreviewCall& call)>& look);

}  // namespace orvane::host
