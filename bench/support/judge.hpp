// What samples of two programs, taken in turns, allow to be said.
#pragma once

#include <optional>
#include <vector>

namespace orvane_bench {

using Samples = std::vector<double>;

// REQUIRES: there are samples.
double Median(Samples samples);

// The width of the middle half of the samples, as a share of their median.
double Spread(Samples samples);

// How far apart the medians of two sets would lie by chance, as a share, if they differed in nothing but
// their labels: exceeded once in a hundred shuffles of the labels. Each set is divided by its own median
// first, or a true difference would count as chance, and goes without the sample that is the median, which is
// now 1 whatever the noise: small sets would look quieter than they are.
double ChangeByChance(const Samples& a, const Samples& b);

// Differences below this are not worth telling.
constexpr double kWorthTelling = 0.05;
// Medians that chance alone moves further than this are not given as figures.
constexpr double kMostNoise = 0.25;

struct Target {
  enum class Kind { AtMost, AtLeast };
  Kind kind = Kind::AtMost;
  double value = 0;
};
constexpr Target AtMost(double value) {
  return {Target::Kind::AtMost, value};
}
constexpr Target AtLeast(double value) {
  return {Target::Kind::AtLeast, value};
}

enum class Verdict {
  Met,
  Missed,
  Told,      // a figure without a target
  TooNoisy,  // chance might have decided: measure again on a quieter machine, or with more rounds
  Same,
  Faster,
  Slower
};
const char* NameOf(Verdict verdict);

struct Judgement {
  Verdict verdict = Verdict::TooNoisy;
  double noise = 0;             // ChangeByChance, or the spread of a single set
  std::optional<double> ratio;  // of the medians; absent when the noise does not allow a figure
};

// The ratio of `job` to `peer` against a target.
Judgement JudgeRatio(const Samples& job, const Samples& peer, std::optional<Target> target);

// One set, each sample of which is to keep to the limit, as memory is. Samples on both sides are noise.
Judgement JudgeLimit(const Samples& samples, Target limit);

// One set without a target.
Judgement JudgeSamples(const Samples& samples);

// The same job of two builds; the ratio is that of `now` to `before`.
Judgement JudgeChange(const Samples& before, const Samples& now, double worthTelling = kWorthTelling);

}  // namespace orvane_bench
