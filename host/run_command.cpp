#include <chrono>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "effects/journal.hpp"
#include "host/commands.hpp"
#include "host/composition.hpp"
#include "host/exit_codes.hpp"
#include "host/job_runner.hpp"
#include "host/job_table.hpp"
#include "host/limit_guard.hpp"
#include "host/lock/suite_lock.hpp"
#include "host/recording.hpp"
#include "host/services.hpp"
#include "host/site_settings.hpp"
#include "host/stop_signals.hpp"
#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"
#include "platform/locale/icu_locale.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {
namespace {

// What a session of the database's own shows of this process, where the engine has a place for it.
std::string Self() {
  const orvane_lock::Holder self = orvane_lock::ThisProcess({});
  return "orvane-host " + std::to_string(self.process) + " on " + self.host;
}

// May be called on any thread: a session is set up by the locale's rules.
orvane_lock::DatabaseLock::Opening OpeningOf(const SuiteHome& home, const Vantrel::SiteFile& site) {
  return [providers = DatabaseProviders(home), text = site.Connection("Orvane", "Orvane")] {
    automation::Runtime runtime;
    runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
    const automation::RuntimeScope scope(runtime);
    return ADODB::engine::OpenSessionLock(providers, text, Self());
  };
}

// Waits for its turn; null, with the exit code set, when it does not come.
std::unique_ptr<orvane_lock::SuiteLock> TakeLock(const Arguments& arguments, const SuiteHome& home,
                                                 const Vantrel::SiteFile& site, const Console& console,
                                                 int& exitCode) {
  const EndsWhenAsked endsWhenAsked;
  try {
    return orvane_lock::SuiteLock::Take({.file = home.Lock(),
                                         .open = OpeningOf(home, site),
                                         .longest = arguments.wait,
                                         .waiting = [&console](const std::string& holder) {
                                           console.err << "orvane-host: the suite is held by " << holder
                                                       << "; waiting" << std::endl;
                                         }});
  } catch (const orvane_lock::Busy& held) {
    exitCode = kTryAgain;
    console.err << "orvane-host: the suite is held by " << held.what() << "; nothing was begun\n";
  } catch (const orvane_lock::Unreachable& error) {
    exitCode = kUnavailable;
    console.err << "orvane-host: the suite's database does not answer, nothing was begun: " << error.what()
                << '\n';
  } catch (const std::exception& error) {
    exitCode = kConfiguration;
    console.err << "orvane-host: the suite's lock cannot be made: " << error.what() << '\n';
  }
  return nullptr;
}

// Why the job has to stop at the safe point where it is.
std::optional<Recording::Stop> MustStop(const StopRequest& request, const orvane_lock::SuiteLock& lock,
                                        const Recording& recording, const std::optional<LimitGuard>& limit) {
  if (auto stop = recording.MustStop()) return stop;
  if (lock.IsLost()) {
    return Recording::Stop{
        "the lock of the suite's database was lost, and somebody else has it or the database does not answer",
        kTryAgain};
  }
  if (limit) {
    if (auto stop = limit->MustStop(recording.CountsSoFar())) return stop;
  }
  if (request.WasMade()) return Recording::Stop{"asked to stop", kTryAgain, true};
  return std::nullopt;
}

// The job's objects are left as they are: their files and sessions go with the process, as after a kill, and
// a safe point is where that costs nothing.
[[noreturn]] void StopHere(JobRunner& runner, Recording& recording, const Recording::Stop& stop, int soFar) {
  recording.End(stop.exitCode, stop.wasAskedFor ? std::string_view() : std::string_view(stop.why));
  runner.TellStopped(stop.why + "; stopped at a safe point");
  std::_Exit(Graver(soFar, stop.exitCode));
}

int Stopped(const Console& console, const std::string& why, int soFar, int exitCode) {
  console.err << "orvane-host: " << why << '\n';
  return Graver(soFar, exitCode);
}

}  // namespace

int RunJobs(const Arguments& arguments, const Console& console) {
  const auto named = JobsNamed(arguments.jobs, console.err);
  if (!named) return kUsage;
  const std::vector<const JobInfo*>& jobs = *named;

  const SuiteHome home(arguments.home);
  const StopRequest stopRequest;
  JobRunner runner(home, console, arguments.strict);
  int exitCode = kOk;
  try {
    const Vantrel::SiteFile first = ReadConfiguration(home);
    const auto lock = TakeLock(arguments, home, first, console, exitCode);
    if (!lock) return exitCode;
    if (arguments.preflight && !ServicesAnswer(jobs, home, first, console)) return kUnavailable;
    effects::RemoveOldJournals(home.Journals(), std::chrono::system_clock::now(), JournalDays(first));
    for (const JobInfo* job : jobs) {
      const std::string before = "; stopped before " + std::string(job->progId);
      if (stopRequest.WasMade()) return Stopped(console, "asked to stop" + before, exitCode, kTryAgain);
      if (!lock->BeginJob(job->progId)) {
        return Stopped(console, "the lock of the suite's database was lost" + before, exitCode, kTryAgain);
      }
      std::optional<LimitGuard> limit;
      if (arguments.limit) {
        limit = LimitGuard::Pass(*arguments.limit, home, ReadConfiguration(home), *job, console);
        if (!limit) {
          exitCode = Graver(exitCode, kLimit);
          continue;
        }
      }
      Recording recording(home, *job, arguments, console, runner);
      // A runtime of its own for each job, as each would have in a service of its own.
      automation::Runtime runtime;
      RegisterSuite(runtime, home, ReadConfiguration(home), recording.GetWiring());
      const automation::SafePoints stopping([&] {
        if (const auto stop = MustStop(stopRequest, *lock, recording, limit)) {
          StopHere(runner, recording, *stop, exitCode);
        }
      });
      if (!runner.Run(*job, runtime, recording)) exitCode = Graver(exitCode, kUnfinished);
      auto stop = recording.MustStop();
      if (!stop && limit) stop = limit->MustStop(recording.CountsSoFar());
      if (stop) {
        return Stopped(console, stop->why + "; stopped behind " + std::string(job->progId), exitCode,
                       stop->exitCode);
      }
    }
  } catch (const automation::Error& error) {
    console.err << "orvane-host: " << error.Description() << '\n';
    return kConfiguration;
  } catch (const std::system_error& error) {
    console.err << "orvane-host: no place for the files of the preview that a limit needs: " << error.what()
                << '\n';
    return kConfiguration;
  }
  return arguments.strict && runner.SawFailures() ? Graver(exitCode, kErrorsLogged) : exitCode;
}

}  // namespace orvane_host
