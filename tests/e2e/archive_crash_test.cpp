// orvane-host is killed at every point of an archive run where it touches a file, begins a statement or tells
// the database server something. Whatever the point, each request and each transaction is afterwards in the
// database or in a well-formed archive file, and the next run goes through.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/archive_installation.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Environment = std::map<std::string, std::string>;

class ArchiveCrashTest : public testing::TestWithParam<std::string> {
 protected:
  ArchiveCrashTest() {
    if (GetParam() == "sqlite") engine_->Execute("pragma journal_mode = wal");
    installation_.Configure(engine_->ConnectionString(), ThreeCustomers());
  }

  void StartAfresh() {
    fs::remove_all(installation_.Home() / "Data");
    fs::remove_all(installation_.suite.Logs());
    engine_->ExecuteAll(RowsOfThreeCustomers());
  }

  Outcome Run(Environment disturbance) {
    disturbance["LD_PRELOAD"] = ORVANE_FAULT_POINTS;
    disturbance["FAULT_COUNT"] = count_.string();
    return installation_.Run(disturbance);
  }

  // The points of an undisturbed run.
  long CountPoints() {
    StartAfresh();
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(CustomersLeft(*engine_), testing::IsEmpty()) << "the undisturbed run archives everything";
    return PointsOfTheLastRun();
  }
  // That came to its end.
  long PointsOfTheLastRun() const { return std::stol(TemporaryFolder::Read(count_)); }

  ArchiveInstallation installation_;
  const fs::path count_ = installation_.suite.Folder().Path() / "points";
  std::unique_ptr<Engine> engine_ = MakeEngine(GetParam(), installation_.suite);
};

// A run that takes longer has more points than another: its journal is synced once a second besides, and rows
// that have grown old are read again.
TEST_P(ArchiveCrashTest, NothingIsLostWhereverTheRunIsKilled) {
  const long points = CountPoints();
  ASSERT_GT(points, 100);
  RecordProperty("points", std::to_string(points));
  for (long point = 1; point <= points && !HasFailure(); ++point) {
    StartAfresh();
    Environment disturbance{{"FAULT_AT", std::to_string(point)}};
    if (point % 2 == 0) disturbance["FAULT_TORN"] = "1";
    const Outcome killed = Run(disturbance);
    const std::string when =
        "after a kill at point " + std::to_string(point) + " of " + std::to_string(points);
    EXPECT_TRUE(killed.exitCode == -1 || PointsOfTheLastRun() < point)
        << when << " ended by itself: " << killed.exitCode;
    ExpectNothingLost(*engine_, installation_, when);
    ExpectNextRunGoesThrough(*engine_, installation_, when);
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, ArchiveCrashTest, testing::Values("sqlite", "postgresql", "mariadb"),
                         [](const auto& engine) { return engine.param; });

}  // namespace
}  // namespace orvane_test
