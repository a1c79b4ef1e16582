#include "run/run_jobs.hpp"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

#include "components/interfaces/job.hpp"
#include "effects/journal.hpp"
#include "effects/limit.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"
#include "run/job_runner.hpp"
#include "run/limit_guard.hpp"
#include "run/lock/suite_lock.hpp"
#include "run/recording.hpp"
#include "run/services.hpp"
#include "run/turn.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/site_settings.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {
namespace {

class JobCall {
 public:
  JobCall(const RunOptions& options, const RunHooks& hooks)
      : options_(options), surroundings_(hooks), home_(options.home), runner_(home_, options) {}

  int Run(const std::vector<const JobInfo*>& jobs) {
    const Vantrel::SiteFile site = ReadConfiguration(home_);
    if (!TakeLock(site)) return exitCode_;
    if (options_.preflight && !ServicesAnswer(jobs, home_, site, options_)) {
      if (!surroundings_.refusedHint.empty()) Tell(options_, MessageKind::Error, surroundings_.refusedHint);
      return kUnavailable;
    }
    effects::RemoveOldJournals(home_.Journals(), std::chrono::system_clock::now(), JournalDays(site));
    for (const JobInfo* job : jobs) {
      const std::string before = "; stopped before " + std::string(job->progId);
      if (IsAskedToStop(options_)) return Stopped("asked to stop" + before, kTryAgain);
      if (!lock_->BeginJob(job->progId)) {
        return Stopped("the lock of the suite's database was lost" + before, kTryAgain);
      }
      if (const auto stop = RunOne(*job)) {
        return Stopped(stop->why + "; stopped behind " + std::string(job->progId), stop->exitCode);
      }
    }
    return options_.strict && runner_.SawFailures() ? MoreSevere(exitCode_, kErrorsLogged) : exitCode_;
  }

 private:
  // False, with the exit code set, when the turn does not come.
  bool TakeLock(const Vantrel::SiteFile& site) {
    const std::shared_ptr<void> around = surroundings_.waiting ? surroundings_.waiting() : nullptr;
    lock_ = TakeTurn(home_, site, options_, exitCode_);
    return lock_ != nullptr;
  }

  // Why the call has to stop behind the job, if it has to.
  std::optional<Recording::Stop> RunOne(const JobInfo& job) {
    std::optional<LimitGuard> limit;
    if (options_.limit) {
      limit = LimitGuard::Pass(*effects::Limit::Parse(*options_.limit), home_, ReadConfiguration(home_), job,
                               options_, exitCode_);
      if (!limit) {
        exitCode_ = MoreSevere(exitCode_, kLimit);
        return std::nullopt;
      }
    }
    const std::shared_ptr<effects::Listener> shown =
        surroundings_.show ? surroundings_.show(limit ? limit->PredictedProgress() : 0) : nullptr;
    Recording recording(home_, job, options_, shown.get(), runner_);
    // A runtime of its own for each job, as each would have in a service of its own.
    automation::Runtime runtime;
    runtime.classes = options_.classes;
    RegisterSuite(runtime, home_, ReadConfiguration(home_), recording.GetWiring());
    const automation::SafePoints stopping([&] {
      if (const auto stop = MustStop(recording, limit)) StopHere(recording, *stop);
    });
    if (!runner_.Run(job, runtime, recording)) exitCode_ = MoreSevere(exitCode_, kUnfinished);
    auto stop = recording.MustStop();
    if (!stop && limit) stop = limit->MustStop(recording.CountsSoFar());
    return stop;
  }

  // Why the job has to stop at the safe point where it is.
  std::optional<Recording::Stop> MustStop(const Recording& recording,
                                          const std::optional<LimitGuard>& limit) const {
    if (auto stop = recording.MustStop()) return stop;
    if (lock_->IsLost()) {
      return Recording::Stop{
          "the lock of the suite's database was lost, and somebody else has it or the database does not "
          "answer",
          kTryAgain};
    }
    if (limit) {
      if (auto stop = limit->MustStop(recording.CountsSoFar())) return stop;
    }
    if (IsAskedToStop(options_)) return Recording::Stop{"asked to stop", kTryAgain, true};
    return std::nullopt;
  }

  // The job's objects are left as they are: their files and sessions go with the process, as after a kill,
  // and a safe point is where that costs nothing.
  [[noreturn]] void StopHere(Recording& recording, const Recording::Stop& stop) {
    recording.End(stop.exitCode, stop.wasAskedFor ? std::string_view() : std::string_view(stop.why));
    runner_.TellStopped(stop.why + "; stopped at a safe point");
    Leave(options_, MoreSevere(exitCode_, stop.exitCode));
  }

  int Stopped(const std::string& why, int exitCode) const {
    Tell(options_, MessageKind::Error, why);
    return MoreSevere(exitCode_, exitCode);
  }

  const RunOptions& options_;
  const RunHooks& surroundings_;
  const SuiteHome home_;
  JobRunner runner_;
  std::unique_ptr<orvane_lock::SuiteLock> lock_;
  int exitCode_ = kOk;
};

}  // namespace

int RunJobs(const std::vector<const JobInfo*>& jobs, const RunOptions& options, const RunHooks& hooks) {
  try {
    return JobCall(options, hooks).Run(jobs);
  } catch (const automation::Error& error) {
    Tell(options, MessageKind::Error, error.Description());
    return kConfiguration;
  } catch (const std::system_error& error) {
    Tell(options, MessageKind::Error,
         std::string("no place for the files of the preview that a limit needs: ") + error.what());
    return kConfiguration;
  }
}

void Tell(const RunOptions& options, MessageKind kind, std::string_view text) noexcept {
  try {
    if (options.tell) options.tell(kind, text);
  } catch (...) {
    // Nobody else is there to be told.
  }
}

bool IsAskedToStop(const RunOptions& options) noexcept {
  try {
    return options.stop && options.stop();
  } catch (...) {
    return true;
  }
}

void CallJob(const JobInfo& job, const RunOptions& options) {
  const automation::ObjectPtr object = automation::CreateObject(job.progId);
  if (options.call) {
    options.call(object);
  } else {
    automation::As<OrvaneProcess::Job>(object)->Run();
  }
}

// From the middle of a job, whose traps would take what came out of here for a failure of its own.
void Leave(const RunOptions& options, int exitCode) noexcept {
  try {
    if (options.leave) options.leave(exitCode);
  } catch (...) {
    // The end stays the end.
  }
  std::_Exit(exitCode);
}

}  // namespace orvane
