// "check": everything that a run needs, looked at without changing anything.
#include <algorithm>
#include <string>
#include <vector>

#include "components/interfaces/file_handling.hpp"
#include "components/registration/job_needs.hpp"
#include "components/registration/register_jobs.hpp"
#include "host/check/data_check.hpp"
#include "host/check/database_check.hpp"
#include "host/check/findings.hpp"
#include "host/check/folder_check.hpp"
#include "host/check/locale_check.hpp"
#include "host/check/mail_check.hpp"
#include "host/check/parameter_check.hpp"
#include "host/check/site_check.hpp"
#include "host/commands.hpp"
#include "host/named_jobs.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"
#include "run/exit_codes.hpp"
#include "run/job_table.hpp"
#include "run/services.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/paths/native_path.hpp"

namespace orvane::host {
namespace {

namespace fs = std::filesystem;
using OrvaneProcess::DatabaseOf;
using OrvaneProcess::JobNeeds;

class SuiteCheck {
 public:
  SuiteCheck(const SuiteHome& home, const Vantrel::SiteFile& site, const std::vector<const JobInfo*>& jobs,
             Findings& findings)
      : home_(home), site_(site), findings_(findings) {
    for (const JobInfo* job : jobs) progIds_.push_back(job->progId);
    for (const JobNeeds& needs : OrvaneProcess::NeedsOfJobs()) {
      if (Runs(needs.progId)) needs_.push_back(&needs);
    }
  }

  // In the current runtime.
  void Run() {
    CheckLocale(automation::LocaleNameFromEnvironment(), findings_);
    suite_ = Database(DatabaseOf::Suite, "suite's database", site_.FindConnection("Orvane", "Orvane"));
    catalogue_ =
        Database(DatabaseOf::Catalogue, "catalogue database", site_.FindConnection("VnServer", "ECatalog"));
    CheckServices();
    CheckFolders();
    if (!suite_) return;
    // Tables that are not as they should be were told of; what is asked of them here fails then.
    Guarded("suite's database", [this] {
      const Parameters parameters = ReadParameters(suite_);
      CheckParameters(parameters, progIds_, findings_);
      CheckWithParameters(parameters);
    });
  }

 private:
  bool Runs(std::string_view progId) const {
    return std::find(progIds_.begin(), progIds_.end(), progId) != progIds_.end();
  }
  bool Needs(bool JobNeeds::*service) const {
    return std::any_of(needs_.begin(), needs_.end(),
                       [service](const JobNeeds* job) { return job->*service; });
  }

  ADODB::ConnectionPtr Database(DatabaseOf which, const std::string& where,
                                const std::optional<std::string>& connectionString) {
    const std::vector<TableUse> tables = TablesOf(needs_, which);
    if (tables.empty() || !connectionString) return nullptr;
    const ADODB::ConnectionPtr connection = OpenForCheck(*connectionString, where, findings_);
    if (connection) CheckTables(connection, where, tables, findings_);
    return connection;
  }

  void CheckServices() {
    for (const auto& [progId, service, reason] : orvane_preflight::Ask(progIds_, ProbesOf(home_, site_))) {
      if (service == orvane_preflight::kDirectory) directoryAnswers_ = false;
      findings_.FailService("service.refused", std::string(service),
                            "does not do what " + std::string(progId) + " needs of it: " + reason,
                            "a run would begin nothing and exit with 69: mend it");
    }
  }

  void CheckFolders() {
    CheckPrivate(home_.SiteConfiguration(), "passwords", findings_);
    CheckPrivate(home_.Directory(), "people's data", findings_);
    CheckFolder(home_.Path(), Access::Write, "the lock and the journals", findings_);
    if (CheckFolderToMake(home_.Logs(), "run logs", findings_))
      CheckRoom(home_.Logs().parent_path(), findings_);
    CheckPrivate(home_.Logs(), "people's names", findings_);
  }

  void CheckWithParameters(const Parameters& parameters) {
    std::string relative = ValueOf(parameters, "DataFileRelativePath");
    const fs::path data = suite::NativePath(relative, home_.Path());
    if (CheckFolder(data, Access::Read, "the jobs' files", findings_)) {
      CheckPrivate(data, "people's files", findings_);
      CheckRoom(data, findings_);
    }
    const bool webFarm = IsWebFarm(parameters);
    if (webFarm && (Runs(OrvaneProcess::kArchiveProgId) || Runs(OrvaneProcess::kCleanUpProgId))) {
      CheckSharedPlace(ValueOf(parameters, "FTPPath"));
    }
    if (Runs(OrvaneProcess::kArchiveProgId)) {
      Guarded("archive", [&] { CheckArchive(data); });
    }
    if (Runs(OrvaneProcess::kCleanUpProgId)) {
      Guarded("clean-up", [&] { CheckCleanUp(data, parameters, webFarm); });
    }
    if (Runs(OrvaneProcess::kSolveOnNoResponseProgId)) {
      Guarded("EMAIL", [&] { CheckMails(suite_, home_.Path(), data, findings_); });
      Guarded("REMINDER", [&] {
        CheckReminders(suite_, home_.SiteConfiguration(), directoryAnswers_, automation::Now(), findings_);
      });
    }
  }

  void CheckArchive(const fs::path& data) {
    const fs::path archives = suite::NativePath("Archives", data);
    constexpr std::chrono::milliseconds kLongest(1500);
    if (CheckFolderToMake(archives, "the archive files", findings_)) {
      CheckArchiveFiles(archives, kLongest, findings_);
    }
    if (catalogue_) CheckLookups(suite_, catalogue_, findings_);
  }

  void CheckCleanUp(const fs::path& data, const Parameters& parameters, bool webFarm) {
    for (const char* name : {"HTML", "SRATTACHMENTS", "CHAT"}) {
      const fs::path folder = suite::NativePath(name, data);
      std::error_code failed;
      if (fs::is_directory(folder, failed)) CheckFolder(folder, Access::Write, "its sweep", findings_);
    }
    CheckChats(suite_, data, findings_);
    const std::string keep = ValueOf(parameters, "KeepTemporaryFiles");
    const std::int32_t hours = keep.empty() ? 0 : automation::ToInt32(keep);
    CheckAttachments(suite_, suite::NativePath("SRATTACHMENTS", data), webFarm,
                     automation::AddHours(automation::Now(), -std::int64_t{hours}), findings_);
  }

  void CheckSharedPlace(const std::string& path) {
    if (path.find_first_not_of(' ') == std::string::npos) return;  // told with the parameters
    try {
      // Asked for a file that is nowhere, it looks at this machine and then at the shared place.
      automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId)
          ->FileExists("orvane-host.check", {static_cast<std::int16_t>(OrvCommonMTS::FolderKind::Archives)});
    } catch (const automation::Error& error) {
      // Not its address: there may be a password in it.
      findings_.FailService("service.shared-place", "shared place", "cannot be used: " + error.Description(),
                            "mend FTPPath, the server or the mount");
    }
  }

  // What needs tables or values that were told of already cannot be looked at, and is no further error.
  template <class Action>
  void Guarded(const std::string& where, const Action& action) {
    try {
      action();
    } catch (const automation::Error& error) {
      const bool told =
          std::any_of(findings_.All().begin(), findings_.All().end(),
                      [](const Finding& finding) { return finding.severity == Severity::Error; });
      const std::string what = "could not be looked at: " + error.Description();
      if (told) {
        findings_.Note("check.left-out", where, what, "see the errors");
      } else {
        findings_.Fail("check.failed", where, what, "mend it");
      }
    }
  }

  const SuiteHome& home_;
  const Vantrel::SiteFile& site_;
  Findings& findings_;
  std::vector<std::string_view> progIds_;
  std::vector<const JobNeeds*> needs_;
  ADODB::ConnectionPtr suite_;
  ADODB::ConnectionPtr catalogue_;
  bool directoryAnswers_ = true;
};

int ExitCodeOf(const Findings& findings) {
  int code = kOk;
  for (const Finding& finding : findings.All()) {
    if (finding.severity != Severity::Error) continue;
    if (!finding.unavailable) return kConfiguration;
    code = kUnavailable;
  }
  return code;
}

std::string Summary(const Findings& findings) {
  const auto count = [&findings](Severity severity) {
    return std::to_string(std::count_if(findings.All().begin(), findings.All().end(),
                                        [severity](const Finding& f) { return f.severity == severity; }));
  };
  return count(Severity::Error) + " errors, " + count(Severity::Warning) + " warnings, " +
         count(Severity::Note) + " notes";
}

}  // namespace

int CheckSuite(const Arguments& arguments, const Console& console) {
  const std::vector<const JobInfo*> jobs = JobsNamed(arguments.jobs);
  const SuiteHome home(arguments.home);
  Findings findings;
  if (const std::optional<Vantrel::SiteFile> site = CheckSite(home, findings)) {
    automation::Runtime runtime;
    RegisterSuite(runtime, home, *site);
    const automation::RuntimeScope scope(runtime);
    SuiteCheck(home, *site, jobs, findings).Run();
  }
  for (const Finding& finding : findings.All()) {
    console.out << (arguments.json ? JsonLine(finding) : TextLine(finding));
  }
  if (!arguments.json) console.err << "orvane-host: " << Summary(findings) << '\n';
  return ExitCodeOf(findings);
}

}  // namespace orvane::host
