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

class JobRunner {
 public:
  JobRunner(const SuiteHome& home, const Console& console) : home_(home), console_(console) {}

  // Hears of every entry that the job being run makes in the error log.
  Vantrel::LogListener Listener() {
    return [this](std::string_view, std::string_view message) {
      ++entryCount_;
      if (entries_.size() < kMostShown) entries_.emplace_back(message);
    };
  }

  // False when the job left no stop line.
  bool Run(const JobInfo& job, automation::Runtime& runtime) {
    const RunLogWatch watch(home_.Logs(), job);
    const auto start = std::chrono::steady_clock::now();
    const std::string failure = Call(job, runtime);
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
  static std::string Call(const JobInfo& job, automation::Runtime& runtime) {
    try {
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
    for (const std::string& entry : entries_) {
      console_.err << "warning: " << job.progId << ": " << OneLine(entry) << '\n';
    }
    if (entryCount_ > entries_.size()) {
      console_.err << "warning: " << job.progId << ": " << entryCount_ - entries_.size() << " more in "
                   << home_.ErrorLog().string() << '\n';
    }
    console_.err.flush();
    sawErrors_ = sawErrors_ || entryCount_ > 0;
    entries_.clear();
    entryCount_ = 0;
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
  static constexpr std::size_t kMostShown = 20;
  std::vector<std::string> entries_;  // of the job being run, the first ones
  std::size_t entryCount_ = 0;
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
  for (const JobInfo* job : jobs) {
    // A runtime of its own for each job, as each would have in a service of its own.
    automation::Runtime runtime;
    try {
      const Vantrel::SiteFile site = Vantrel::SiteFile::Read(home.SiteConfiguration());
      site.Connection("Orvane", "Orvane");
      RegisterSuite(runtime, home, site, runner.Listener());
    } catch (const automation::Error& error) {
      console.err << "orvane-host: " << error.Description() << '\n';
      return kConfiguration;
    }
    allStopped = runner.Run(*job, runtime) && allStopped;
  }
  if (!allStopped) return kUnfinished;
  return arguments.strict && runner.SawErrors() ? kErrorsLogged : kOk;
}

}  // namespace orvane_host
