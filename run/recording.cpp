#include "run/recording.hpp"

#include <unistd.h>

#include <array>
#include <system_error>

#include "components/registration/register_jobs.hpp"
#include "platform/automation/error.hpp"
#include "run/exit_codes.hpp"
#include "run/version.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane {
namespace {

[[noreturn]] void CannotBegin(const std::exception& error) {
  throw automation::Error(automation::ErrorNumber::DeviceIoError, "OrvaneProcess",
                          std::string("the journal cannot be begun, nothing was done: ") + error.what());
}

}  // namespace

effects::Recorder::Options RecorderOptions(const JobInfo& job, std::optional<JournalLevel> level) {
  const JournalLevel usual =
      job.progId == OrvaneProcess::kArchiveProgId ? JournalLevel::Rows : JournalLevel::Keys;
  return {.rows = level.value_or(usual) == JournalLevel::Rows,
          .isKnownEntry = job.isKnownEntry,
          .failureIn = [&job](std::string_view line) { return Failure(job, line); }};
}

std::string HostName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

Recording::Recording(const SuiteHome& home, const JobInfo& job, const RunOptions& options,
                     effects::Listener* shown, effects::Listener& listener)
    : job_(job),
      recorder_(RecorderOptions(job, options.journal)),
      isCounted_(shown != nullptr || options.limit) {
  // The journal hears of everything first: what it cannot write down does not happen.
  if (options.journal != JournalLevel::Off) {
    try {
      journal_ = std::make_unique<effects::Journal>(home.Journals(), std::chrono::system_clock::now(),
                                                    getpid(), ClassName(job));
    } catch (const std::system_error& error) {
      CannotBegin(error);
    }
    recorder_.Add(*journal_);
  }
  if (options.preflight) recorder_.Add(watch_.emplace());
  if (shown != nullptr) recorder_.Add(*shown);
  recorder_.Add(listener);
}

Wiring Recording::GetWiring() {
  Wiring wiring;
  wiring.recorder = &recorder_;
  wiring.recordsRows = journal_ || isCounted_;
  wiring.watch = watch_ ? &*watch_ : nullptr;
  return wiring;
}

void Recording::Start(automation::DateTime at) {
  try {
    recorder_.Start({.job = std::string(ClassName(job_)),
                     .preview = false,
                     .at = at,
                     .process = getpid(),
                     .host = HostName(),
                     .version = std::string(Version())});
  } catch (const automation::Error& error) {
    CannotBegin(error);
  }
}

void Recording::End(int exitCode, std::string_view why) {
  if (!why.empty()) recorder_.Stopping(why);
  recorder_.End(exitCode);
  if (!journal_) return;
  try {
    journal_->Sync();
  } catch (const std::system_error&) {
    // The lines are with the operating system, which keeps trying.
  }
}

std::optional<Recording::Stop> Recording::MustStop() const {
  if (watch_ && !watch_->Gone().empty()) {
    return Stop{watch_->Gone(), kUnavailable};
  }
  if (journal_) {
    if (std::string trouble = journal_->Trouble(); !trouble.empty()) {
      return Stop{std::move(trouble), kUnfinished};
    }
  }
  return std::nullopt;
}

}  // namespace orvane
