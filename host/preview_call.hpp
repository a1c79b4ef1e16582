// What the commands have in common that look at a run without making it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/commands.hpp"
#include "host/job_table.hpp"
#include "host/preview_world.hpp"
#include "host/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {

struct PreviewCall {
  const std::vector<const JobInfo*>& jobs;
  const SuiteHome& home;
  const Vantrel::SiteFile& site;
  PreviewWorld& world;
};

// Calls `look` apart from any run, with a world that stays as it is, when the jobs are known and their
// services answer; gives its exit code, or the one that says why it was not called. A world that cannot be
// kept apart ends the process.
int LookAtRun(const Arguments& arguments, const Console& console,
              const std::function<int(const PreviewCall& call)>& look);

}  // namespace orvane_host
