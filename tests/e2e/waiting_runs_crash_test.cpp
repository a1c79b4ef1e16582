// Two archive runs wait for a third that holds the suite. One of the two is killed, or its disk fails, at a
// point of its waiting or working; whichever of them comes first, the other archives what is left and nothing
// is lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "run/lock/file_lock.hpp"
#include "tests/e2e/archive_installation.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Environment = std::map<std::string, std::string>;
using orvane_lock::FileLock;
using orvane_lock::Holder;
using testing::AnyOf;
using testing::HasSubstr;

// Everyday tests disturb a run at every twentieth point, the soak tests at each.
long Stride() {
  return std::getenv("ORVANE_SOAK") != nullptr ? 1 : 20;
}

class WaitingRunsCrashTest : public testing::TestWithParam<std::string> {
 protected:
  WaitingRunsCrashTest() {
    if (GetParam() == "sqlite") engine_->Execute("pragma journal_mode = wal");
    installation_.Configure(engine_->ConnectionString(), ThreeCustomers());
  }

  void StartAfresh() {
    fs::remove_all(installation_.Home() / "Data");
    fs::remove_all(installation_.suite.Logs());
    engine_->ExecuteAll(RowsOfThreeCustomers());
  }

  fs::path Lock() const { return installation_.Home() / ".lock"; }
  std::vector<std::string> Words() const {
    return {"run", "--home", installation_.Home().string(), "Archive"};
  }

  long CountPoints() {
    StartAfresh();
    const fs::path count = installation_.suite.Folder().Path() / "points";
    const Outcome outcome =
        installation_.Run({{"LD_PRELOAD", ORVANE_FAULT_POINTS}, {"FAULT_COUNT", count.string()}});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return std::stol(TemporaryFolder::Read(count));
  }

  struct Outcomes {
    Outcome disturbed;
    Outcome other;
  };
  // Both wait when the suite is let go, unless the disturbed one ended before.
  Outcomes RunBoth(Environment disturbance) {
    auto held =
        FileLock::TryTake(Lock(), Holder{.process = 42, .host = "alpha", .job = "Archive", .since = "now"});
    RunningHost other(Words());
    other.AwaitError("; waiting\n");
    disturbance["LD_PRELOAD"] = ORVANE_FAULT_POINTS;
    RunningHost disturbed(Words(), disturbance);
    try {
      disturbed.AwaitError("; waiting\n");
    } catch (const std::runtime_error&) {  // ended before it had to wait
    }
    held.reset();
    return {disturbed.Wait(), other.Wait()};
  }

  ArchiveInstallation installation_;
  std::unique_ptr<Engine> engine_ = MakeEngine(GetParam(), installation_.suite);
};

TEST_P(WaitingRunsCrashTest, NothingIsLostWhenOneOfThemIsKilled) {
  const long points = CountPoints();
  ASSERT_GT(points, 100);
  int killed = 0;
  for (long point = 1; point <= points && !HasFailure(); point += Stride()) {
    StartAfresh();
    const Outcomes outcomes = RunBoth({{"FAULT_AT", std::to_string(point)}});
    const std::string when =
        "after a kill at point " + std::to_string(point) + " of " + std::to_string(points);
    if (outcomes.disturbed.exitCode == -1) ++killed;
    EXPECT_EQ(outcomes.other.exitCode, 0) << when << "\n" << outcomes.other.err;
    ExpectNothingLost(*engine_, installation_, when);
    EXPECT_THAT(CustomersLeft(*engine_), testing::IsEmpty())
        << when << ": the other run archives what is left";
    ExpectNextRunGoesThrough(*engine_, installation_, when);
  }
  EXPECT_GT(killed, 1);
  std::cout << "soak: " << GetParam() << ": " << killed << " killed\n";
}

TEST_P(WaitingRunsCrashTest, NothingIsLostWhenTheDiskOfOneOfThemFails) {
  const long points = CountPoints();
  constexpr const char* kInputOutputError = "5";
  for (long point = 1; point <= points && !HasFailure(); point += Stride()) {
    StartAfresh();
    const Outcomes outcomes = RunBoth({{"FAULT_AT", std::to_string(point)},
                                       {"FAULT_ERROR", kInputOutputError},
                                       {"FAULT_BELOW", installation_.suite.Folder().Path().string()}});
    const std::string when =
        "after a failure at point " + std::to_string(point) + " of " + std::to_string(points);
    EXPECT_EQ(outcomes.other.exitCode, 0) << when << "\n" << outcomes.other.err;
    ExpectNothingLost(*engine_, installation_, when);
    ExpectNextRunGoesThrough(*engine_, installation_, when);
  }
}

// The lock's own file: whatever of it fails, the run either holds the suite or says that it does not.
TEST_P(WaitingRunsCrashTest, ALockWhoseFileFailsIsHeldOrToldOf) {
  const fs::path count = installation_.suite.Folder().Path() / "points";
  const Environment lockOnly{{"LD_PRELOAD", ORVANE_FAULT_POINTS}, {"FAULT_BELOW", Lock().string()}};
  Environment counting = lockOnly;
  counting["FAULT_COUNT"] = count.string();
  StartAfresh();
  ASSERT_EQ(installation_.Run(counting).exitCode, 0);
  const long points = std::stol(TemporaryFolder::Read(count));
  ASSERT_GT(points, 0);
  int told = 0;
  for (long point = 1; point <= points; ++point) {
    StartAfresh();
    fs::remove(Lock());
    Environment failing = lockOnly;
    failing["FAULT_AT"] = std::to_string(point);
    failing["FAULT_ERROR"] = "5";
    const Outcome outcome = installation_.Run(failing);
    EXPECT_THAT(outcome.exitCode, AnyOf(0, 78)) << point;
    if (outcome.exitCode == 78) {
      ++told;
      EXPECT_THAT(outcome.err, HasSubstr("orvane-host: the suite's lock cannot be made: " + Lock().string() +
                                         ": Input/output error\n"));
      EXPECT_FALSE(fs::exists(installation_.suite.Logs())) << "nothing is begun without the lock";
    }
    ExpectNextRunGoesThrough(*engine_, installation_,
                             "after a lock that failed at point " + std::to_string(point));
  }
  EXPECT_GT(told, 0);
}

INSTANTIATE_TEST_SUITE_P(Engines, WaitingRunsCrashTest, testing::Values("sqlite", "postgresql", "mariadb"),
                         [](const auto& engine) { return engine.param; });

}  // namespace
}  // namespace orvane_test
