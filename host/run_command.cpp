#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "effects/progress.hpp"
#include "host/commands.hpp"
#include "host/metrics.hpp"
#include "host/named_jobs.hpp"
#include "host/stop_signals.hpp"
#include "run/exit_codes.hpp"
#include "run/run_jobs.hpp"

namespace orvane::host {
namespace {

using effects::Progress;

std::size_t TerminalWidth() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

// Null where none is to be shown.
std::shared_ptr<Progress> MakeProgress(ShowProgress wanted, const Console& console) {
  if (wanted == ShowProgress::Never) return nullptr;
  if (isatty(STDERR_FILENO) == 1) {
    return std::make_shared<Progress>(console.err,
                                      Progress::Options{.form = Progress::Form::OneLine,
                                                        .interval = std::chrono::milliseconds(250),
                                                        .width = TerminalWidth()});
  }
  return std::make_shared<Progress>(console.err, Progress::Options{.form = Progress::Form::LineEach,
                                                                   .atEnd = wanted == ShowProgress::Always});
}

}  // namespace

int RunJobs(const Arguments& arguments, const Console& console) {
  const auto jobs = JobsNamed(arguments.jobs, console.err);
  if (!jobs) return kUsage;

  const StopRequest stopRequest;
  std::shared_ptr<Progress> progress;  // of the job being run
  RunOptions options{.home = arguments.home,
                     .caller = "orvane-host",
                     .wait = arguments.wait,
                     .preflight = arguments.preflight,
                     .journal = arguments.journal,
                     .strict = arguments.strict};
  if (arguments.limit) options.limit = arguments.limit->Text();
  options.stop = [&stopRequest] { return stopRequest.WasMade(); };
  options.tell = [&](MessageKind kind, std::string_view text) {
    std::optional<Progress::Pause> pause;
    if (progress) pause.emplace(*progress);
    Print(console, kind, text);
  };
  std::optional<RunMetrics> metrics;
  if (arguments.metrics) {
    metrics.emplace(*arguments.metrics, arguments.home, *jobs, console);
    options.leave = [&metrics](int exitCode) { metrics->End(exitCode); };
  }
  const auto show = [&](std::uint64_t total) -> std::shared_ptr<effects::Listener> {
    progress = MakeProgress(arguments.progress, console);
    if (progress && total > 0) progress->Expect(total);
    if (metrics) return metrics->Listen(progress);
    return progress;
  };
  const int exitCode = orvane::RunJobs(*jobs, options,
                                       {.show = show,
                                        .waiting = [] { return std::make_shared<EndsWhenAsked>(); },
                                        .refusedHint = "--no-preflight begins all the same"});
  if (metrics) metrics->End(exitCode);
  return exitCode;
}

}  // namespace orvane::host
