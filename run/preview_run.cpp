#include "run/preview_run.hpp"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "effects/journal_line.hpp"
#include "effects/service_watch.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"
#include "platform/automation/swallowed_error.hpp"
#include "run/exit_codes.hpp"
#include "run/recording.hpp"
#include "run/run_jobs.hpp"
#include "run/version.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/local_time.hpp"
#include "suite/database/suite_connection.hpp"

namespace orvane {
namespace {

class Warnings final : public effects::Listener {
 public:
  explicit Warnings(std::vector<std::string>& texts) : texts_(texts) {}

  void OnEntry(const effects::EntryPtr& entry) override {
    if (const auto* log = std::get_if<effects::LogText>(&entry->what); log != nullptr && !log->known)
      Add(log->text);
    if (const auto* failure = std::get_if<effects::Failure>(&entry->what))
      Add(effects::ErrorText(failure->error));
  }

 private:
  void Add(const std::string& text) {
    if (texts_.size() < PreviewedJob::kMostTexts) texts_.push_back(text);
  }

  std::vector<std::string>& texts_;
};

// Whether something is a folder, and no link to one.
bool IsFolder(const base::FileLayer& layer, const std::filesystem::path& path, unsigned char type) {
  if (type != DT_UNKNOWN) return type == DT_DIR;
  struct stat status {};
  return layer.Lstat(path.string(), status) == 0 && S_ISDIR(status.st_mode);
}

bool Count(const base::FileLayer& layer, const std::filesystem::path& folder, bool deep,
           PreviewedJob::Items& items) {
  std::vector<base::FileLayer::Child> children;
  if (layer.List(folder.string(), children) != 0) return false;
  for (const base::FileLayer::Child& child : children) {
    const bool isFolder = IsFolder(layer, folder / child.name, child.type);
    ++(isFolder ? items.folders : items.files);
    if (isFolder && deep) Count(layer, folder / child.name, deep, items);
  }
  return true;
}

// What there was before: what is there now, and what went, without what came.
std::uint64_t Before(std::uint64_t now, std::uint64_t gone, std::uint64_t come) {
  return now + gone < come ? 0 : now + gone - come;
}

void CountHoldings(PreviewedJob& previewed, const World& world, const std::filesystem::path& home) {
  struct Change {
    std::uint64_t gone = 0;
    std::uint64_t come = 0;
  };
  struct ChangeOfItems {
    Change files;
    Change folders;
  };
  std::map<std::string, Change> tables;
  std::map<std::string, ChangeOfItems> folders;
  for (const auto& [key, count] : previewed.counts.All()) {
    const auto& [op, subject] = key;
    if (op.starts_with("row")) {
      Change& change = tables[subject];
      if (op.ends_with(".delete")) change.gone += count.done;
      if (op.ends_with(".insert")) change.come += count.done;
    } else if (op.starts_with("file.") || op.starts_with("folder.")) {
      Change& change = op.starts_with("file.") ? folders[subject].files : folders[subject].folders;
      if (op.ends_with(".delete")) change.gone += count.done;
      if (op == "folder.create" || op == "file.write") change.come += count.done;
    }
  }
  for (const auto& [table, change] : tables) {
    if (const auto now = CountRows(table)) previewed.rows[table] = Before(*now, change.gone, change.come);
  }
  for (const auto& [folder, change] : folders) {
    PreviewedJob::Items now;
    if (Count(*world.layer, home / folder, IsCountedDeep(folder), now)) {
      previewed.items[folder] = {Before(now.files, change.files.gone, change.files.come),
                                 Before(now.folders, change.folders.gone, change.folders.come)};
    }
  }
  previewed.sharedFiles = *world.sharedFiles;
}

}  // namespace

std::optional<std::uint64_t> CountRows(const std::string& table) try {
  const auto connection = suite::OpenConnection("Orvane", "Orvane");
  const auto rows =
      suite::OpenRows(ADODB::Statement("select count(*) from ") + ADODB::SqlFragment(table), connection);
  return static_cast<std::uint64_t>(automation::ToInt64(rows->Fields().Item(0).Value()));
} catch (const automation::Error&) {
  return std::nullopt;
}

std::optional<std::uint64_t> PreviewedJob::Held(effects::Deletions::Of of, const std::string& subject) const {
  using Of = effects::Deletions::Of;
  const auto in = [&subject](const auto& held) {
    const auto found = held.find(subject);
    return found == held.end() ? std::nullopt : std::optional(found->second);
  };
  if (of == Of::Rows) return in(rows);
  if (of == Of::Shared) return in(sharedFiles);
  const std::optional<Items> there = in(items);
  if (!there) return std::nullopt;
  return of == Of::Files ? there->files : of == Of::Folders ? there->folders : there->files + there->folders;
}

PreviewedJob PreviewJob(const SuiteHome& home, const Vantrel::SiteFile& site, const JobInfo& job,
                        PreviewWorld& world, const PreviewOptions& preview) {
  PreviewedJob previewed;
  previewed.job = &job;
  automation::Runtime runtime;
  if (preview.at) {
    runtime.clock = [moment = *preview.at] { return moment; };
    world.Parts().layer->TakeForNow({.tv_sec = UtcOf(*preview.at), .tv_nsec = 0});
  }
  runtime.classes = preview.options.classes;

  effects::Recorder::Options options = RecorderOptions(job, std::nullopt);
  // The run log goes nowhere; what it would say is heard line by line.
  options.failureIn = [&previewed, &job](std::string_view line) {
    if (StopTime(job, line)) previewed.finished = true;
    return Failure(job, line);
  };
  effects::Recorder recorder(std::move(options));
  if (preview.listener != nullptr) recorder.Add(*preview.listener);
  Warnings warnings(previewed.warnings);
  recorder.Add(warnings);
  effects::ServiceWatch watch;
  if (preview.watches) recorder.Add(watch);
  RegisterSuite(runtime, home, site,
                {.recorder = &recorder,
                 .recordsRows = true,
                 .watch = preview.watches ? &watch : nullptr,
                 .world = &world.Parts(),
                 .reads = preview.reads,
                 .at = preview.at});

  const automation::RuntimeScope scope(runtime);
  previewed.at = automation::Now();
  recorder.Start({.job = std::string(ClassName(job)),
                  .preview = true,
                  .at = previewed.at,
                  .process = getpid(),
                  .host = HostName(),
                  .version = std::string(Version())});
  const automation::SafePoints stopping([&] {
    if (IsAskedToStop(preview.options)) world.End("asked to stop", kTryAgain);
    if (watch.Gone().empty()) return;
    recorder.Stopping(watch.Gone());
    recorder.End(kUnavailable);
    world.End("a run would stop at this point: " + watch.Gone(), kUnavailable);
  });
  const automation::SwallowedErrors listening(
      [&previewed](const automation::Error& error) { previewed.endedBy = effects::ErrorText(error); });
  try {
    CallJob(job, preview.options);
    previewed.finished = previewed.finished || preview.options.call;
  } catch (...) {
    // Nothing should escape a job's Run.
    previewed.endedBy = effects::ErrorText(automation::PendingError());
  }
  recorder.End(previewed.finished ? kOk : kUnfinished);
  previewed.counts = recorder.CountsSoFar();
  CountHoldings(previewed, world.Parts(), home.Path());
  return previewed;
}

}  // namespace orvane
