#include "host/composition.hpp"

#include <string>
#include <utility>

#include "common/connections.hpp"
#include "common/parameters.hpp"
#include "components/registration/register_jobs.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/backend_calls/backend_calls.hpp"
#include "suite/configuration/configuration.hpp"
#include "suite/escalation/escalation.hpp"
#include "suite/file_handling/file_handling.hpp"
#include "suite/service_request/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane_host {
namespace {

// The files that the suite's servers share: its data folder here, and the place that PARAMETERS names on a
// web farm.
OrvCommonMTS::FileHandlingOptions SharedFiles() {
  OrvCommonMTS::FileHandlingOptions options;
  options.dataRoot = [] {
    return OrvaneUtilities::GetInstallDirectory() + "\\" +
           OrvaneUtilities::GetParamValue("DataFileRelativePath");
  };
  options.sharedPath = [] {
    const std::string farm = OrvaneUtilities::GetParamValue("Webfarm Implemented");
    const bool implemented = !farm.empty() && automation::ToBoolean(farm);
    return implemented ? OrvaneUtilities::GetParamValue("FTPPath") : std::string();
  };
  return options;
}

}  // namespace

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
  OrvCommonMTS::RegisterFileHandling(classes, SharedFiles());
  OrvaneBackend::RegisterBackendCalls(classes, home.Path());
  OrvServiceRequest::RegisterServiceRequest(classes, home.Path());
}

}  // namespace orvane_host
