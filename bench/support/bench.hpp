// The frame of a bench program: its options, rounds in turns, and what is done with the samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/child_process.hpp"
#include "bench/support/judge.hpp"
#include "bench/support/report.hpp"

namespace orvane_bench {

// A folder of programs that were built from one revision.
class Build {
 public:
  Build(std::filesystem::path folder, std::string program, Environment environment, bool counted);

  // A part of this bench program, in a process of its own; see part.hpp.
  Measured Part(const std::vector<std::string>& words) const;
  // Another program of the build.
  Measured Run(const std::string& name, const std::vector<std::string>& arguments) const;

 private:
  std::filesystem::path folder_;
  std::string program_;
  Environment environment_;
  bool counted_;
};

// Runs a job by the host, as an operator does; with its journal and progress, or with neither.
Measured RunByHost(const Build& build, const std::filesystem::path& home, const std::string& job,
                   bool recorded);

// Previews it, for people to read.
Measured PreviewByHost(const Build& build, const std::filesystem::path& home, const std::string& job);

struct Trial {
  // Only jobs are held against another build, and only their instructions are counted.
  enum class Kind { Job, Peer };
  std::string name;
  Kind kind = Kind::Job;
  // Makes everything ready, measures once, checks what came out and throws when it is wrong. May be called
  // any number of times.
  std::function<Measured(const Build&)> once;
};

// What was measured, by the trials' names; empty when there is nothing to be held against a target.
class Taken {
 public:
  void Add(const std::string& trial, const Measured& measured) { all_[trial].push_back(measured); }
  Samples Whole(const std::string& trial) const { return Of(trial, &Measured::seconds); }
  Samples Own(const std::string& trial) const { return Of(trial, &Measured::ownSeconds); }
  Samples Peak(const std::string& trial) const { return Of(trial, &Measured::peakMebibytes); }
  Samples Instructions(const std::string& trial) const { return Of(trial, &Measured::instructions); }

 private:
  Samples Of(const std::string& trial, double Measured::*member) const;

  std::map<std::string, std::vector<Measured>> all_;
};

struct Options {
  std::vector<std::int64_t> sizes;
  std::string only;               // a part of the program's figures
  int rounds = 0;                 // 0: as many as the program thinks right
  std::filesystem::path out;      // for lines of JSON
  std::filesystem::path against;  // the programs of another build
  bool instructions = false;
  std::string slow;  // see part.hpp
  std::string commit;

  static Options Parse(const std::vector<std::string>& arguments);
};

class Bench {
 public:
  Bench(std::string program, Options options);

  // The size given at that place of the command line; `usual` without one, `counted` when instructions are
  // counted, since that takes fifty times as long.
  std::int64_t Size(std::size_t place, std::int64_t usual, std::int64_t counted) const;
  bool Wanted(std::string_view part) const { return options_.only.empty() || options_.only == part; }
  // How often Take() will call one of the peers, and one of the jobs.
  int PeerRuns(int rounds) const;
  int JobRuns(int rounds) const;

  // Calls the trials in turns, in an order that is drawn anew for each round, after one round for warming
  // that does not count.
  //
  // With --against only the jobs take part, once in each build, and with --instructions each of them once:
  // what was measured is reported under `what` then, build against build, and the result is empty.
  Taken Take(const std::string& what, const std::vector<Trial>& trials, int rounds);

  // Figures are reported unless there are no samples.
  void Tell(const std::string& name, const std::string& unit, const Samples& samples);
  void Limit(const std::string& name, const std::string& unit, const Samples& samples, Target limit);
  void Ratio(const std::string& name, const Samples& job, const Samples& peer, std::optional<Target> target,
             const std::string& unit = "s");

  // Raises std::invalid_argument when --only has left nothing to measure: that would look like targets met.
  void RequireWhatWasAskedFor() const;
  int ExitCode() const { return report_.ExitCode(); }

 private:
  bool Comparing() const { return !options_.against.empty(); }
  int Rounds(int usual) const { return options_.rounds > 0 ? options_.rounds : usual; }
  void ReportJobs(const std::string& what, const std::vector<Trial>& trials, const Taken& now,
                  const Taken& before);

  std::string program_;
  Options options_;
  Report report_;
};

// What each sample is beyond the other of its round; empty where there are none.
Samples Beyond(const Samples& samples, const Samples& others);

using Parts = std::map<std::string, std::function<void(const std::vector<std::string>& words)>, std::less<>>;

// The program's main: runs the part that it was called for, or all of `measure`.
int RunProgram(int argc, char** argv, const Parts& parts, const std::function<void(Bench&)>& measure);

}  // namespace orvane_bench
