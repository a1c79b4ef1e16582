// The commands of orvane-host. Each returns the exit code; what it has to say goes to the two streams.
#pragma once

#include <ostream>
#include <string_view>

#include "host/arguments.hpp"
#include "run/run_job.hpp"

namespace orvane::host {

struct Console {
  std::ostream& out;
  std::ostream& err;
};

// One thing that a run has to say: how jobs ended to `out`, everything else to `err`, after what it is.
void Print(const Console& console, MessageKind kind, std::string_view text);

int CheckSuite(const Arguments& arguments, const Console& console);
int ExplainJob(const Arguments& arguments, const Console& console);
int InitSuite(const Arguments& arguments, const Console& console);
int ListJobs(const Arguments& arguments, const Console& console);
int PreviewJobs(const Arguments& arguments, const Console& console);
int ReportRuns(const Arguments& arguments, const Console& console);
int RestoreRequests(const Arguments& arguments, const Console& console);
int RunJobs(const Arguments& arguments, const Console& console);
int ShowHelp(const Arguments& arguments, const Console& console);
int ShowStatus(const Arguments& arguments, const Console& console);
int ShowVersion(const Arguments& arguments, const Console& console);

}  // namespace orvane::host
