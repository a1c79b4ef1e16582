#include "host/recording.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "components/registration/register_jobs.hpp"
#include "host/exit_codes.hpp"
#include "host/version.hpp"
#include "platform/automation/error.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {
namespace {

std::size_t TerminalWidth() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::unique_ptr<effects::Progress> MakeProgress(ShowProgress wanted, const Console& console) {
  if (wanted == ShowProgress::Never) return nullptr;
  using effects::Progress;
  if (isatty(STDERR_FILENO) == 1) {
    return std::make_unique<Progress>(console.err,
                                      Progress::Options{.form = Progress::Form::OneLine,
                                                        .interval = std::chrono::milliseconds(250),
                                                        .width = TerminalWidth()});
  }
  return std::make_unique<Progress>(console.err, Progress::Options{.form = Progress::Form::LineEach,
                                                                   .atEnd = wanted == ShowProgress::Always});
}

[[noreturn]] void CannotBegin(const std::exception& error) {
  throw automation::Error(static_cast<std::int32_t>(automation::ErrorNumber::DeviceIoError), "orvane-host",
                          std::string("the journal cannot be begun, nothing was done: ") + error.what());
}

}  // namespace

effects::Recorder::Options RecorderOptions(const JobInfo& job, const Arguments& options) {
  const JournalLevel usual =
      job.progId == OrvaneProcess::kArchiveProgId ? JournalLevel::Rows : JournalLevel::Keys;
  return {.rows = options.journal.value_or(usual) == JournalLevel::Rows,
          .isKnownEntry = job.isKnownEntry,
          .failureIn = [&job](std::string_view line) { return Failure(job, line); }};
}

std::string HostName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

Recording::Recording(const SuiteHome& home, const JobInfo& job, const Arguments& options,
                     const Console& console, effects::Listener& listener)
    : job_(job),
      recorder_(RecorderOptions(job, options)),
      progress_(MakeProgress(options.progress, console)) {
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
  if (progress_) recorder_.Add(*progress_);
  recorder_.Add(listener);
}

Wiring Recording::GetWiring() {
  Wiring wiring;
  wiring.recorder = &recorder_;
  wiring.recordsRows = journal_ || progress_;
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

}  // namespace orvane_host
