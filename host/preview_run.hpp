// One job, run in a world that is not changed.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "effects/reads.hpp"
#include "effects/recorder.hpp"
#include "host/job_table.hpp"
#include "host/limit.hpp"
#include "host/preview_world.hpp"
#include "host/suite_home.hpp"
#include "platform/automation/date_time.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {

struct PreviewedJob {
  static constexpr std::size_t kMostTexts = 20;

  const JobInfo* job = nullptr;
  automation::DateTime at;
  effects::Counts counts;
  // What failed, as a run would print it; the first ones.
  std::vector<std::string> warnings;
  // Rows of tables and items of folders before the job, of those that it would change.
  std::map<std::string, std::uint64_t> rows;
  std::map<std::string, std::uint64_t> items;
  bool finished = false;  // wrote its stop line
  std::string endedBy;    // if it did not

  std::uint64_t Held(const Deletions& of) const;
};

// The rows that the table of the suite's database has for the current runtime; nothing when they cannot be
// counted.
std::optional<std::uint64_t> CountRows(const std::string& table);

// Runs the job in `world`. `listener` hears every line, `reads` what the job reads; both may be null. `at` is
// the job's clock, which stands still then, or the machine's. Where a run would stop because a service has
// gone away, the world ends, unless nobody is to watch. FAILS: what RegisterSuite raises.
PreviewedJob PreviewJob(const SuiteHome& home, const Vantrel::SiteFile& site, const JobInfo& job,
                        PreviewWorld& world, const std::optional<automation::DateTime>& at,
                        effects::Listener* listener, bool watchesServices,
                        effects::ReadListener* reads = nullptr);

}  // namespace orvane_host
