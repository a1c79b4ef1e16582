#include "bench/support/judge.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>

namespace orvane_bench {
namespace {

constexpr int kShuffles = 10'000;
constexpr double kConfidence = 0.99;

// The samples as multiples of their median, without the one that is nearest to it.
Samples Scatter(Samples samples) {
  const double middle = Median(samples);
  for (double& sample : samples) sample /= middle;
  if (samples.size() > 1) {
    samples.erase(std::min_element(samples.begin(), samples.end(), [](double left, double right) {
      return std::abs(left - 1) < std::abs(right - 1);
    }));
  }
  return samples;
}

bool Keeps(double value, Target target) {
  return target.kind == Target::Kind::AtMost ? value <= target.value : value >= target.value;
}

std::optional<double> Unless(bool withheld, double figure) {
  return withheld ? std::nullopt : std::optional(figure);
}

}  // namespace

double Median(Samples samples) {
  const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  if (samples.size() % 2 == 1) return *middle;
  return (*middle + *std::max_element(samples.begin(), middle)) / 2;
}

double Spread(Samples samples) {
  std::sort(samples.begin(), samples.end());
  const std::size_t quarter = samples.size() / 4;
  return (samples[samples.size() - 1 - quarter] - samples[quarter]) / Median(samples);
}

double ChangeByChance(const Samples& a, const Samples& b) {
  Samples pool = Scatter(a);
  const auto sizeOfA = static_cast<std::ptrdiff_t>(pool.size());
  const Samples ofB = Scatter(b);
  pool.insert(pool.end(), ofB.begin(), ofB.end());
  std::mt19937 random;  // always the same shuffles: the same samples are always judged alike
  Samples changes;
  changes.reserve(kShuffles);
  for (int i = 0; i < kShuffles; ++i) {
    std::shuffle(pool.begin(), pool.end(), random);
    const double ratio =
        Median({pool.begin() + sizeOfA, pool.end()}) / Median({pool.begin(), pool.begin() + sizeOfA});
    changes.push_back(std::max(ratio, 1 / ratio) - 1);
  }
  const auto limit = changes.begin() + static_cast<std::ptrdiff_t>(kConfidence * kShuffles);
  std::nth_element(changes.begin(), limit, changes.end());
  return *limit;
}

const char* NameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Met:
      return "met";
    case Verdict::Missed:
      return "missed";
    case Verdict::Told:
      return "told";
    case Verdict::TooNoisy:
      return "too noisy";
    case Verdict::Same:
      return "same";
    case Verdict::Faster:
      return "faster";
    case Verdict::Slower:
      return "slower";
  }
  return "";
}

Judgement JudgeRatio(const Samples& job, const Samples& peer, std::optional<Target> target) {
  const double ratio = Median(job) / Median(peer);
  const double noise = ChangeByChance(job, peer);
  const std::optional<double> figure = Unless(noise > kMostNoise, ratio);
  if (!target) return {figure ? Verdict::Told : Verdict::TooNoisy, noise, figure};
  // A quiet figure stands for itself; a noisy one must be on the same side wherever chance may have moved it.
  const bool quiet = noise <= kWorthTelling;
  const bool atBest = Keeps(ratio * (1 + noise), *target);
  const bool atWorst = Keeps(ratio / (1 + noise), *target);
  if (!quiet && atBest != atWorst) return {Verdict::TooNoisy, noise, std::nullopt};
  return {Keeps(ratio, *target) ? Verdict::Met : Verdict::Missed, noise, figure};
}

Judgement JudgeLimit(const Samples& samples, Target limit) {
  const auto keeps = [limit](double sample) { return Keeps(sample, limit); };
  const double spread = Spread(samples);
  if (std::all_of(samples.begin(), samples.end(), keeps)) return {Verdict::Met, spread, std::nullopt};
  if (std::none_of(samples.begin(), samples.end(), keeps)) return {Verdict::Missed, spread, std::nullopt};
  return {Verdict::TooNoisy, spread, std::nullopt};
}

Judgement JudgeSamples(const Samples& samples) {
  const double spread = Spread(samples);
  return {spread > kMostNoise ? Verdict::TooNoisy : Verdict::Told, spread, std::nullopt};
}

Judgement JudgeChange(const Samples& before, const Samples& now, double worthTelling) {
  const double ratio = Median(now) / Median(before);
  const double noise = ChangeByChance(before, now);
  if (std::max(ratio, 1 / ratio) - 1 > std::max(noise, worthTelling)) {
    return {ratio < 1 ? Verdict::Faster : Verdict::Slower, noise, ratio};
  }
  if (noise > worthTelling) return {Verdict::TooNoisy, noise, std::nullopt};
  return {Verdict::Same, noise, ratio};
}

}  // namespace orvane_bench
