#include "host/composition.hpp"

#include <utility>

#include "components/registration/register_jobs.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/backend_calls/backend_calls.hpp"
#include "suite/configuration/configuration.hpp"
#include "suite/escalation/escalation.hpp"
#include "suite/service_request/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane_host {

void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile&,
                   Vantrel::LogListener listener) {
  automation::ClassTable& classes = runtime.classes;
  OrvaneProcess::RegisterJobs(classes);

  runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
  Scripting::local::RegisterClasses(classes);

  Vantrel::RegisterConfiguration(classes, home.Path());
  Vantrel::RegisterLog(classes, home.ErrorLog(), std::move(listener));
  OrvCommon::RegisterSqlConversion(classes);
  OrvaneProcessMTS::RegisterEscalation(classes, home.Path());
  OrvaneBackend::RegisterBackendCalls(classes, home.Path());
  OrvServiceRequest::RegisterServiceRequest(classes, home.Path());
}

}  // namespace orvane_host
