#include "run/preview_call.hpp"

#include <memory>
#include <string>
#include <system_error>

#include "platform/adodb/session/session_lock.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"
#include "run/exit_codes.hpp"
#include "run/lock/file_lock.hpp"
#include "run/lock/suite_lock.hpp"
#include "run/run_jobs.hpp"
#include "run/services.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/site_settings.hpp"

namespace orvane {
namespace {

// A run would change beneath the preview what that looks at, and wait for the rows that it holds.
class Apart {
 public:
  // FAILS: with a Held when somebody runs jobs of the suite; automation::Error when the database of the suite
  // does not answer.
  struct Held {
    std::string by;
  };

  Apart(const SuiteHome& home, const Vantrel::SiteFile& site, const std::string& caller) {
    if (const auto holder = orvane_lock::FileLock::HolderOf(home.Lock())) throw Held{Description(*holder)};
    // Nothing is written to the installation, its lock's file included: on a server the database's lock
    // keeps runs waiting.
    automation::Runtime runtime;
    runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
    const automation::RuntimeScope scope(runtime);
    lock_ = ADODB::engine::OpenSessionLock(
        DatabaseProviders(home), site.Connection("Orvane", "Orvane"),
        caller + " preview " + std::to_string(orvane_lock::ThisProcess({}).process));
    if (!lock_ || lock_->TryTake()) return;
    const std::string holder = lock_->Holder();
    throw Held{holder.empty() ? "another session with the suite's database" : holder};
  }

 private:
  std::unique_ptr<ADODB::engine::SessionLock> lock_;
};

}  // namespace

int LookAtRun(const std::vector<const JobInfo*>& jobs, const RunOptions& options,
              const std::function<int(const PreviewCall& call)>& look) {
  const SuiteHome home(options.home);
  try {
    const Vantrel::SiteFile site = ReadConfiguration(home);
    const Apart apart(home, site, options.caller);
    if (!ServicesAnswer(jobs, home, site, options)) return kUnavailable;
    const auto stop = [&options](const std::string& why, int exitCode) {
      Tell(options, MessageKind::Error, "the preview ended, nothing was changed: " + why);
      // Sessions and copies go with the process.
      Leave(options, exitCode);
    };
    PreviewWorld world(home, stop, LongestPreview(site));
    return look({jobs, options, home, site, world});
  } catch (const Apart::Held& held) {
    Tell(options, MessageKind::Error, "the suite is held by " + held.by + "; nothing was previewed");
    return kTryAgain;
  } catch (const automation::Error& error) {
    Tell(options, MessageKind::Error, error.Description());
    return orvane_lock::MeansUnreachable(error) ? kUnavailable : kConfiguration;
  } catch (const std::system_error& error) {
    Tell(options, MessageKind::Error, std::string("no place for the preview's own files: ") + error.what());
    return kConfiguration;
  }
}

}  // namespace orvane
