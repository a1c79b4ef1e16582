// The power fails at every point of a run, on a disk that keeps of what was not synced nothing (seed 0) or
// whatever it likes. Nothing is lost, nothing is deleted that was not to be, and the next run does the rest.
//
// A sample of the points and seeds, or all of them where ORVANE_SOAK is set.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <set>
#include <tuple>
#include <utility>

#include "tests/e2e/power_cuts/scenario.hpp"
#include "tests/power/device.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

bool Soaks() {
  return std::getenv("ORVANE_SOAK") != nullptr;
}

// Without what SQLite maps: the log cannot know it, and nobody reads it after a power cut.
std::map<std::string, std::string> Bytes(const Tree& tree) {
  std::map<std::string, std::string> bytes;
  for (const auto& [path, item] : tree) {
    if (!path.ends_with("-shm")) bytes[path] = item.bytes;
  }
  return bytes;
}

// The paths at which two disks differ.
std::set<std::string> Differences(const Tree& one, const Tree& other) {
  std::set<std::string> paths;
  for (const auto& [from, to] : {std::pair(Bytes(one), Bytes(other)), std::pair(Bytes(other), Bytes(one))}) {
    for (const auto& [path, bytes] : from) {
      if (!to.contains(path) || to.at(path) != bytes) paths.insert(path);
    }
  }
  return paths;
}

class PowerCutTest : public testing::Test {
 protected:
  PowerCutTest(const std::string& engine, const std::string& scenario)
      : suite_(engine), scenario_(MakeScenario(scenario, suite_)) {
    scenario_->PutFiles();
  }

  // The disk before a run, as the device sees it.
  Device StartAfresh() {
    fs::remove(log_);
    WriteTree(before_, suite_.Root());
    return Device(ReadTree(suite_.Root()));
  }

  void ExpectSurvival(const Tree& left, const std::string& when) {
    WriteTree(left, suite_.Root());
    EXPECT_EQ(suite_.DatabaseProblem(), "") << when;
    scenario_->ExpectNothingLost(when);
    const Outcome next = suite_.Run(scenario_->Job());
    EXPECT_EQ(next.exitCode, 0) << "the run " << when << "\n" << next.out << next.err;
    EXPECT_EQ(suite_.DatabaseProblem(), "") << "the run " << when;
    scenario_->ExpectAllDone("of the run " + when);
    ++cuts_;
  }

  static std::string When(std::size_t point, std::size_t points, unsigned seed) {
    return "after a power cut at point " + std::to_string(point) + " of " + std::to_string(points) +
           ", seed " + std::to_string(seed);
  }

  void TellFigures(std::size_t points) const {
    std::cout << "soak: " << testing::UnitTest::GetInstance()->current_test_info()->name() << " " << points
              << " points, " << cuts_ << " cuts\n";
  }

  TemporaryFolder outside_;
  const fs::path log_ = outside_.Path() / "changes";
  PowerCutSuite suite_;
  std::unique_ptr<Scenario> scenario_;
  Tree before_;
  std::size_t cuts_ = 0;
};

// On the embedded engine all that a run does is on the disk: one run that was written down serves every
// point.
class EmbeddedPowerCutTest : public PowerCutTest, public testing::WithParamInterface<std::string> {
 protected:
  EmbeddedPowerCutTest() : PowerCutTest("sqlite", GetParam()) {}

  // A sample looks at every `every`th thing that a cut may leave; at fewer of those that differ at each
  // point.
  void CutEverywhere(std::size_t every) {
    suite_.Rows().ExecuteAll(scenario_->RowStatements());
    before_ = suite_.Disk();
    Device device = StartAfresh();
    const Outcome outcome = suite_.RunRecorded(scenario_->Job(), log_);
    const Tree after = ReadTree(suite_.Root());
    ASSERT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
    scenario_->ExpectAllDone("of the undisturbed run");
    const std::vector<Change> changes = ReadChangeLog(log_);
    Device whole = device;
    for (const Change& change : changes) whole.Apply(change);
    ASSERT_EQ(Differences(whole.AfterSync(), after), std::set<std::string>())
        << "the log tells of all changes";

    std::map<unsigned, std::map<std::string, std::string>> lastLeft;
    std::map<unsigned, std::size_t> different;
    for (std::size_t point = 0; point <= changes.size() && !HasFailure(); ++point) {
      if (point > 0) device.Apply(changes[point - 1]);
      for (const unsigned seed : {0U, Device::kNamesAlone, Device::kBytesAlone, 3U}) {
        const Tree left = device.AfterCut(seed);
        auto bytes = Bytes(left);
        // Without a sync in between, nothing else may be left than at the point before.
        if (lastLeft[seed] == bytes) continue;
        lastLeft[seed] = std::move(bytes);
        const std::size_t step = every * std::array<std::size_t, 4>{1, 4, 20, 20}[seed];
        if (Soaks() || ++different[seed] % step == 0) ExpectSurvival(left, When(point, changes.size(), seed));
      }
    }
    TellFigures(changes.size());
  }
};

TEST_P(EmbeddedPowerCutTest, NothingIsLost) {
  CutEverywhere(4);
}

TEST_P(EmbeddedPowerCutTest, NothingIsLostWhenTheLogIsPutAwayInMidRun) {
  suite_.LengthenLog();
  CutEverywhere(1);
}

INSTANTIATE_TEST_SUITE_P(Jobs, EmbeddedPowerCutTest,
                         testing::Values("Archive", "ArchiveOnAFarm", "CleanUp", "DormantUserExpiry",
                                         "SolveOnNoResponse"),
                         [](const auto& job) { return job.param; });

class SynchronousFullTest : public PowerCutTest {
 protected:
  SynchronousFullTest() : PowerCutTest("sqlite", "DormantUserExpiry") {}
};

TEST_F(SynchronousFullTest, KeepsEveryCommit) {
  const std::string file = "home/config/siteConfiguration.xml";
  std::string site = TemporaryFolder::Read(suite_.Root() / file);
  const std::string database = "orvane.sqlite";
  site.insert(site.find(database) + database.size(), ";Synchronous=FULL");
  suite_.Installation().suite.Folder().Write(file, site);
  suite_.Rows().ExecuteAll(scenario_->RowStatements());
  before_ = suite_.Disk();
  Device device = StartAfresh();
  ASSERT_EQ(suite_.RunRecorded(scenario_->Job(), log_).exitCode, 0);

  std::set<std::string> left;
  for (const Change& change : ReadChangeLog(log_)) {
    device.Apply(change);
    if (change.what.kind != CHANGE_SYNCED && change.what.kind != CHANGE_DATA_SYNCED) continue;
    WriteTree(device.AfterCut(0), suite_.Root());
    left.insert(suite_.Rows().Column("select count(*) from PROSPECT where EMAILID like 'due%'").front());
  }
  EXPECT_EQ(left, (std::set<std::string>{"0", "1", "2", "3", "4", "5", "6"})) << "each deletion is a commit";
}

// A server keeps what was committed whatever becomes of the host: it is left as a run that was killed leaves
// it.
class ServerPowerCutTest : public PowerCutTest,
                           public testing::WithParamInterface<std::tuple<std::string, std::string>> {
 protected:
  ServerPowerCutTest() : PowerCutTest(std::get<0>(GetParam()), std::get<1>(GetParam())) {
    before_ = suite_.Disk();
  }

  Device StartAfresh() {
    suite_.Rows().ExecuteAll(scenario_->RowStatements());
    return PowerCutTest::StartAfresh();
  }

  std::size_t CountPoints() {
    StartAfresh();
    const Outcome outcome = suite_.RunRecorded(scenario_->Job(), log_, {{"FAULT_COUNT", count_.string()}});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
    scenario_->ExpectAllDone("of the undisturbed run");
    return PointsOfTheLastRun();
  }
  // That came to its end.
  std::size_t PointsOfTheLastRun() const { return std::stoul(TemporaryFolder::Read(count_)); }

  const fs::path count_ = outside_.Path() / "points";
};

TEST_P(ServerPowerCutTest, NothingIsLost) {
  const std::size_t points = CountPoints();
  ASSERT_GT(points, 20U);
  for (std::size_t point = 1; point <= points + 1 && !HasFailure(); Soaks() ? ++point : point += points / 5) {
    for (const unsigned seed : {0U, 1 + static_cast<unsigned>(point % 3)}) {
      if (!Soaks() && seed != 0) continue;
      Device device = StartAfresh();
      const Outcome cut = suite_.RunRecorded(
          scenario_->Job(), log_, {{"FAULT_AT", std::to_string(point)}, {"FAULT_COUNT", count_.string()}});
      // A run that takes longer has more points than another: what it reads grows old, and is read again.
      EXPECT_TRUE(cut.exitCode == -1 || PointsOfTheLastRun() < point)
          << When(point, points, seed) << " ended by itself";
      for (const Change& change : ReadChangeLog(log_)) device.Apply(change);
      ExpectSurvival(device.AfterCut(seed), When(point, points, seed));
    }
  }
  TellFigures(points);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, ServerPowerCutTest,
    testing::Combine(testing::Values("postgresql", "mariadb"),
                     testing::Values("Archive", "ArchiveOnAFarm", "CleanUp", "SolveOnNoResponse")),
    [](const auto& test) { return std::get<0>(test.param) + "_" + std::get<1>(test.param); });

}  // namespace
}  // namespace orvane_test
