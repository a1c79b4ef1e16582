#include <string>

#include "effects/journal_line.hpp"
#include "host/commands.hpp"
#include "host/exit_codes.hpp"
#include "host/preview_call.hpp"
#include "host/preview_run.hpp"
#include "host/preview_summary.hpp"

namespace orvane_host {
namespace {

// Prints what a run would write into its journal.
class JsonLines final : public effects::Listener {
 public:
  explicit JsonLines(std::ostream& out) : out_(out) {}

  void Hear(const effects::EntryPtr& entry) override {
    if (const auto* start = std::get_if<effects::RunStart>(&entry->what)) {
      run_ = effects::RunName(entry->time, start->process, start->job);
    }
    line_.clear();
    effects::AppendLine(line_, run_, *entry);
    out_ << line_ << '\n';
  }

 private:
  std::ostream& out_;
  std::string run_;
  std::string line_;
};

int Preview(const Arguments& arguments, const Console& console, const PreviewCall& call) {
  JsonLines lines(console.out);
  int exitCode = kOk;
  for (const JobInfo* job : call.jobs) {
    const PreviewedJob previewed = PreviewJob(call.home, call.site, *job, call.world, arguments.at,
                                              arguments.json ? &lines : nullptr, true);
    if (!arguments.json) PrintSummary(previewed, LastRunsOf(call.home, *job), console.out);
    if (previewed.finished) continue;
    exitCode = kUnfinished;
    console.err << "orvane-host: " << job->progId
                << ": would end without its stop line: " << previewed.endedBy << '\n';
  }
  console.out.flush();
  return exitCode;
}

}  // namespace

int PreviewJobs(const Arguments& arguments, const Console& console) {
  return LookAtRun(arguments, console,
                   [&](const PreviewCall& call) { return Preview(arguments, console, call); });
}

}  // namespace orvane_host
