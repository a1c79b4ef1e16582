#include "run/job_runner.hpp"

#include <chrono>
#include <cstdio>
#include <utility>
#include <variant>

#include "effects/journal_line.hpp"
#include "platform/automation/swallowed_error.hpp"
#include "run/exit_codes.hpp"
#include "run/run_jobs.hpp"

namespace orvane {
namespace {

std::string OneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool control = byte < 0x20 || byte == 0x7F;
    if (!control) {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  return line;
}

}  // namespace

void JobRunner::OnEntry(const effects::EntryPtr& entry) {
  if (const auto* failure = std::get_if<effects::Failure>(&entry->what)) {
    Failed(std::get<effects::Effect>(failure->of->what), failure->error);
  } else if (const auto* log = std::get_if<effects::LogText>(&entry->what)) {
    if (log->origin == effects::LogText::Origin::ErrorLog) Logged(*log);
  }
}

void JobRunner::Failed(const effects::Effect& effect, const automation::Error& reason) {
  if (const auto* mail = std::get_if<effects::MailSending>(&effect)) {
    sawFailures_ = true;
    // Each one, and at once: nothing else says who did not get what, and a run may be killed.
    TellOfJob(MessageKind::Warning, OneLine("a mail was not taken: to \"" + mail->to + "\", subject \"" +
                                            mail->subject + "\": " + effects::ErrorText(reason)));
    return;
  }
  const auto* file = std::get_if<effects::FileChange>(&effect);
  if (file != nullptr && file->kind == effects::FileChange::Kind::DeleteFolder &&
      reason.Number() == static_cast<std::int32_t>(automation::ErrorNumber::PathNotFound)) {
    folderNotDeleted_ = file->path;
  }
}

void JobRunner::Logged(const effects::LogText& log) {
  lastEntry_ = log.text;
  const std::string folder = std::exchange(folderNotDeleted_, {});  // of this entry, if of any
  if (log.known) {
    known_.push_back(log.text);
    return;
  }
  Warn(lastEntry_);
  if (!folder.empty() && job_->needsHands != nullptr && job_->needsHands(log.text)) {
    Warn("the folder " + folder +
         " is not there, and every run stops at it: make it again, empty, and the next run removes it "
         "together "
         "with its row in DATAFILES; on a web farm, where the rows stay, delete that row by hand");
  }
}

void JobRunner::Warn(const std::string& text) {
  sawFailures_ = true;
  if (++warningCount_ <= kMostShown) warnings_.push_back(OneLine(text));
}

bool JobRunner::Run(const JobInfo& job, automation::Runtime& runtime, Recording& recording) {
  job_ = &job;
  warnings_.clear();
  known_.clear();
  warningCount_ = 0;
  folderNotDeleted_.clear();
  lastEntry_.clear();
  endedBy_.reset();

  runLog_.emplace(home_.Logs(), job);
  locale_ = runtime.locale;
  const bool sawFailuresBefore = std::exchange(sawFailures_, false);
  const auto start = std::chrono::steady_clock::now();
  recording.Start(runtime.clock());
  const bool returned = Call(runtime);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;

  const AddedLines added = TakeLogLines();
  // Not every work method writes the run log's first and last lines.
  const bool finished = options_.call ? returned : added.stopped;
  recording.End(!finished ? kUnfinished : options_.strict && sawFailures_ ? kErrorsLogged : kOk);
  sawFailures_ = sawFailures_ || sawFailuresBefore;
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.1f s", taken.count());
  TellOfJob(MessageKind::Outcome, (finished        ? "finished in "
                                   : options_.call ? "ended with an error after "
                                                   : "ended without its stop line after ") +
                                      std::string(seconds));
  TellWarnings();
  if (!finished) TellOfJob(MessageKind::Error, "ended by: " + ReasonOfEnding());
  return finished;
}

void JobRunner::TellStopped(std::string_view why) {
  TellOfJob(MessageKind::Outcome, "stopped");
  TakeLogLines();
  TellWarnings();
  TellOfJob(MessageKind::Error, std::string(why));
}

bool JobRunner::Call(automation::Runtime& runtime) {
  const automation::RuntimeScope scope(runtime);
  const automation::SwallowedErrors listening(
      [this](const automation::Error& error) { endedBy_ = effects::ErrorText(error); });
  try {
    CallJob(*job_, options_);
    return true;
  } catch (...) {
    // Nothing should escape a job's Run.
    endedBy_ = effects::ErrorText(automation::PendingError());
    return false;
  }
}

std::string JobRunner::ReasonOfEnding() const {
  if (endedBy_) return OneLine(*endedBy_);
  if (!lastEntry_.empty()) return OneLine(lastEntry_);
  return "the job met no error; was its run log in " + home_.Logs().string() + " moved or cut meanwhile?";
}

AddedLines JobRunner::TakeLogLines() {
  AddedLines added = runLog_->Added();
  for (const std::string& failure : added.failures) Warn(locale_->FromCodePage(failure));
  if (!added.started && !options_.call) Warn("its run log got no start line");
  return added;
}

void JobRunner::TellOfJob(MessageKind kind, const std::string& text) {
  Tell(options_, kind, std::string(job_->progId) + ": " + text);
}

void JobRunner::TellWarnings() {
  for (const std::string& warning : warnings_) TellOfJob(MessageKind::Warning, warning);
  if (warningCount_ > warnings_.size()) {
    TellOfJob(MessageKind::Warning, std::to_string(warningCount_ - warnings_.size()) +
                                        " more; the error log is " + home_.ErrorLog().string());
  }
  for (const std::string& entry : known_) TellOfJob(MessageKind::Note, OneLine(entry));
  if (!known_.empty()) {
    TellOfJob(MessageKind::Note,
              "a sweep by age ends so at its first file, in every run; nothing is to be done");
  }
}

}  // namespace orvane
