// The services of other machines that the jobs of a run need.
#pragma once

#include <vector>

#include "run/job_table.hpp"
#include "run/preflight/preflight.hpp"
#include "run/run_job.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {

// How this suite's services are asked; the directory by the current runtime. Home and site must outlive it.
orvane_preflight::Probes ProbesOf(const SuiteHome& home, const Vantrel::SiteFile& site);

// Whether the services answer that these jobs need before they begin; those that do not are told.
bool ServicesAnswer(const std::vector<const JobInfo*>& jobs, const SuiteHome& home,
                    const Vantrel::SiteFile& site, const RunOptions& options);

}  // namespace orvane
