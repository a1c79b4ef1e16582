#include "run/limit_guard.hpp"

#include <filesystem>
#include <limits>
#include <system_error>

#include "effects/progress.hpp"
#include "run/exit_codes.hpp"
#include "run/preview_run.hpp"
#include "run/preview_world.hpp"
#include "run/run_jobs.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/site_settings.hpp"

namespace orvane {
namespace {

using effects::Deletions;
using effects::Excess;
using effects::Limit;

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

LimitGuard::Key KeyOf(const Deletions& deletions) {
  return {deletions.of, deletions.subject};
}

// What lies in the folder now.
std::uint64_t CountIn(const std::filesystem::path& folder, bool deep, bool folders) {
  using Walk = std::filesystem::recursive_directory_iterator;
  std::uint64_t count = 0;
  std::error_code failed;
  for (Walk at(folder, std::filesystem::directory_options::skip_permission_denied, failed);
       !failed && at != Walk(); at.increment(failed)) {
    std::error_code unknown;
    const bool isFolder = at->symlink_status(unknown).type() == std::filesystem::file_type::directory;
    if (isFolder == folders) ++count;
    if (!deep) at.disable_recursion_pending();
  }
  return count;
}

// What a share is taken of. Nothing of shared files that go by their names: they went here before, and count
// there.
std::optional<std::uint64_t> Whole(const PreviewedJob& previewed, const Deletions& deletions) {
  const auto held = previewed.Held(deletions.of, deletions.subject);
  return deletions.of == Deletions::Of::Shared ? held : held.value_or(0);
}

std::string Figures(const Excess& excess, const Limit& limit) {
  std::string text = std::to_string(excess.deletions.count);
  if (limit.percent) text += " of " + std::to_string(excess.of);
  constexpr const char* kWhat[] = {" rows of ", " items of ", " files of ", " folders of ", " files of "};
  text += kWhat[static_cast<std::size_t>(excess.deletions.of)];
  return text + excess.deletions.subject + ", " + std::to_string(excess.allowed) + " allowed";
}

}  // namespace

std::optional<LimitGuard> LimitGuard::Pass(const Limit& limit, const SuiteHome& home,
                                           const Vantrel::SiteFile& site, const JobInfo& job,
                                           const RunOptions& options, int exitCode) {
  const auto stop = [&](const std::string& why, int code) {
    Tell(options, MessageKind::Error,
         std::string(job.progId) + ": the limit could not be checked, nothing was begun: " + why);
    Leave(options, MoreSevere(exitCode, code));
  };
  PreviewWorld world(home, stop, LongestPreview(site));
  const PreviewedJob previewed = PreviewJob(home, site, job, world, {.options = options});
  const auto excesses =
      ExcessesOf(limit, previewed.counts, [&](const Deletions& of) { return Whole(previewed, of); });
  if (!excesses.empty()) {
    std::string text = std::string(job.progId) + ": the limit of " + limit.Text() +
                       " would be exceeded; nothing was begun. It would delete";
    for (const Excess& excess : excesses) text += "\n  " + Figures(excess, limit);
    Tell(options, MessageKind::Error, text);
    return std::nullopt;
  }
  LimitGuard guard(limit, home.Path().string());
  guard.progress_ = effects::ProgressTotal(previewed.counts);
  for (const Deletions& deletions : DeletionsOf(limit, previewed.counts)) {
    const auto of = limit.percent ? Whole(previewed, deletions) : 0;
    guard.predicted_[KeyOf(deletions)] = {deletions.count, of ? Allowed(limit, *of) : kUnlimited};
  }
  guard.sharedFiles_ = previewed.sharedFiles;
  return guard;
}

// Of what was not predicted the share is one of what there is now, and of what went.
LimitGuard::Predicted LimitGuard::Of(const Deletions& deletions) const {
  const auto known = predicted_.find(KeyOf(deletions));
  if (known != predicted_.end()) return known->second;
  if (limit_.count) return {0, *limit_.count};
  const std::string& subject = deletions.subject;
  std::uint64_t now = 0;
  switch (deletions.of) {
    case Deletions::Of::Rows:
      now = CountRows(subject).value_or(0);
      break;
    case Deletions::Of::Shared: {
      const auto held = sharedFiles_.find(subject);
      return {0, held == sharedFiles_.end() ? kUnlimited : Allowed(limit_, held->second)};
    }
    default:
      now = CountIn(std::filesystem::path(home_) / subject, IsCountedDeep(subject),
                    deletions.of == Deletions::Of::Folders);
  }
  return {0, Allowed(limit_, now + deletions.count)};
}

std::optional<Recording::Stop> LimitGuard::MustStop(const effects::Counts& soFar) const {
  for (const Deletions& deletions : DeletionsOf(limit_, soFar)) {
    const Predicted predicted = Of(deletions);
    if (deletions.count < predicted.allowed || deletions.count <= predicted.count) continue;
    return Recording::Stop{"the limit of " + limit_.Text() + " is reached in " + deletions.subject + ": " +
                               std::to_string(deletions.count) + " deleted, " +
                               std::to_string(predicted.count) + " foretold",
                           kLimit};
  }
  return std::nullopt;
}

}  // namespace orvane
