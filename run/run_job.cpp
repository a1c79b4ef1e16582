#include "run/run_job.hpp"

#include <pthread.h>

#include <csignal>
#include <ctime>
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
namespace {

// A peer that hangs up is an error of whoever writes to it. Libraries below write to sockets without saying
// so, and the signal would end the caller's process in the middle of a job.
class NoBrokenPipes {
 public:
  NoBrokenPipes() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~NoBrokenPipes() {
    constexpr timespec kAtOnce{};
    while (!wasPending_ && sigtimedwait(&pipe_, nullptr, &kAtOnce) == SIGPIPE) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  NoBrokenPipes(const NoBrokenPipes&) = delete;
  NoBrokenPipes& operator=(const NoBrokenPipes&) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

}  // namespace

int RunJob(const RunOptions& options) try {
  const NoBrokenPipes noBrokenPipes;
  const JobInfo* const job = FindJob(options.job);
  if (job == nullptr) {
    const automation::Error unknown(automation::ErrorNumber::CannotCreateObject);
    Tell(options, MessageKind::Error,
         options.job + ": " + unknown.Description() + " (" + std::to_string(unknown.Number()) + ")");
    return kUsage;
  }
  if (options.limit && !effects::Limit::Parse(*options.limit)) {
    Tell(options, MessageKind::Error,
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
    Tell(call.options, MessageKind::Error,
         std::string(previewed.job->progId) + ": would end unfinished: " + previewed.endedBy);
    return kUnfinished;
  });
} catch (...) {
  Tell(options, MessageKind::Error, automation::PendingError().Description());
  return kUnfinished;
}

}  // namespace orvane
