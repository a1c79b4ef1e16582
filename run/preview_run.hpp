// One job, run in a world that is not changed.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "effects/limit.hpp"
#include "effects/reads.hpp"
#include "effects/recorder.hpp"
#include "platform/automation/date_time.hpp"
#include "run/job_table.hpp"
#include "run/preview_world.hpp"
#include "run/run_job.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {

struct PreviewedJob {
  static constexpr std::size_t kMostTexts = 20;

  const JobInfo* job = nullptr;
  automation::DateTime at;
  effects::Counts counts;
  // What failed, as a run would print it; the first ones.
  std::vector<std::string> warnings;
  struct Items {
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
  };
  // Rows of tables, and what lies in folders, before the job, of those that it would change. Of shared
  // folders the files where the job looks for old ones.
  std::map<std::string, std::uint64_t> rows;
  std::map<std::string, Items> items;
  std::map<std::string, std::uint64_t> sharedFiles;
  bool finished = false;  // by its stop line, or by returning from a call of the caller's own
  std::string endedBy;    // if it did not

  // How many there were of what is deleted; nothing where that is not known.
  std::optional<std::uint64_t> Held(effects::Deletions::Of of, const std::string& subject) const;
};

// The rows that the table of the suite's database has for the current runtime; nothing when they cannot be
// counted.
std::optional<std::uint64_t> CountRows(const std::string& table);

struct PreviewOptions {
  const RunOptions& options;  // of which count the caller's classes, how the job is called, and stop
  // The job's clock, which stands still; nothing: the machine's.
  std::optional<automation::DateTime> at = std::nullopt;
  effects::Listener* listener = nullptr;  // hears every line; may be null
  // Ends the world where a run would stop because a service has gone away.
  bool watches = false;
  effects::ReadListener* reads = nullptr;  // hears what the job reads; may be null
};

// Runs the job in `world`. FAILS: what RegisterSuite raises.
PreviewedJob PreviewJob(const SuiteHome& home, const Vantrel::SiteFile& site, const JobInfo& job,
                        PreviewWorld& world, const PreviewOptions& preview);

}  // namespace orvane
