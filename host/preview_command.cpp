#include <string>

#include "host/commands.hpp"
#include "host/preview_call.hpp"
#include "host/preview_summary.hpp"
#include "run/exit_codes.hpp"
#include "run/journal_lines.hpp"
#include "run/preview_run.hpp"

namespace orvane::host {
namespace {

int Preview(const Arguments& arguments, const Console& console, const PreviewCall& call) {
  JournalLines lines([&console](std::string_view line) { console.out << line << '\n'; });
  int exitCode = kOk;
  for (const JobInfo* job : call.jobs) {
    const PreviewedJob previewed = PreviewJob(call.home, call.site, *job, call.world,
                                              {.options = call.options,
                                               .at = arguments.at,
                                               .listener = arguments.json ? &lines : nullptr,
                                               .watches = true});
    if (!arguments.json) PrintSummary(previewed, LastRunsOf(call.home, *job), console.out);
    if (previewed.finished) continue;
    exitCode = kUnfinished;
    console.err << "orvane-host: " << job->progId
                << ": would end without its stop line: " << previewed.endedBy << '\n';
  }
  console.out.flush();
  return exitCode;
}

}  // namespace

int PreviewJobs(const Arguments& arguments, const Console& console) {
  return LookAtRun(arguments, console,
                   [&](const PreviewCall& call) { return Preview(arguments, console, call); });
}

}  // namespace orvane::host
