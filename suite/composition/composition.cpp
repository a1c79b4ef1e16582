#include "suite/composition/composition.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/service_request.hpp"
#include "components/registration/register_jobs.hpp"
#include "effects/preview/silent_components.hpp"
#include "effects/reads.hpp"
#include "effects/service_watch.hpp"
#include "effects/wrappers.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/base/created_files.hpp"
#include "platform/base/pending_files.hpp"
#include "platform/cdo/registration.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/msxml2/registration.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/folder_names.hpp"
#include "platform/scripting/local/path_resolver.hpp"
#include "platform/scripting/local/pending.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/backend_calls/backend_calls.hpp"
#include "suite/catalogue/catalogue.hpp"
#include "suite/composition/data_folder.hpp"
#include "suite/composition/local_time.hpp"
#include "suite/composition/site_settings.hpp"
#include "suite/configuration/configuration.hpp"
#include "suite/escalation/escalation.hpp"
#include "suite/file_handling/file_handling.hpp"
#include "suite/load_xsls/load_xsls.hpp"
#include "suite/log/file_log.hpp"
#include "suite/membership/user.hpp"
#include "suite/service_request/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane {
namespace {

using automation::ClassTable;
using PendingFilesPtr = std::shared_ptr<base::PendingFiles>;

std::shared_ptr<base::FileLayer> LayerOf(const World* world) {
  return world == nullptr ? nullptr : world->layer;
}

void RegisterFilesMailsAndLog(ClassTable& classes, const SuiteHome& home, const Vantrel::SiteFile& site,
                              const World* world, const PendingFilesPtr& pending) {
  const auto created = std::make_shared<base::CreatedFiles>();
  Scripting::local::RegisterClasses(classes, Drives(site), created, LayerOf(world), pending);
  CDO::Settings mail = MailSettings(site, home);
  mail.pending = pending;
  mail.ownFiles = created;
  if (world != nullptr) {
    mail.sendUsing = CDO::SendUsing::Nowhere;
    mail.layer = world->layer;
    effects::RegisterSilentLog(classes);
  } else {
    Vantrel::RegisterLog(classes, home.ErrorLog());
  }
  CDO::RegisterClasses(classes, mail);
}

constexpr std::ptrdiff_t kCountedDepth = 2;

// What a file is counted under: below the installation the folder that operators know, and not each of the
// many that may lie in it.
std::string CountedFolder(const std::filesystem::path& home, const std::string& native) {
  const std::filesystem::path path(native);
  const std::filesystem::path below = path.lexically_relative(home);
  if (below.empty() || *below.begin() == "..") return path.parent_path().string();
  std::filesystem::path folder;
  std::ptrdiff_t parts = 0;
  for (const std::filesystem::path& part : below.parent_path()) {
    if (++parts > kCountedDepth) break;
    folder /= part;
  }
  return folder.string();
}

effects::Places PlacesOf(const SuiteHome& home, const Vantrel::SiteFile& site, const World* world) {
  const auto native = [resolver = std::make_shared<Scripting::local::PathResolver>(
                           Drives(site), LayerOf(world))](std::string_view path, bool isMade) {
    try {
      if (!isMade) return resolver->PlaceFor(path).path;
      // Its folder alone is looked for: what other names there are in it takes a listing to know.
      const std::filesystem::path made(resolver->Translate(path).value_or(""));
      if (const auto folder = resolver->Find(made.parent_path().string())) {
        return (std::filesystem::path(folder->path) / made.filename()).string();
      }
    } catch (const std::exception&) {
    }
    // It leads nowhere: what is done there fails.
    std::string text(path);
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
  };
  const auto isLog = [logs = home.Logs().string()](const std::string& path) {
    return path.starts_with(logs) && (path.size() == logs.size() || path[logs.size()] == '/');
  };
  const auto folder = [path = home.Path()](const std::string& of) { return CountedFolder(path, of); };
  return {.native = native, .folder = folder, .isLog = isLog};
}

MSXML2::Settings DocumentSettings(const Vantrel::SiteFile& site, const effects::Places& places,
                                  const Wiring& wiring, const PendingFilesPtr& pending) {
  MSXML2::Settings settings{.drives = Drives(site), .layer = LayerOf(wiring.world), .pending = pending};
  effects::Recorder* const recorder = wiring.recorder;
  if (recorder == nullptr) return settings;
  settings.saving = [recorder, places](const std::string& path, const std::function<void()>& save) {
    recorder->Do(effects::FileChange{effects::FileChange::Kind::SaveDocument, path, places.folder(path)},
                 save);
  };
  return settings;
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

std::function<void(std::string_view, std::size_t)> CountOfShared(const World* world) {
  if (world == nullptr || !world->sharedFiles) return nullptr;
  return [counts = world->sharedFiles](std::string_view folder, std::size_t files) {
    counts->try_emplace(std::string(folder), files);
  };
}

std::function<std::chrono::system_clock::time_point()> FileClock(
    const std::optional<automation::DateTime>& at) {
  if (!at) return &std::chrono::system_clock::now;
  return [moment = std::chrono::system_clock::from_time_t(UtcOf(*at))] { return moment; };
}

void RegisterActingComponents(ClassTable& classes, const SuiteHome& home, const Vantrel::SiteFile& site,
                              const Wiring& wiring, const PendingFilesPtr& pending) {
  const World* const world = wiring.world;
  const auto otherSpelling = [names = std::make_shared<FolderNames>()](const std::string& folder,
                                                                       const std::string& name) {
    return names->Find(folder, name);
  };
  OrvCommonMTS::RegisterFileHandling(
      classes, {.places = [path = home.Path()] { return FilePlaces(path); },
                .otherSpelling = otherSpelling,
                .beforeLooking = [pending] { Scripting::local::PublishPending(pending); },
                .ftp = FtpSettings(site, home),
                .layer = LayerOf(world),
                .ownFolder = world == nullptr ? std::filesystem::path() : world->ownFolder,
                .counted = CountOfShared(world),
                .clock = FileClock(wiring.at)});
  if (world != nullptr) {
    effects::RegisterSilentComponents(classes);
    return;
  }
  OrvaneProcessMTS::RegisterEscalation(classes, home.Path());
  OrvaneBackend::RegisterBackendCalls(classes, home.Path());
}

// Whether new files may wait for their names: those who look for files, and those who change rows on the
// strength of them, ask for the names first; a class of the caller's own does not.
bool FilesMayWait(const ClassTable& callers) {
  constexpr std::string_view kConcerned[] = {"ADODB.Connection",
                                             "ADODB.Recordset",
                                             "ADODB.Command",
                                             "CDO.Message",
                                             "MSXML2.DOMDocument",
                                             OrvCommonMTS::kFileHandlingProgId,
                                             Scripting::kFileSystemObjectProgId};
  return std::none_of(std::begin(kConcerned), std::end(kConcerned),
                      [&callers](std::string_view progId) { return callers.Contains(progId); });
}

// What changes something outside the process, or nothing at all in a world of its own. Below `callers`, the
// classes that somebody else has registered.
ClassTable ActingClasses(const SuiteHome& home, const Vantrel::SiteFile& site, const Wiring& wiring,
                         const effects::Places& places, const ClassTable& callers) {
  ClassTable classes;
  PendingFilesPtr pending;
  std::function<void()> makeDurable;
  if (wiring.world == nullptr && FilesMayWait(callers)) {  // a world's files need not survive it
    pending = std::make_shared<base::PendingFiles>();
    // Rows are deleted on the strength of files.
    makeDurable = [pending] { Scripting::local::MakeDurable(*pending); };
  }
  ADODB::RegisterClasses(classes, wiring.world == nullptr ? DatabaseProviders(home) : wiring.world->providers,
                         {}, wiring.recordsRows ? wiring.recorder : nullptr, makeDurable);
  MSXML2::RegisterClasses(classes, DocumentSettings(site, places, wiring, pending));
  RegisterFilesMailsAndLog(classes, home, site, wiring.world, pending);
  RegisterActingComponents(classes, home, site, wiring, pending);
  return classes;
}

ClassTable ReadingClasses(const SuiteHome& home) {
  ClassTable classes;
  Vantrel::RegisterConfiguration(classes, home.Path());
  OrvCommon::RegisterSqlConversion(classes);
  Catalogue::RegisterCatalogue(classes);
  OrvCommon::RegisterLoadXSLs(classes);
  VnMembership::RegisterUser(classes);
  OrvServiceRequest::RegisterServiceRequest(classes, home.Path());
  return classes;
}

// What stands between the jobs and `real`.
ClassTable Wrappers(const ClassTable& real, const Wiring& wiring, const effects::Places& places) {
  ClassTable classes;
  if (wiring.watch != nullptr) effects::WatchDirectory(classes, real, *wiring.watch);
  if (wiring.recorder == nullptr) return classes;
  ClassTable heard;
  if (wiring.reads != nullptr) {
    effects::HearRows(classes, real, *wiring.reads);
    effects::HearFolders(heard, real, *wiring.reads);
  }
  effects::RecordFiles(classes, wiring.reads == nullptr ? real : heard, *wiring.recorder, places);
  effects::RecordMails(classes, real, *wiring.recorder);
  effects::RecordErrors(classes, real, *wiring.recorder);
  effects::RecordSharedFiles(classes, real, *wiring.recorder, places);
  effects::RecordCalls(classes, real, *wiring.recorder);
  return classes;
}

}  // namespace

std::vector<std::shared_ptr<ADODB::engine::Provider>> DatabaseProviders(const SuiteHome& home) {
  return {ADODB::sqlite::MakeProvider(home.Path()), ADODB::odbc::MakeProvider()};
}

bool IsCountedDeep(const std::string& folder) {
  const std::filesystem::path path(folder);
  return path.is_relative() && std::distance(path.begin(), path.end()) >= kCountedDepth;
}

Vantrel::SiteFile ReadConfiguration(const SuiteHome& home) {
  Vantrel::SiteFile site = Vantrel::SiteFile::Read(home.SiteConfiguration());
  site.Connection("Orvane", "Orvane");
  CheckSettings(home, site);
  JournalDays(site);
  LongestPreview(site);
  return site;
}

void CheckSettings(const SuiteHome& home, const Vantrel::SiteFile& site) {
  Drives(site);
  MailSettings(site, home);
  FtpSettings(site, home);
}

void RegisterSuite(automation::Runtime& runtime, const SuiteHome& home, const Vantrel::SiteFile& site,
                   const Wiring& wiring) {
  const effects::Places places =
      wiring.recorder == nullptr ? effects::Places() : PlacesOf(home, site, wiring.world);
  const ClassTable acting = ActingClasses(home, site, wiring, places, runtime.classes);
  // The caller's own classes go before the suite's; where nothing is to be changed, not before those that see
  // to it.
  ClassTable real = wiring.world == nullptr ? runtime.classes : acting;
  real.RegisterMissing(wiring.world == nullptr ? acting : runtime.classes);
  real.RegisterMissing(ReadingClasses(home));

  ClassTable classes = Wrappers(real, wiring, places);
  classes.RegisterMissing(real);
  OrvaneProcess::RegisterJobs(classes);
  runtime.classes = std::move(classes);
  if (!runtime.locale) {
    runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
  }
}

void RegisterSuite(automation::Runtime& runtime, const std::filesystem::path& home) {
  const SuiteHome suite(home);
  RegisterSuite(runtime, suite, ReadConfiguration(suite));
}

}  // namespace orvane
