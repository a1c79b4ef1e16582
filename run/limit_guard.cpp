#include "run/limit_guard.hpp"

#include <filesystem>
#include <system_error>

#include "effects/progress.hpp"
#include "run/exit_codes.hpp"
#include "run/preview_run.hpp"
#include "run/preview_world.hpp"
#include "run/run_jobs.hpp"
#include "suite/composition/site_settings.hpp"

namespace orvane {
namespace {

using effects::Deletions;
using effects::Excess;
using effects::Limit;

std::string Figures(const Excess& excess, const Limit& limit) {
  std::string text = std::to_string(excess.deletions.count);
  if (limit.percent) text += " of " + std::to_string(excess.of);
  text += excess.deletions.isTable ? " rows of " : " items of ";
  return text + excess.deletions.subject + ", " + std::to_string(excess.allowed) + " allowed";
}

}  // namespace

std::optional<LimitGuard> LimitGuard::Pass(const Limit& limit, const SuiteHome& home,
                                           const Vantrel::SiteFile& site, const JobInfo& job,
                                           const RunOptions& options, int exitCode) {
  const auto stop = [&](const std::string& why, int code) {
    Tell(options, Telling::Message,
         std::string(job.progId) + ": the limit could not be checked, nothing was begun: " + why);
    Leave(options, Graver(exitCode, code));
  };
  PreviewWorld world(home, stop, LongestPreview(site));
  const PreviewedJob previewed = PreviewJob(home, site, job, world, {.options = options});
  const auto excesses =
      ExcessesOf(limit, previewed.counts, [&](const Deletions& of) { return previewed.Held(of); });
  if (!excesses.empty()) {
    std::string text = std::string(job.progId) + ": the limit of " + limit.Text() +
                       " would be exceeded; nothing was begun. It would delete";
    for (const Excess& excess : excesses) text += "\n  " + Figures(excess, limit);
    Tell(options, Telling::Message, text);
    return std::nullopt;
  }
  LimitGuard guard(limit, home.Path().string());
  guard.progress_ = effects::ProgressTotal(previewed.counts);
  for (const Deletions& deletions : DeletionsOf(previewed.counts)) {
    guard.foretold_[{deletions.isTable, deletions.subject}] = {deletions.count,
                                                               Allowed(limit, previewed.Held(deletions))};
  }
  return guard;
}

// Of what was not foretold the share is one of what there is now, and of what went.
LimitGuard::Foretold LimitGuard::Of(const Deletions& deletions) const {
  const auto known = foretold_.find({deletions.isTable, deletions.subject});
  if (known != foretold_.end()) return known->second;
  std::uint64_t now = 0;
  if (deletions.isTable) {
    now = CountRows(deletions.subject).value_or(0);
  } else {
    std::error_code failed;
    const std::filesystem::directory_iterator items(std::filesystem::path(home_) / deletions.subject, failed);
    if (!failed) now = static_cast<std::uint64_t>(std::distance(begin(items), end(items)));
  }
  return {0, Allowed(limit_, now + deletions.count)};
}

std::optional<Recording::Stop> LimitGuard::MustStop(const effects::Counts& soFar) const {
  for (const Deletions& deletions : DeletionsOf(soFar)) {
    const Foretold foretold = Of(deletions);
    if (deletions.count < foretold.allowed || deletions.count <= foretold.count) continue;
    return Recording::Stop{"the limit of " + limit_.Text() + " is reached in " + deletions.subject + ": " +
                               std::to_string(deletions.count) + " deleted, " +
                               std::to_string(foretold.count) + " foretold",
                           kLimit};
  }
  return std::nullopt;
}

}  // namespace orvane
