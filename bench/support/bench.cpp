#include "bench/support/bench.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iterator>
#include <random>
#include <stdexcept>
#include <utility>

#include "bench/support/part.hpp"

namespace orvane_bench {
namespace {

constexpr char kPartOption[] = "--part";
constexpr double kInstructionsWorthTelling = 0.01;  // they hardly vary

std::string FromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

Build::Build(std::filesystem::path folder, std::string program, Environment environment, bool counted)
    : folder_(std::move(folder)),
      program_(std::move(program)),
      environment_(std::move(environment)),
      counted_(counted) {}

Measured Build::Part(const std::vector<std::string>& words) const {
  std::vector<std::string> arguments = {kPartOption};
  arguments.insert(arguments.end(), words.begin(), words.end());
  return Run(program_, arguments);
}

Measured Build::Run(const std::string& name, const std::vector<std::string>& arguments) const {
  return counted_ ? RunCounted(folder_ / name, arguments, environment_)
                  : RunMeasured(folder_ / name, arguments, environment_);
}

Measured RunByHost(const Build& build, const std::filesystem::path& home, const std::string& job,
                   bool recorded) {
  std::vector<std::string> words{"run", "--home", home.string(), "--strict", "--no-preflight", job};
  if (!recorded) words.insert(words.end(), {"--journal", "off"});
  words.insert(words.end(), {"--progress", recorded ? "always" : "never"});
  return build.Run("orvane-host", words);
}

Measured PreviewByHost(const Build& build, const std::filesystem::path& home, const std::string& job) {
  return build.Run("orvane-host", {"preview", "--home", home.string(), job});
}

Samples Beyond(const Samples& samples, const Samples& others) {
  Samples beyond;
  std::transform(samples.begin(),
                 samples.begin() + static_cast<std::ptrdiff_t>(std::min(samples.size(), others.size())),
                 others.begin(), std::back_inserter(beyond), std::minus<>());
  return beyond;
}

Samples Taken::Of(const std::string& trial, double Measured::*member) const {
  Samples samples;
  if (const auto found = all_.find(trial); found != all_.end()) {
    std::transform(found->second.begin(), found->second.end(), std::back_inserter(samples),
                   [member](const Measured& measured) { return measured.*member; });
  }
  return samples;
}

Options Options::Parse(const std::vector<std::string>& arguments) {
  Options options;
  options.commit = FromEnvironment("ORVANE_BENCH_COMMIT");
  for (auto word = arguments.begin(); word != arguments.end(); ++word) {
    const auto value = [&] {
      if (std::next(word) == arguments.end()) throw std::invalid_argument(*word + " needs a value");
      return *++word;
    };
    if (*word == "--rounds") {
      options.rounds = std::stoi(value());
    } else if (*word == "--only") {
      options.only = value();
    } else if (*word == "--out") {
      options.out = value();
    } else if (*word == "--against") {
      options.against = value();
    } else if (*word == "--instructions") {
      options.instructions = true;
    } else if (*word == "--slow") {
      options.slow = value();
    } else {
      std::size_t end = 0;
      options.sizes.push_back(std::stoll(*word, &end));
      if (end != word->size()) throw std::invalid_argument("not a size: " + *word);
    }
  }
  return options;
}

Bench::Bench(std::string program, Options options)
    : program_(std::move(program)), options_(std::move(options)), report_(options_.out, options_.commit) {}

std::int64_t Bench::Size(std::size_t place, std::int64_t usual, std::int64_t counted) const {
  if (place < options_.sizes.size()) return options_.sizes[place];
  return options_.instructions ? counted : usual;
}

void Bench::RequireWhatWasAskedFor() const {
  if (options_.only.empty() || !report_.IsEmpty()) return;
  throw std::invalid_argument("--only " + options_.only + " gives no figure here");
}

int Bench::PeerRuns(int rounds) const {
  return Comparing() || options_.instructions ? 0 : 1 + Rounds(rounds);
}

int Bench::JobRuns(int rounds) const {
  return (options_.instructions ? 1 : 1 + Rounds(rounds)) * (Comparing() ? 2 : 1);
}

Taken Bench::Take(const std::string& what, const std::vector<Trial>& trials, int rounds) {
  const Environment slow =
      options_.slow.empty() ? Environment{} : Environment{std::string(kSlowVariable) + "=" + options_.slow};
  const Build now(ProgramFolder(), program_, slow, options_.instructions);
  const Build other(options_.against, program_, {}, options_.instructions);
  const Build plain(ProgramFolder(), program_, {}, false);
  const bool jobsOnly = Comparing() || options_.instructions;

  struct Turn {
    const Trial* trial;
    const Build* build;
    Taken* taken;
  };
  Taken ofNow;
  Taken ofOther;
  std::vector<Turn> turns;
  for (const Trial& trial : trials) {
    const bool job = trial.kind == Trial::Kind::Job;
    if (!job && jobsOnly) continue;
    turns.push_back({&trial, job ? &now : &plain, &ofNow});
    if (Comparing()) turns.push_back({&trial, &other, &ofOther});
  }
  std::mt19937 random(std::random_device{}());
  if (!options_.instructions) {
    for (const Turn& turn : turns) turn.trial->once(*turn.build);
  }
  const int count = options_.instructions ? 1 : Rounds(rounds);
  for (int round = 0; round < count; ++round) {
    std::shuffle(turns.begin(), turns.end(), random);
    for (const Turn& turn : turns) turn.taken->Add(turn.trial->name, turn.trial->once(*turn.build));
  }
  if (!jobsOnly) return ofNow;
  ReportJobs(what, trials, ofNow, ofOther);
  return {};
}

void Bench::ReportJobs(const std::string& what, const std::vector<Trial>& trials, const Taken& now,
                       const Taken& before) {
  const auto report = [&](const std::string& name, const std::string& unit, const Samples& ofNow,
                          const Samples& ofBefore) {
    const double worthTelling = options_.instructions ? kInstructionsWorthTelling : kWorthTelling;
    const Judgement judged =
        ofBefore.empty() ? JudgeSamples(ofNow) : JudgeChange(ofBefore, ofNow, worthTelling);
    report_.Add({name, unit, ofNow, ofBefore, std::nullopt, judged});
  };
  for (const Trial& trial : trials) {
    if (trial.kind != Trial::Kind::Job) continue;
    const std::string name = what + ", " + trial.name;
    if (options_.instructions) {
      report(name, "instructions", now.Instructions(trial.name), before.Instructions(trial.name));
    } else {
      report(name, "s", now.Own(trial.name), before.Own(trial.name));
      report(name + ", peak memory", "MiB", now.Peak(trial.name), before.Peak(trial.name));
    }
  }
}

void Bench::Tell(const std::string& name, const std::string& unit, const Samples& samples) {
  if (!samples.empty()) report_.Add({name, unit, samples, {}, std::nullopt, JudgeSamples(samples)});
}

void Bench::Limit(const std::string& name, const std::string& unit, const Samples& samples, Target limit) {
  if (!samples.empty()) report_.Add({name, unit, samples, {}, limit, JudgeLimit(samples, limit)});
}

void Bench::Ratio(const std::string& name, const Samples& job, const Samples& peer,
                  std::optional<Target> target, const std::string& unit) {
  if (job.empty() || peer.empty()) return;
  report_.Add({name, unit, job, peer, target, JudgeRatio(job, peer, target)});
}

int RunProgram(int argc, char** argv, const Parts& parts, const std::function<void(Bench&)>& measure) {
  const std::string program = std::filesystem::path(argv[0]).filename();
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() >= 2 && words[0] == kPartOption) {
      const auto part = parts.find(words[1]);
      if (part == parts.end()) throw std::invalid_argument("no part " + words[1]);
      part->second({words.begin() + 2, words.end()});
      return 0;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a run takes minutes: each figure when it is known
    Bench bench(program, Options::Parse(words));
    measure(bench);
    bench.RequireWhatWasAskedFor();
    return bench.ExitCode();
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "%s: %s\n", program.c_str(), error.what());
    return 64;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", program.c_str(), error.what());
    return 70;
  }
}

}  // namespace orvane_bench
