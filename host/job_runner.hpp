// Runs one job after another and tells what came of each.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "effects/recorder.hpp"
#include "host/commands.hpp"
#include "host/job_table.hpp"
#include "host/recording.hpp"
#include "host/run_logs.hpp"
#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_host {

class JobRunner : public effects::Listener {
 public:
  // A strict run's journals tell of failures by their exit code.
  JobRunner(const SuiteHome& home, const Console& console, bool strict)
      : home_(home), console_(console), strict_(strict) {}

  // False when the job left no stop line; why is printed. The recording, which this object listens to, is
  // begun and ended here.
  bool Run(const JobInfo& job, automation::Runtime& runtime, Recording& recording);

  // From within the job that is being run: tells why it is stopped, and what was to be told of it so far.
  void TellStopped(std::string_view why);

  // Whether anything has failed in the jobs so far that a strict caller wants to know of.
  bool SawFailures() const { return sawFailures_; }

  // Failures and entries in the error log: jobs stay silent about some of them by their rules.
  void Hear(const effects::EntryPtr& entry) override;

 private:
  void Call(automation::Runtime& runtime);
  void Failed(const effects::Effect& effect, const automation::Error& reason);
  void Logged(const effects::LogText& log);
  void Warn(const std::string& text);  // of the job being run
  AddedLines TakeLogLines();           // and warn of the failures that they tell of
  void PrintWarnings();
  std::string ReasonOfEnding() const;

  const SuiteHome& home_;
  const Console& console_;
  const bool strict_;
  bool sawFailures_ = false;

  // Of the job being run:
  static constexpr std::size_t kMostShown = 20;
  const JobInfo* job_ = nullptr;
  effects::Progress* progress_ = nullptr;  // what is shown of it; may be null
  std::optional<RunLogWatch> runLog_;
  std::shared_ptr<const automation::Locale> locale_;
  std::vector<std::string> warnings_;  // the first ones
  std::size_t warningCount_ = 0;
  std::vector<std::string> known_;
  std::string folderNotDeleted_;        // the last one
  std::string lastEntry_;               // in the error log
  std::optional<std::string> endedBy_;  // the error that its last trap kept to itself, or that escaped it
};

}  // namespace orvane_host
