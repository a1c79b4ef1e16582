#include "run/run_job.hpp"

#include <exception>
#include <string>

#include "effects/limit.hpp"
#include "effects/recorder.hpp"
#include "platform/automation/error.hpp"
#include "run/job_table.hpp"
#include "run/journal_lines.hpp"
#include "run/preview_call.hpp"
#include "run/preview_run.hpp"
#include "run/run_jobs.hpp"

namespace orvane {

int RunJob(const RunOptions& options) try {
  const JobInfo* const job = FindJob(options.job);
  if (job == nullptr) {
    const automation::Error unknown(automation::ErrorNumber::CannotCreateObject);
    Tell(options, Telling::Message,
         options.job + ": " + unknown.Description() + " (" + std::to_string(unknown.Number()) + ")");
    return kUsage;
  }
  if (options.limit && !effects::Limit::Parse(*options.limit)) {
    Tell(options, Telling::Message,
         "\"" + *options.limit + "\" is no limit: a number, or a share such as 5%");
    return kUsage;
  }
  if (!options.preview) return RunJobs({job}, options, {});
  JournalLines lines([&options](std::string_view line) {
    if (options.line) options.line(line);
  });
  return LookAtRun({job}, options, [&lines](const PreviewCall& call) {
    const PreviewedJob previewed = PreviewJob(call.home, call.site, *call.jobs.front(), call.world,
                                              {.options = call.options, .listener = &lines, .watches = true});
    if (previewed.finished) return kOk;
    Tell(call.options, Telling::Message,
         std::string(previewed.job->progId) + ": would end unfinished: " + previewed.endedBy);
    return kUnfinished;
  });
} catch (const std::exception& error) {
  Tell(options, Telling::Message, error.what());
  return kUnfinished;
}

}  // namespace orvane
