#include <cstddef>
#include <optional>
#include <string>
#include <system_error>

#include "host/commands.hpp"
#include "host/exit_codes.hpp"
#include "host/job_table.hpp"
#include "host/lock/file_lock.hpp"
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
  const std::optional<orvane_lock::Holder> holder = orvane_lock::FileLock::HolderOf(home.Lock());
  for (const JobInfo& job : Jobs()) {
    console.out << job.progId << '\n';
    const std::vector<LoggedRun> runs = LastRuns(home.Logs(), job, kRunsShown);
    if (runs.empty()) console.out << "  no run logged\n";
    for (const LoggedRun& run : runs) {
      console.out << "  started " << run.started;
      if (run.stopped) {
        console.out << "  stopped " << *run.stopped << '\n';
      } else if (&run == &runs.back() && holder && holder->job == job.progId) {
        console.out << "  running, process " << holder->process << " on " << holder->host << '\n';
      } else {
        console.out << "  unfinished\n";
      }
    }
  }
  return kOk;
}

}  // namespace orvane_host
