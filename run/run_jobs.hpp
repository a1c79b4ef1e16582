// Several jobs of a suite, one after the other, under one lock.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "effects/recorder.hpp"
#include "run/job_table.hpp"
#include "run/run_job.hpp"

namespace orvane {

// What a program puts around the runs.
struct RunHooks {
  // Made for each job: hears of everything that it does, to show it. `total` is what that will come to as
  // effects::ProgressTotal counts it; 0 where nobody knows. May be null, and give null.
  std::function<std::shared_ptr<effects::Listener>(std::uint64_t total)> show = nullptr;
  // What it gives lives while the lock is waited for. May be null.
  std::function<std::shared_ptr<void>()> waiting = nullptr;
  // Told behind the services that do not answer, unless it is empty.
  std::string refusedHint = {};
};

// As RunJob, the job that `options` names aside.
int RunJobs(const std::vector<const JobInfo*>& jobs, const RunOptions& options, const RunHooks& hooks);

// What the options' function for it hears, if there is one.
void Tell(const RunOptions& options, MessageKind kind, std::string_view text) noexcept;

// Whether the options' function for it says so; a function that fails says so as well. Without one nobody
// asks.
bool IsAskedToStop(const RunOptions& options) noexcept;

// Creates the job by its ProgID and calls it as the options say. Raises what the call raises.
void CallJob(const JobInfo& job, const RunOptions& options);

// Ends the process, the caller's own last words before.
[[noreturn]] void Leave(const RunOptions& options, int exitCode) noexcept;

}  // namespace orvane
