#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "effects/journal_line.hpp"
#include "host/commands.hpp"
#include "host/composition.hpp"
#include "host/exit_codes.hpp"
#include "host/job_table.hpp"
#include "host/lock/file_lock.hpp"
#include "host/preview_run.hpp"
#include "host/preview_summary.hpp"
#include "host/preview_world.hpp"
#include "host/services.hpp"
#include "host/stop_signals.hpp"
#include "host/suite_home.hpp"
#include "platform/adodb/session/session_lock.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"

namespace orvane_host {
namespace {

// Prints what a run would write into its journal.
class JsonLines final : public effects::Listener {
 public:
  explicit JsonLines(std::ostream& out) : out_(out) {}

  void Hear(const effects::EntryPtr& entry) override {
    if (const auto* start = std::get_if<effects::RunStart>(&entry->what)) {
      run_ = effects::RunName(entry->time, start->process, start->job);
    }
    line_.clear();
    effects::AppendLine(line_, run_, *entry);
    out_ << line_ << '\n';
  }

 private:
  std::ostream& out_;
  std::string run_;
  std::string line_;
};

// A run would change beneath the preview what that looks at, and wait for the rows that it holds.
class Apart {
 public:
  // FAILS: with a Held when somebody runs jobs of the suite; automation::Error when the database of the suite
  // does not answer.
  struct Held {
    std::string by;
  };

  Apart(const SuiteHome& home, const Vantrel::SiteFile& site) {
    if (const auto holder = orvane_lock::FileLock::HolderOf(home.Lock())) throw Held{Description(*holder)};
    // Nothing is written to the installation, its lock's file included: on a server the database's lock
    // keeps runs waiting.
    automation::Runtime runtime;
    runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
    const automation::RuntimeScope scope(runtime);
    lock_ = ADODB::engine::OpenSessionLock(DatabaseProviders(home), site.Connection("Orvane", "Orvane"),
                                           "orvane-host preview " + std::to_string(getpid()));
    if (!lock_ || lock_->TryTake()) return;
    const std::string holder = lock_->Holder();
    throw Held{holder.empty() ? "another session with the suite's database" : holder};
  }

 private:
  std::unique_ptr<ADODB::engine::SessionLock> lock_;
};

int Preview(const Arguments& arguments, const std::vector<const JobInfo*>& jobs, const SuiteHome& home,
            const Console& console) {
  const Vantrel::SiteFile site = ReadConfiguration(home);
  const Apart apart(home, site);
  if (!ServicesAnswer(jobs, home, site, console)) return kUnavailable;
  PreviewWorld world(home, [&console](const std::string& why, int exitCode) {
    console.out.flush();
    console.err << "orvane-host: the preview ended, nothing was changed: " << why << std::endl;
    // Sessions and copies go with the process.
    std::_Exit(exitCode);
  });
  JsonLines lines(console.out);
  int exitCode = kOk;
  for (const JobInfo* job : jobs) {
    const PreviewedJob previewed =
        PreviewJob(home, site, *job, world, arguments.at, arguments.json ? &lines : nullptr, true);
    if (!arguments.json) PrintSummary(previewed, LastRunsOf(home, *job), console.out);
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
  const auto jobs = JobsNamed(arguments.jobs, console.err);
  if (!jobs) return kUsage;
  const EndsWhenAsked endsWhenAsked;
  const SuiteHome home(arguments.home);
  try {
    return Preview(arguments, *jobs, home, console);
  } catch (const Apart::Held& held) {
    console.err << "orvane-host: the suite is held by " << held.by << "; nothing was previewed\n";
    return kTryAgain;
  } catch (const automation::Error& error) {
    console.err << "orvane-host: " << error.Description() << '\n';
    return error.SqlState().starts_with("08") ? kUnavailable : kConfiguration;
  } catch (const std::system_error& error) {
    console.err << "orvane-host: no place for the preview's own files: " << error.what() << '\n';
    return kConfiguration;
  }
}

}  // namespace orvane_host
