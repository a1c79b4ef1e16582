#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <system_error>

#include "host/commands.hpp"
#include "host/named_jobs.hpp"
#include "host/stopped_runs.hpp"
#include "platform/automation/iso_text.hpp"
#include "platform/automation/runtime.hpp"
#include "run/exit_codes.hpp"
#include "run/job_table.hpp"
#include "run/lock/file_lock.hpp"
#include "run/run_logs.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane::host {
namespace {

using orvane_lock::FileLock;
using orvane_lock::Holder;

constexpr std::size_t kRunsShown = 5;
// A job that is run every few minutes may have failed for a while.
constexpr std::size_t kRunsLookedAt = 100;

struct JobStatus {
  const JobInfo* job = nullptr;
  std::vector<LoggedRun> runs;
  std::optional<Holder> running;  // who runs the job now
  bool startLineDue = false;      // it has begun, and its log does not say so yet
};

automation::DateTime LocalTime(std::time_t moment) {
  std::tm parts{};
  localtime_r(&moment, &parts);
  return automation::DateTime::FromParts({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                                          parts.tm_hour, parts.tm_min, std::min(parts.tm_sec, 59)});
}

// When the holder began its job, by the local clock; nothing for one on another machine, whose clock and zone
// are its own.
std::optional<automation::DateTime> BeganAt(const Holder& holder) {
  std::tm parts{};
  if (holder.host != orvane_lock::ThisProcess({}).host ||
      std::sscanf(holder.since.c_str(), "%d-%d-%d %d:%d:%d", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                  &parts.tm_hour, &parts.tm_min, &parts.tm_sec) != 6) {
    return std::nullopt;
  }
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  return LocalTime(timegm(&parts));
}

JobStatus StatusOf(const JobInfo& job, const SuiteHome& home, const std::optional<Holder>& holder) {
  JobStatus status;
  status.job = &job;
  status.runs = LastRuns(home.Logs(), job, kRunsLookedAt);
  if (!holder || holder->job != job.progId) return status;
  // The holder's own run is one that started after it took its turn; any other is an earlier one.
  const LoggedRun* last = status.runs.empty() ? nullptr : &status.runs.back();
  const std::optional<automation::DateTime> began = BeganAt(*holder);
  const bool isItsOwn = last != nullptr && (!began || !last->started.at || *last->started.at >= *began);
  status.startLineDue = !isItsOwn;
  if (!isItsOwn || !last->stopped) status.running = holder;
  return status;
}

std::vector<JobStatus> StatusOfAll(const std::vector<const JobInfo*>& jobs, const SuiteHome& home) {
  constexpr int kTries = 3;  // runs may begin and end while their logs are read
  std::vector<JobStatus> all;
  std::optional<Holder> holder = FileLock::HolderOf(home.Lock());
  for (int i = 0; i < kTries; ++i) {
    all.clear();
    for (const JobInfo* job : jobs) all.push_back(StatusOf(*job, home, holder));
    const std::optional<Holder> now = FileLock::HolderOf(home.Lock());
    if (now == holder) break;
    holder = now;
  }
  return all;
}

std::string StateOf(const JobStatus& status, const LoggedRun& run, const StoppedRuns& stopped) {
  if (run.stopped) return "finished";
  const bool isLast = &run == &status.runs.back();
  if (isLast && status.running && !status.startLineDue) return "running";
  const auto how = run.started.at ? stopped.HowStopped(*status.job, *run.started.at) : std::nullopt;
  return how.value_or("unfinished");
}

void Print(const JobStatus& status, const StoppedRuns& stopped, const Console& console) {
  console.out << status.job->progId << '\n';
  if (status.runs.empty() && !status.running) console.out << "  no run logged\n";
  const std::size_t skipped = status.runs.size() - std::min(status.runs.size(), kRunsShown);
  const auto running = [&status] {
    return "running, process " + std::to_string(status.running->process) + " on " + status.running->host;
  };
  for (std::size_t i = skipped; i < status.runs.size(); ++i) {
    const LoggedRun& run = status.runs[i];
    const std::string state = StateOf(status, run, stopped);
    console.out << "  started " << run.started.text << "  ";
    if (run.stopped) {
      console.out << "stopped " << run.stopped->text << '\n';
    } else {
      console.out << (state == "running" ? running() : state) << '\n';
    }
  }
  if (status.startLineDue) console.out << "  " << running() << ", no start line yet\n";
}

nlohmann::ordered_json TimeOf(const LoggedTime& time) {
  if (!time.at) return time.text;
  return automation::IsoText(time.at->WithoutFraction());
}

void PrintJson(const JobStatus& status, const StoppedRuns& stopped, const std::optional<bool>& young,
               const Console& console) {
  nlohmann::ordered_json line;
  line["v"] = 1;
  line["job"] = status.job->progId;
  line["runs"] = nlohmann::ordered_json::array();
  const std::size_t skipped = status.runs.size() - std::min(status.runs.size(), kRunsShown);
  for (std::size_t i = skipped; i < status.runs.size(); ++i) {
    const LoggedRun& run = status.runs[i];
    line["runs"].push_back({{"started", TimeOf(run.started)},
                            {"stopped", run.stopped ? TimeOf(*run.stopped) : nlohmann::ordered_json()},
                            {"state", StateOf(status, run, stopped)}});
  }
  if (status.running) {
    line["running"] = {{"process", status.running->process},
                       {"host", status.running->host},
                       {"since", status.running->since}};
  }
  if (young) line["youngEnough"] = *young;
  constexpr int kNoIndent = -1;
  console.out << line.dump(kNoIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

bool HasFinishedSince(const JobStatus& status, automation::DateTime earliest) {
  return std::any_of(status.runs.begin(), status.runs.end(), [earliest](const LoggedRun& run) {
    return run.stopped && run.stopped->at && *run.stopped->at >= earliest;
  });
}

}  // namespace

int ListJobs(const Arguments&, const Console& console) {
  for (const JobInfo& job : Jobs()) console.out << job.progId << '\n';
  return kOk;
}

int ShowStatus(const Arguments& arguments, const Console& console) {
  const std::vector<const JobInfo*> jobs = JobsNamed(arguments.jobs);
  const SuiteHome home(arguments.home);
  std::error_code failed;
  if (!std::filesystem::is_directory(home.Path(), failed)) {
    console.err << "orvane-host: " << home.Path().string() << ": no such directory\n";
    return kConfiguration;
  }
  bool allYoung = true;
  const StoppedRuns stopped(home.Journals());
  for (const JobStatus& status : StatusOfAll(jobs, home)) {
    std::optional<bool> young;
    if (arguments.maxAge) {
      constexpr std::chrono::hours kLongerThanAnySuite = std::chrono::days(366 * 1000);
      const auto age = std::min(*arguments.maxAge, kLongerThanAnySuite);
      young = HasFinishedSince(status, automation::AddHours(LocalTime(std::time(nullptr)), -age.count()));
      allYoung = allYoung && *young;
    }
    arguments.json ? PrintJson(status, stopped, young, console) : Print(status, stopped, console);
    if (young == false) {
      console.err << "orvane-host: " << status.job->progId << ": no run has finished in the last "
                  << arguments.maxAge->count() << " hours\n";
    }
  }
  return allYoung ? kOk : kErrorsLogged;
}

}  // namespace orvane::host
