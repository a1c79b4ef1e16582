#include "host/composition.hpp"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "components/registration/register_jobs.hpp"
#include "host/data_folder.hpp"
#include "host/site_settings.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/base/created_files.hpp"
#include "platform/cdo/registration.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/msxml2/registration.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/local/folder_names.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/backend_calls/backend_calls.hpp"
#include "suite/catalogue/catalogue.hpp"
#include "suite/configuration/configuration.hpp"
#include "suite/escalation/escalation.hpp"
#include "suite/file_handling/file_handling.hpp"
#include "suite/load_xsls/load_xsls.hpp"
#include "suite/log/file_log.hpp"
#include "suite/membership/user.hpp"
#include "suite/service_request/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane_host {
namespace {

void RegisterFilesMailsAndLog(automation::ClassTable& classes, const SuiteHome& home,
                              const Vantrel::SiteFile& site) {
  const auto created = std::make_shared<base::CreatedFiles>();
  Scripting::local::RegisterClasses(classes, Drives(site), created);
  CDO::Settings mail = MailSettings(site, home);
  mail.ownFiles = created;
  CDO::RegisterClasses(classes, mail);
  Vantrel::RegisterLog(classes, home.ErrorLog());
}

void RegisterPlatform(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                      effects::FailureListener* listener) {
  automation::ClassTable& classes = runtime.classes;
  runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
  ADODB::RegisterClasses(classes, DatabaseProviders(home));
  MSXML2::RegisterClasses(classes, {.drives = Drives(site)});
  if (listener == nullptr) {
    RegisterFilesMailsAndLog(classes, home, site);
    return;
  }
  automation::ClassTable real;
  RegisterFilesMailsAndLog(real, home, site);
  Scripting::RegisterDictionary(classes);
  effects::RecordFolders(classes, real, *listener);
  effects::RecordMails(classes, real, *listener);
  effects::RecordErrors(classes, real, *listener);
}

// Keeps the names of large folders for all file-handling components of a suite.
class FolderNames {
 public:
  std::optional<std::string> Find(const std::string& folder, const std::string& name) {
    const std::lock_guard lock(mutex_);
    return names_.Find(folder, name);
  }

 private:
  std::mutex mutex_;
  Scripting::local::FolderNames names_;
};

void RegisterComponents(automation::ClassTable& classes, const SuiteHome& home,
                        const Vantrel::SiteFile& site) {
  Vantrel::RegisterConfiguration(classes, home.Path());
  OrvCommon::RegisterSqlConversion(classes);
  VnMembership::RegisterUser(classes);
  Catalogue::RegisterCatalogue(classes);
  const auto otherSpelling = [names = std::make_shared<FolderNames>()](const std::string& folder,
                                                                       const std::string& name) {
    return names->Find(folder, name);
  };
  OrvCommonMTS::RegisterFileHandling(classes, {.dataRoot = [path = home.Path()] { return DataFolder(path); },
                                               .otherSpelling = otherSpelling,
                                               .sharedPath = &SharedPath,
                                               .ftp = FtpSettings(site, home)});
  OrvCommon::RegisterLoadXSLs(classes);
  OrvaneProcessMTS::RegisterEscalation(classes, home.Path());
  OrvaneBackend::RegisterBackendCalls(classes, home.Path());
  OrvServiceRequest::RegisterServiceRequest(classes, home.Path());
}

}  // namespace

std::vector<std::shared_ptr<ADODB::engine::Provider>> DatabaseProviders(const SuiteHome& home) {
  return {ADODB::sqlite::MakeProvider(home.Path()), ADODB::odbc::MakeProvider()};
}

void CheckSettings(const SuiteHome& home, const Vantrel::SiteFile& site) {
  Drives(site);
  MailSettings(site, home);
  FtpSettings(site, home);
}

void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                   effects::FailureListener* listener) {
  RegisterPlatform(runtime, home, site, listener);
  RegisterComponents(runtime.classes, home, site);
  OrvaneProcess::RegisterJobs(runtime.classes);
}

}  // namespace orvane_host
