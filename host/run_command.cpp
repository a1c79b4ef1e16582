#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "components/interfaces/job.hpp"
#include "host/commands.hpp"
#include "host/composition.hpp"
#include "host/exit_codes.hpp"
#include "host/job_table.hpp"
#include "host/run_logs.hpp"
#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {
namespace {

struct ErrorLogEntry {
  std::string source;
  std::string message;
};

class JobRunner {
 public:
  JobRunner(const SuiteHome& home, const Console& console) : home_(home), console_(console) {}

  // Runs the job in a runtime of its own, as a service of its own would; false when it left no stop line.
  bool Run(const JobInfo& job, const Vantrel::SiteFile& site) {
    const RunLogWatch watch(home_.Logs(), job);
    const auto start = std::chrono::steady_clock::now();
    const std::string failure = Call(job, site);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;

    const bool stopped = watch.SawStopLine();
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.1f s", taken.count());
    console_.out << job.progId << (stopped ? ": finished in " : ": ended without its stop line after ")
                 << seconds << std::endl;
    if (!failure.empty()) console_.err << "orvane-host: " << job.progId << ": " << failure << '\n';
    PrintEntries(job);
    return stopped;
  }

  bool SawErrors() const { return sawErrors_; }

 private:
  // What escaped the job, which should be nothing.
  std::string Call(const JobInfo& job, const Vantrel::SiteFile& site) {
    try {
      automation::Runtime runtime;
      RegisterSuite(runtime, home_, site, [this](std::string_view source, std::string_view message) {
        entries_.push_back({std::string(source), std::string(message)});
      });
      const automation::RuntimeScope scope(runtime);
      automation::CreateObject<OrvaneProcess::Job>(job.progId)->Run();
      return {};
    } catch (const automation::Error& error) {
      return error.Description() + " (" + std::to_string(error.Number()) + ")";
    } catch (const std::exception& error) {
      return error.what();
    }
  }

  void PrintEntries(const JobInfo& job) {
    constexpr std::size_t kMostShown = 20;
    for (std::size_t i = 0; i < entries_.size() && i < kMostShown; ++i) {
      console_.err << "warning: " << job.progId << ": " << OneLine(entries_[i].message) << '\n';
    }
    if (entries_.size() > kMostShown) {
      console_.err << "warning: " << job.progId << ": " << entries_.size() - kMostShown << " more in "
                   << home_.ErrorLog().string() << '\n';
    }
    console_.err.flush();
    sawErrors_ = sawErrors_ || !entries_.empty();
    entries_.clear();
  }

  static std::string OneLine(const std::string& text) {
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

  const SuiteHome& home_;
  const Console& console_;
  std::vector<ErrorLogEntry> entries_;
  bool sawErrors_ = false;
};

}  // namespace

int RunJobs(const Arguments& arguments, const Console& console) {
  std::vector<const JobInfo*> jobs;
  for (const std::string& name : arguments.jobs) {
    const JobInfo* job = FindJob(name);
    if (job == nullptr) {
      const automation::Error unknown(automation::ErrorNumber::CannotCreateObject);
      console.err << "orvane-host: " << name << ": " << unknown.Description() << " (" << unknown.Number()
                  << "); \"orvane-host list\" shows the jobs\n";
      return kUsage;
    }
    jobs.push_back(job);
  }

  const SuiteHome home(arguments.home);
  JobRunner runner(home, console);
  bool allStopped = true;
  try {
    // Read for each job: an operator may change the configuration while a long job runs.
    for (const JobInfo* job : jobs) {
      const Vantrel::SiteFile site = Vantrel::SiteFile::Read(home.SiteConfiguration());
      site.Connection("Orvane", "Orvane");
      allStopped = runner.Run(*job, site) && allStopped;
    }
  } catch (const automation::Error& error) {
    console.err << "orvane-host: " << error.Description() << '\n';
    return kConfiguration;
  }
  if (!allStopped) return kUnfinished;
  return arguments.strict && runner.SawErrors() ? kErrorsLogged : kOk;
}

}  // namespace orvane_host
