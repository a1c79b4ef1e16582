#include "host/job_runner.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

#include "components/interfaces/job.hpp"
#include "platform/automation/swallowed_error.hpp"

namespace orvane_host {
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

std::string Shown(const automation::Error& error) {
  return error.Description() + " (" + std::to_string(error.Number()) + ")";
}

}  // namespace

void JobRunner::MailRefused(std::string_view to, std::string_view subject,
                            const automation::Error& reason) noexcept try {
  sawFailures_ = true;
  // Each one, and at once: nothing else says who did not get what, and a run may be killed.
  console_.err << "warning: " << job_->progId << ": "
               << OneLine("a mail was not taken: to \"" + std::string(to) + "\", subject \"" +
                          std::string(subject) + "\": " + Shown(reason))
               << std::endl;
} catch (...) {
  sawFailures_ = true;
}

void JobRunner::FolderNotDeleted(std::string_view path, const automation::Error& reason) noexcept try {
  if (reason.Number() != static_cast<std::int32_t>(automation::ErrorNumber::PathNotFound)) return;
  folderNotDeleted_ = path;
  std::replace(folderNotDeleted_.begin(), folderNotDeleted_.end(), '\\', '/');  // as people here write it
} catch (...) {
}

void JobRunner::ErrorLogged(std::string_view, std::string_view message) noexcept try {
  lastEntry_ = message;
  const std::string folder = std::exchange(folderNotDeleted_, {});  // of this entry, if of any
  if (job_->isKnownEntry != nullptr && job_->isKnownEntry(message)) {
    known_.emplace_back(message);
    return;
  }
  Warn(lastEntry_);
  if (!folder.empty() && job_->needsHands != nullptr && job_->needsHands(message)) {
    Warn("the folder " + folder +
         " is not there, and every run stops at it: make it again, empty, and the next run removes it "
         "together "
         "with its row in DATAFILES; on a web farm, where the rows stay, delete that row by hand");
  }
} catch (...) {
  sawFailures_ = true;
}

void JobRunner::Warn(const std::string& text) {
  sawFailures_ = true;
  if (++warningCount_ <= kMostShown) warnings_.push_back(OneLine(text));
}

bool JobRunner::Run(const JobInfo& job, automation::Runtime& runtime) {
  job_ = &job;
  warnings_.clear();
  known_.clear();
  warningCount_ = 0;
  folderNotDeleted_.clear();
  lastEntry_.clear();
  endedBy_.reset();

  runLog_.emplace(home_.Logs(), job);
  locale_ = runtime.locale;
  const auto start = std::chrono::steady_clock::now();
  Call(runtime);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;

  const AddedLines added = TakeLogLines();
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.1f s", taken.count());
  console_.out << job.progId << (added.stopped ? ": finished in " : ": ended without its stop line after ")
               << seconds << std::endl;
  PrintWarnings();
  if (!added.stopped)
    console_.err << "orvane-host: " << job.progId << ": ended by: " << ReasonOfEnding() << '\n';
  console_.err.flush();
  return added.stopped;
}

// The job's objects are left as they are: their files and sessions go with the process, as after a kill, and
// a safe point is where that costs nothing.
void JobRunner::StopHere(std::string_view why, int exitCode) {
  console_.out << job_->progId << ": stopped" << std::endl;
  TakeLogLines();
  PrintWarnings();
  console_.err << "orvane-host: " << job_->progId << ": " << why << std::endl;
  std::_Exit(exitCode);
}

void JobRunner::Call(automation::Runtime& runtime) {
  const automation::RuntimeScope scope(runtime);
  const automation::SwallowedErrors listening(
      [this](const automation::Error& error) { endedBy_ = Shown(error); });
  try {
    automation::CreateObject<OrvaneProcess::Job>(job_->progId)->Run();
  } catch (...) {
    // Nothing should escape a job.
    endedBy_ = Shown(automation::PendingError());
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
  if (!added.started) Warn("its run log got no start line");
  return added;
}

void JobRunner::PrintWarnings() {
  for (const std::string& warning : warnings_) {
    console_.err << "warning: " << job_->progId << ": " << warning << '\n';
  }
  if (warningCount_ > warnings_.size()) {
    console_.err << "warning: " << job_->progId << ": " << warningCount_ - warnings_.size()
                 << " more; the error log is " << home_.ErrorLog().string() << '\n';
  }
  for (const std::string& entry : known_) {
    console_.err << "note: " << job_->progId << ": " << OneLine(entry) << '\n';
  }
  if (!known_.empty()) {
    console_.err << "note: " << job_->progId
                 << ": a sweep by age ends so at its first file, in every run; nothing is to be done\n";
  }
}

}  // namespace orvane_host
