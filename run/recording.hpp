// All that listens to one job's run: journal, the watch over its services, whatever shows it, and who calls
// it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "effects/journal.hpp"
#include "effects/recorder.hpp"
#include "effects/service_watch.hpp"
#include "run/job_table.hpp"
#include "run/run_job.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane {

// What the recorder of a job's run is told to record: at the given level, or the job's usual one. A preview
// records the same.
effects::Recorder::Options RecorderOptions(const JobInfo& job, std::optional<JournalLevel> level);

// The name of this machine.
std::string HostName();

class Recording {
 public:
  // `shown`, which may be null, and `listener` hear everything as well. Makes the journal, unless there is to
  // be none. FAILS: automation::Error when the journal cannot be begun.
  Recording(const SuiteHome& home, const JobInfo& job, const RunOptions& options, effects::Listener* shown,
            effects::Listener& listener);

  // For RegisterSuite.
  Wiring GetWiring();

  // Tells the run's first line. FAILS: as the constructor.
  void Start(automation::DateTime at);
  // Tells the last one and syncs the journal. `why` is told before it, unless it is empty.
  void End(int exitCode, std::string_view why = {});

  // Why the run has to stop, with the exit code; nothing while it may go on.
  struct Stop {
    std::string why;
    int exitCode = 0;
    bool wasAskedFor = false;  // by somebody, not by what has happened
  };
  std::optional<Stop> MustStop() const;

  // How much the run has changed so far.
  const effects::Counts& CountsSoFar() const { return recorder_.CountsSoFar(); }

 private:
  const JobInfo& job_;
  effects::Recorder recorder_;
  std::unique_ptr<effects::Journal> journal_;
  const bool isCounted_;  // by somebody else than the journal
  std::optional<effects::ServiceWatch> watch_;
};

}  // namespace orvane
