#include "run/turn.hpp"

#include <exception>
#include <string>

#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"
#include "run/run_jobs.hpp"
#include "suite/composition/composition.hpp"

namespace orvane {
namespace {

// What a session of the database's own shows of this process, where the engine has a place for it.
std::string Self(const std::string& caller) {
  const orvane_lock::Holder self = orvane_lock::ThisProcess({});
  return caller + " " + std::to_string(self.process) + " on " + self.host;
}

// May be called on any thread: a session is set up by the locale's rules.
orvane_lock::DatabaseLock::Opening OpeningOf(const SuiteHome& home, const Vantrel::SiteFile& site,
                                             const std::string& caller) {
  return [providers = DatabaseProviders(home), text = site.Connection("Orvane", "Orvane"), caller] {
    automation::Runtime runtime;
    runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
    const automation::RuntimeScope scope(runtime);
    return ADODB::engine::OpenSessionLock(providers, text, Self(caller));
  };
}

}  // namespace

std::unique_ptr<orvane_lock::SuiteLock> TakeTurn(const SuiteHome& home, const Vantrel::SiteFile& site,
                                                 const RunOptions& options, int& exitCode) {
  const auto refused = [&](int code, const std::string& why) {
    exitCode = code;
    Tell(options, MessageKind::Error, why);
    return nullptr;
  };
  try {
    return orvane_lock::SuiteLock::Take({.file = home.Lock(),
                                         .open = OpeningOf(home, site, options.caller),
                                         .longest = options.wait,
                                         .waiting =
                                             [&options](const std::string& holder) {
                                               Tell(options, MessageKind::Error,
                                                    "the suite is held by " + holder + "; waiting");
                                             },
                                         .givenUp = [&options] { return IsAskedToStop(options); }});
  } catch (const orvane_lock::GivenUp&) {
    return refused(kTryAgain, "asked to stop while waiting; nothing was begun");
  } catch (const orvane_lock::Busy& held) {
    return refused(kTryAgain, std::string("the suite is held by ") + held.what() + "; nothing was begun");
  } catch (const orvane_lock::Unreachable& error) {
    return refused(kUnavailable,
                   std::string("the suite's database does not answer, nothing was begun: ") + error.what());
  } catch (const std::exception& error) {
    return refused(kConfiguration, std::string("the suite's lock cannot be made: ") + error.what());
  }
}

}  // namespace orvane
