// What a call of "run" leaves for a monitoring system, in Prometheus' text format.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "effects/recorder.hpp"
#include "host/commands.hpp"
#include "run/job_table.hpp"

namespace orvane::host {

struct JobMetrics {
  std::string job = {};  // the class name
  int exitCode = 0;
  // Of a job that was begun. Seconds, since 1970 in UTC.
  struct Run {
    double started = 0;
    double ended = 0;
    double duration = 0;
    effects::Counts counts = {};
  };
  std::optional<Run> run = std::nullopt;
  std::optional<double> oldestDueReminder = std::nullopt;  // seconds that it has been due; 0: none is
};

std::string MetricsText(const std::vector<JobMetrics>& jobs);

class RunMetrics {
 public:
  // `jobs` are those of the call. What is wrong with the file is told once, and keeps no job from running.
  RunMetrics(std::filesystem::path file, std::filesystem::path home, const std::vector<const JobInfo*>& jobs,
             const Console& console);
  ~RunMetrics();

  // Hears of one job's run, and passes everything on to `other`, which may be null. The file is replaced when
  // the run ends.
  std::shared_ptr<effects::Listener> Listen(std::shared_ptr<effects::Listener> other);

  // Replaces the file; jobs that were not begun get the exit code of the call.
  void End(int exitCode);

 private:
  class Listener;

  JobMetrics& Of(const std::string& job);
  void Write();

  const std::filesystem::path file_;
  const std::filesystem::path home_;
  const Console& console_;
  std::vector<JobMetrics> jobs_;
  std::vector<std::string> ended_;
  bool hasFailed_ = false;
};

}  // namespace orvane::host
