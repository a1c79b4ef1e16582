// Runs one job after another and tells what came of each.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "effects/failure_listener.hpp"
#include "host/commands.hpp"
#include "host/job_table.hpp"
#include "host/run_logs.hpp"
#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_host {

class JobRunner : public effects::FailureListener {
 public:
  JobRunner(const SuiteHome& home, const Console& console) : home_(home), console_(console) {}

  // False when the job left no stop line; why is printed. The runtime's mails, folders and error log tell
  // this object.
  bool Run(const JobInfo& job, automation::Runtime& runtime);

  // Ends the process from within the job that is being run, which is at a safe point: tells why, prints what
  // was to be told of the job so far, and exits.
  [[noreturn]] void StopHere(std::string_view why, int exitCode);

  // Whether anything has failed in the jobs so far that a strict caller wants to know of.
  bool SawFailures() const { return sawFailures_; }

  void MailRefused(std::string_view to, std::string_view subject,
                   const automation::Error& reason) noexcept override;
  void FolderNotDeleted(std::string_view path, const automation::Error& reason) noexcept override;
  void ErrorLogged(std::string_view errorSource, std::string_view message) noexcept override;

 private:
  void Call(automation::Runtime& runtime);
  void Warn(const std::string& text);  // of the job being run
  AddedLines TakeLogLines();           // and warn of the failures that they tell of
  void PrintWarnings();
  std::string ReasonOfEnding() const;

  const SuiteHome& home_;
  const Console& console_;
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

}  // namespace orvane_host
