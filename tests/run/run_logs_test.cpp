#include "run/run_logs.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/support/temporary_folder.hpp"

namespace {

using orvane::FindJob;
using orvane::JobInfo;
using orvane::LastRuns;
using orvane::LoggedRun;
using orvane::RunLogWatch;

constexpr std::string_view kRuler = "*****************************************************\r\n";

class RunLogsTest : public testing::Test {
 protected:
  void Append(const std::string& day, std::string_view text) {
    std::ofstream stream(folder_.Path() / ("OrvCleanUpSvc_log_" + day + ".txt"),
                         std::ios::binary | std::ios::app);
    stream << text;
  }
  void Start(const std::string& day, const std::string& time) {
    Append(day, std::string(kRuler) + "Orvane NTService Log \r\n" + std::string(kRuler) +
                    "Clean Up - NTService Started at : " + time + "\r\n");
  }
  void Stop(const std::string& day, const std::string& time) {
    Append(day, " NTService Stopped at : " + time + "\r\n" + std::string(kRuler));
  }

  std::string Runs(std::size_t count = 10) {
    std::string text;
    for (const LoggedRun& run : LastRuns(folder_.Path(), job_, count)) {
      text += run.started.text + "-" + (run.stopped ? run.stopped->text : "?") + " ";
    }
    return text;
  }

  orvane_test::TemporaryFolder folder_;
  const JobInfo& job_ = *FindJob("CleanUp");
};

TEST_F(RunLogsTest, SeesAStopLineThatWasAddedSince) {
  Start("2004_7_26", "a");
  Stop("2004_7_26", "b");
  const RunLogWatch watch(folder_.Path(), job_);
  EXPECT_FALSE(watch.Added().stopped);
  Start("2004_7_26", "c");
  EXPECT_FALSE(watch.Added().stopped);
  Stop("2004_7_26", "d");
  EXPECT_TRUE(watch.Added().stopped);
}

TEST_F(RunLogsTest, FollowsARunAcrossMidnight) {
  const RunLogWatch watch(folder_.Path(), job_);
  Start("2004_12_31", "a");
  EXPECT_FALSE(watch.Added().stopped);
  Stop("2005_1_1", "b");
  EXPECT_TRUE(watch.Added().stopped);
}

TEST_F(RunLogsTest, AnotherJobsStopLineDoesNotCount) {
  const RunLogWatch watch(folder_.Path(), job_);
  folder_.Write("OrvDormantUserExpirySvc_log_2004_7_26.txt", " NTService Stopped at : x\r\n");
  folder_.Write("OrvCleanUpSvc_log_2004_7_26.txt.bak", " NTService Stopped at : x\r\n");
  folder_.Write("OrvCleanUpSvc_log_2004_7.txt", " NTService Stopped at : x\r\n");
  EXPECT_FALSE(watch.Added().stopped);
}

TEST_F(RunLogsTest, AMissingFolderHoldsNoRuns) {
  const RunLogWatch watch(folder_.Path() / "none", job_);
  EXPECT_FALSE(watch.Added().stopped);
  EXPECT_TRUE(LastRuns(folder_.Path() / "none", job_, 5).empty());
}

TEST_F(RunLogsTest, ListsFinishedAndUnfinishedRuns) {
  Start("2004_7_26", "1");
  Stop("2004_7_26", "2");
  Start("2004_7_26", "3");
  Start("2004_7_26", "4");
  Stop("2004_7_26", "5");
  Start("2004_7_26", "6");
  EXPECT_EQ(Runs(), "1-2 3-? 4-5 6-? ");
}

TEST_F(RunLogsTest, OrdersDaysByTheCalendar) {
  Start("2004_10_2", "3");
  Stop("2004_10_2", "4");
  Start("2004_9_30", "1");
  Stop("2004_10_1", "2");
  EXPECT_EQ(Runs(), "1-2 3-4 ");
}

TEST_F(RunLogsTest, ShowsOnlyTheLastOnes) {
  for (int day = 1; day <= 9; ++day) {
    Start("2004_7_" + std::to_string(day), std::to_string(day) + "a");
    Stop("2004_7_" + std::to_string(day), std::to_string(day) + "b");
  }
  EXPECT_EQ(Runs(3), "7a-7b 8a-8b 9a-9b ");
}

TEST_F(RunLogsTest, TellsMomentsByTheNameOfTheLogAndTheTimeOfDay) {
  Start("2004_7_26", "26-7-2004 09:05:03");
  Stop("2004_7_27", "2004. 7. 27. 00:01:00");
  Start("2004_7_27", "soon");
  Start("2004_7_27", "27-7-2004 25:00:00");
  const std::vector<LoggedRun> runs = LastRuns(folder_.Path(), job_, 5);
  ASSERT_EQ(runs.size(), 3U);
  EXPECT_EQ(runs[0].started.at, automation::DateTime::FromParts({2004, 7, 26, 9, 5, 3}));
  EXPECT_EQ(runs[0].stopped->at, automation::DateTime::FromParts({2004, 7, 27, 0, 1, 0}));
  EXPECT_EQ(runs[1].started.at, std::nullopt);
  EXPECT_EQ(runs[2].started.at, std::nullopt);
}

}  // namespace
