// The commands of orvane-host. Each returns the exit code; what it has to say goes to the two streams.
#pragma once

#include <ostream>

#include "host/arguments.hpp"

namespace orvane_host {

struct Console {
  std::ostream& out;
  std::ostream& err;
};

int CheckSuite(const Arguments& arguments, const Console& console);
int ExplainJob(const Arguments& arguments, const Console& console);
int InitSuite(const Arguments& arguments, const Console& console);
int ListJobs(const Arguments& arguments, const Console& console);
int PreviewJobs(const Arguments& arguments, const Console& console);
int ReportRuns(const Arguments& arguments, const Console& console);
int RunJobs(const Arguments& arguments, const Console& console);
int ShowHelp(const Arguments& arguments, const Console& console);
int ShowStatus(const Arguments& arguments, const Console& console);
int ShowVersion(const Arguments& arguments, const Console& console);

}  // namespace orvane_host
