#include "host/preview_call.hpp"

#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <system_error>

#include "host/composition.hpp"
#include "host/exit_codes.hpp"
#include "host/lock/file_lock.hpp"
#include "host/services.hpp"
#include "host/stop_signals.hpp"
#include "platform/adodb/session/session_lock.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"

namespace orvane_host {
namespace {

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

}  // namespace

int LookAtRun(const Arguments& arguments, const Console& console,
              const std::function<int(const PreviewCall& call)>& look) {
  const auto jobs = JobsNamed(arguments.jobs, console.err);
  if (!jobs) return kUsage;
  const EndsWhenAsked endsWhenAsked;
  const SuiteHome home(arguments.home);
  try {
    const Vantrel::SiteFile site = ReadConfiguration(home);
    const Apart apart(home, site);
    if (!ServicesAnswer(*jobs, home, site, console)) return kUnavailable;
    PreviewWorld world(home, [&console](const std::string& why, int exitCode) {
      console.out.flush();
      console.err << "orvane-host: the preview ended, nothing was changed: " << why << std::endl;
      // Sessions and copies go with the process.
      std::_Exit(exitCode);
    });
    return look({*jobs, home, site, world});
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
