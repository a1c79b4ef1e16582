#include "bench/support/judge.hpp"

#include <gtest/gtest.h>

#include <random>

namespace {

using orvane_bench::AtLeast;
using orvane_bench::AtMost;
using orvane_bench::ChangeByChance;
using orvane_bench::JudgeChange;
using orvane_bench::JudgeLimit;
using orvane_bench::Judgement;
using orvane_bench::JudgeRatio;
using orvane_bench::JudgeSamples;
using orvane_bench::Median;
using orvane_bench::Samples;
using orvane_bench::Spread;
using orvane_bench::Verdict;

const Samples kQuiet = {1.00, 1.01, 0.99, 1.005, 0.995};
const Samples kRestless = {1.0, 1.9, 0.7, 1.4, 0.6};

Samples Times(Samples samples, double factor) {
  for (double& sample : samples) sample *= factor;
  return samples;
}

TEST(JudgeTest, TheMedianIsTheMiddleOfTheSamplesAndNotTheBest) {
  EXPECT_DOUBLE_EQ(Median({3, 1, 2}), 2);
  EXPECT_DOUBLE_EQ(Median({4, 1, 2, 3}), 2.5);
  EXPECT_DOUBLE_EQ(Median({7}), 7);
}

TEST(JudgeTest, TheSpreadIsTheMiddleHalfAsAShareOfTheMedian) {
  EXPECT_DOUBLE_EQ(Spread({10, 9, 11, 10, 30}), 0.1);  // 10 to 11
  EXPECT_DOUBLE_EQ(Spread({8, 10, 12}), 0.4);
  EXPECT_DOUBLE_EQ(Spread({5}), 0);
}

TEST(JudgeTest, TheSameJobIsTheSame) {
  const Judgement judged = JudgeChange(kQuiet, Times(kQuiet, 1.001));
  EXPECT_EQ(judged.verdict, Verdict::Same);
  EXPECT_NEAR(judged.ratio.value(), 1.001, 1e-9);
}

TEST(JudgeTest, TenPercentSlowerOnAQuietMachineIsSlower) {
  const Judgement judged = JudgeChange(kQuiet, Times(kQuiet, 1.1));
  EXPECT_EQ(judged.verdict, Verdict::Slower);
  EXPECT_NEAR(judged.ratio.value(), 1.1, 1e-9);
}

TEST(JudgeTest, TenPercentFasterOnAQuietMachineIsFaster) {
  EXPECT_EQ(JudgeChange(kQuiet, Times(kQuiet, 1 / 1.1)).verdict, Verdict::Faster);
}

TEST(JudgeTest, ARestlessMachineGivesNoFigure) {
  const Judgement judged = JudgeChange(kRestless, Times(kRestless, 1.1));
  EXPECT_EQ(judged.verdict, Verdict::TooNoisy);
  EXPECT_FALSE(judged.ratio.has_value());
}

TEST(JudgeTest, AChangeThatStandsOutOfTheNoiseIsTold) {
  EXPECT_EQ(JudgeChange(kRestless, Times(kRestless, 10)).verdict, Verdict::Slower);
}

TEST(JudgeTest, ASmallerDifferenceCanBeWorthTelling) {
  EXPECT_EQ(JudgeChange({1000}, {1020}, 0.01).verdict, Verdict::Slower);
  EXPECT_EQ(JudgeChange({1000}, {1005}, 0.01).verdict, Verdict::Same);
}

TEST(JudgeTest, ATrueDifferenceIsNotTakenForChance) {
  EXPECT_LT(ChangeByChance(kQuiet, Times(kQuiet, 3)), 0.05);
}

TEST(JudgeTest, OneLuckySampleChangesNoVerdict) {
  Samples lucky = Times(kQuiet, 1.2);
  lucky[2] = 0.5;
  EXPECT_EQ(JudgeChange(kQuiet, lucky).verdict, Verdict::Slower);
}

TEST(JudgeTest, ARatioIsHeldAgainstItsTarget) {
  EXPECT_EQ(JudgeRatio(Times(kQuiet, 1.4), kQuiet, AtMost(1.5)).verdict, Verdict::Met);
  EXPECT_EQ(JudgeRatio(Times(kQuiet, 1.6), kQuiet, AtMost(1.5)).verdict, Verdict::Missed);
  EXPECT_EQ(JudgeRatio(Times(kQuiet, 6), kQuiet, AtLeast(5)).verdict, Verdict::Met);
  EXPECT_EQ(JudgeRatio(Times(kQuiet, 4), kQuiet, AtLeast(5)).verdict, Verdict::Missed);
  EXPECT_EQ(JudgeRatio(Times(kQuiet, 4), kQuiet, {}).verdict, Verdict::Told);
}

TEST(JudgeTest, ANoisyRatioNearItsTargetIsNeitherMetNorMissed) {
  const Judgement judged = JudgeRatio(Times(kRestless, 1.4), kRestless, AtMost(1.5));
  EXPECT_EQ(judged.verdict, Verdict::TooNoisy);
  EXPECT_FALSE(judged.ratio.has_value());
  EXPECT_EQ(JudgeRatio(kRestless, kRestless, {}).verdict, Verdict::TooNoisy);
}

TEST(JudgeTest, ANoisyRatioFarFromItsTargetHasAVerdictButNoFigure) {
  const Judgement missed = JudgeRatio(Times(kRestless, 20), kRestless, AtMost(1.5));
  EXPECT_EQ(missed.verdict, Verdict::Missed);
  EXPECT_FALSE(missed.ratio.has_value());
  EXPECT_EQ(JudgeRatio(Times(kRestless, 0.05), kRestless, AtMost(1.5)).verdict, Verdict::Met);
}

TEST(JudgeTest, ALimitIsKeptByEverySampleOrByNone) {
  EXPECT_EQ(JudgeLimit({100, 120, 127}, AtMost(128)).verdict, Verdict::Met);
  EXPECT_EQ(JudgeLimit({129, 150}, AtMost(128)).verdict, Verdict::Missed);
  EXPECT_EQ(JudgeLimit({100, 150}, AtMost(128)).verdict, Verdict::TooNoisy);
}

TEST(JudgeTest, SamplesAllOverThePlaceGiveNoFigure) {
  EXPECT_EQ(JudgeSamples(kQuiet).verdict, Verdict::Told);
  EXPECT_EQ(JudgeSamples(kRestless).verdict, Verdict::TooNoisy);
}

TEST(JudgeTest, HardlyAnyUnchangedJobIsCalledChanged) {
  std::mt19937 random(7);
  std::normal_distribution<double> scatter(1, 0.03);
  const auto samples = [&] {
    Samples drawn(5);
    for (double& sample : drawn) sample = scatter(random);
    return drawn;
  };
  int changed = 0;
  constexpr int kTrials = 100;
  for (int i = 0; i < kTrials; ++i) {
    const Samples before = samples();
    const Verdict verdict = JudgeChange(before, samples()).verdict;
    changed += verdict == Verdict::Slower || verdict == Verdict::Faster ? 1 : 0;
  }
  EXPECT_LE(changed, 5);
}

}  // namespace
