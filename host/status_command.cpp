#include <cstddef>
#include <string>
#include <system_error>

#include "host/commands.hpp"
#include "host/exit_codes.hpp"
#include "host/job_table.hpp"
#include "host/run_logs.hpp"
#include "host/suite_home.hpp"

namespace orvane_host {

int ListJobs(const Console& console) {
  for (const JobInfo& job : Jobs()) console.out << job.progId << '\n';
  return kOk;
}

int ShowStatus(const Arguments& arguments, const Console& console) {
  constexpr std::size_t kRunsShown = 5;
  const SuiteHome home(arguments.home);
  std::error_code failed;
  if (!std::filesystem::is_directory(home.Path(), failed)) {
    console.err << "orvane-host: " << home.Path().string() << ": no such directory\n";
    return kConfiguration;
  }
  for (const JobInfo& job : Jobs()) {
    console.out << job.progId << '\n';
    const std::vector<LoggedRun> runs = LastRuns(home.Logs(), job, kRunsShown);
    if (runs.empty()) console.out << "  no run logged\n";
    for (const LoggedRun& run : runs) {
      console.out << "  started " << run.started;
      if (run.stopped) {
        console.out << "  stopped " << *run.stopped << '\n';
      } else {
        console.out << "  unfinished\n";
      }
    }
  }
  return kOk;
}

}  // namespace orvane_host
