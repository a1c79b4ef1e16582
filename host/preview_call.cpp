#include "host/preview_call.hpp"

#include <string_view>
#include <thread>

#include "host/named_jobs.hpp"
#include "host/stop_signals.hpp"
#include "run/exit_codes.hpp"

namespace orvane::host {

int LookAtRun(const Arguments& arguments, const Console& console,
              const std::function<int(const PreviewCall& call)>& look) {
  const auto jobs = JobsNamed(arguments.jobs, console.err);
  if (!jobs) return kUsage;
  const EndsWhenAsked endsWhenAsked;
  RunOptions options{.home = arguments.home, .caller = "orvane-host"};
  options.tell = [&console, thread = std::this_thread::get_id()](MessageKind kind, std::string_view text) {
    if (std::this_thread::get_id() == thread) {
      console.out.flush();
    } else {
      // The time is over, and the first thread may be waiting for whoever reads the output: it stays as it
      // is.
      console.err.tie(nullptr);
    }
    Print(console, kind, text);
  };
  return orvane::LookAtRun(*jobs, options, look);
}

}  // namespace orvane::host
