// What those have in common that look at a run without making it.
#pragma once

#include <functional>
#include <vector>

#include "run/job_table.hpp"
#include "run/preview_world.hpp"
#include "run/run_job.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {

struct PreviewCall {
  const std::vector<const JobInfo*>& jobs;
  const RunOptions& options;
  const SuiteHome& home;
  const Vantrel::SiteFile& site;
  PreviewWorld& world;
};

// Calls `look` apart from any run, with a world that stays as it is, when the services of the jobs answer;
// gives its exit code, or the one that says why it was not called, which is told. A world that cannot be kept
// apart ends the process. Of the options count home, caller, classes, call, stop, leave and tell.
int LookAtRun(const std::vector<const JobInfo*>& jobs, const RunOptions& options,
              const std::function<int(const PreviewCall& call)>& look);

}  // namespace orvane
