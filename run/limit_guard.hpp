// Holds one job's run to a limit.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "effects/limit.hpp"
#include "run/job_table.hpp"
#include "run/recording.hpp"
#include "run/run_job.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {

class LimitGuard {
 public:
  using Key = std::pair<effects::Deletions::Of, std::string>;  // with the table or folder

  // Previews the job. Nothing when it would delete more than the limit allows; the figures are told then.
  // `exitCode` is that of the jobs before. REQUIRES: nobody else runs jobs of the suite. FAILS: as PreviewJob
  // and PreviewWorld; a preview that cannot go on, or is asked to stop, ends the process with what says so.
  static std::optional<LimitGuard> Pass(const effects::Limit& limit, const SuiteHome& home,
                                        const Vantrel::SiteFile& site, const JobInfo& job,
                                        const RunOptions& options, int exitCode);

  // To be asked at safe points: whether the run has come to the limit though its preview had not predicted so
  // many deletions, because the suite was changed in between.
  std::optional<Recording::Stop> MustStop(const effects::Counts& soFar) const;

  // How much the run will show as progress, while the suite stays as it was previewed.
  std::uint64_t PredictedProgress() const { return progress_; }

 private:
  struct Predicted {
    std::uint64_t count = 0;
    std::uint64_t allowed = 0;
  };

  explicit LimitGuard(effects::Limit limit, std::string home) : limit_(limit), home_(std::move(home)) {}
  Predicted Of(const effects::Deletions& deletions) const;

  effects::Limit limit_;
  std::string home_;
  std::uint64_t progress_ = 0;
  std::map<Key, Predicted> predicted_;
  std::map<std::string, std::uint64_t> sharedFiles_;  // of the shared folders that were looked through
};

}  // namespace orvane
