// Runs one job after another and tells what came of each.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "effects/recorder.hpp"
#include "platform/automation/runtime.hpp"
#include "run/job_table.hpp"
#include "run/recording.hpp"
#include "run/run_job.hpp"
#include "run/run_logs.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane {

class JobRunner : public effects::Listener {
 public:
  // A strict run's journals tell of failures by their exit code. Both must outlive it.
  JobRunner(const SuiteHome& home, const RunOptions& options) : home_(home), options_(options) {}

  // False when the job left no stop line, or raised an error where the caller has a call of its own; why is
  // told. The recording, which this object listens to, is begun and ended here.
  bool Run(const JobInfo& job, automation::Runtime& runtime, Recording& recording);

  // From within the job that is being run: tells why it is stopped, and what was to be told of it so far.
  void TellStopped(std::string_view why);

  // Whether anything has failed in the jobs so far that a strict caller wants to know of.
  bool SawFailures() const { return sawFailures_; }

  // Failures and entries in the error log: jobs stay silent about some of them by their rules.
  void OnEntry(const effects::EntryPtr& entry) override;

 private:
  bool Call(automation::Runtime& runtime);  // whether it returned
  void Failed(const effects::Effect& effect, const automation::Error& reason);
  void Logged(const effects::LogText& log);
  void Warn(const std::string& text);
  AddedLines TakeLogLines();  // and warn of the failures that they tell of
  void TellWarnings();
  void TellOfJob(MessageKind kind, const std::string& text);  // of the job being run
  std::string ReasonOfEnding() const;

  const SuiteHome& home_;
  const RunOptions& options_;
  bool sawFailures_ = false;

  // Of the job being run:
  static constexpr std::size_t kMostShown = 20;
  const JobInfo* job_ = nullptr;
  std::optional<RunLogWatch> runLog_;
  std::shared_ptr<const automation::Locale> locale_;
  std::vector<std::string> warnings_;  // the first ones
  std::size_t warningCount_ = 0;
  std::vector<std::string> known_;
  std::string folderNotDeleted_;        // the last one
  std::string lastEntry_;               // in the error log
  std::optional<std::string> endedBy_;  // the error that its last trap kept to itself, or that escaped it
};

}  // namespace orvane
