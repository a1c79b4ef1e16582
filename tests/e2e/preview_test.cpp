// A preview says what the run that follows does, and changes nothing itself.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/host_process.hpp"
#include "tests/e2e/previewed_suite.hpp"
#include "tests/e2e/seeded_previews.hpp"
#include "tests/e2e/small_disk.hpp"

namespace orvane_test {

std::vector<std::string> EnginesOfSeededPreviews() {
  return {"sqlite"};
}

unsigned EverydaySeeds() {
  return 12;
}

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

class PreviewTest : public testing::Test {
 protected:
  PreviewedSuite suite_{"sqlite"};
};

TEST_F(PreviewTest, SaysOfTheDemoWhatTheRunDoes) {
  EXPECT_GT(suite_.ExpectThatTheRunDoesWhatThePreviewSays(), 200U);
}

TEST_F(PreviewTest, TellsPeopleWhatWouldGoOfHowManyAndWhatTheLastRunsDid) {
  suite_.Run({"CleanUp"});
  suite_.Sql("INSERT INTO PREVIEW(PREVIEWTEXT) VALUES('a'),('b'),('c')");
  const Outcome told = suite_.Preview({"cleanup"}, {});
  EXPECT_EQ(told.exitCode, 0) << told.err;
  EXPECT_THAT(told.out, HasSubstr("OrvaneProcess.CleanUp at 20"));
  EXPECT_THAT(told.out, HasSubstr("would delete 3 of 3 rows of PREVIEW (100.0 %); the last run: "));
}

TEST_F(PreviewTest, LooksAtAnyMoment) {
  suite_.Sql(
      "UPDATE PROSPECT SET LASTVISITEDTIME = '2030-01-01 00:00:00', PENDINGQUESTIONS = 0;"
      "UPDATE PARAMETERS SET PARAM_VALUE = '30' WHERE PARAM_NAME = 'MAXDORMANCYTIME'");
  const auto deletions = [this](const std::string& at) {
    const Outcome outcome = suite_.Preview({"DormantUserExpiry"}, {"--json", "--at", at});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return EffectLines(outcome.out).size();
  };
  EXPECT_EQ(deletions("2030-01-31 00:00:00"), 0U);
  EXPECT_GT(deletions("2030-01-31 00:00:01"), 100U);
}

TEST_F(PreviewTest, RefusesWhatIsNoMomentAndNoLimit) {
  for (const char* none :
       {"tomorrow", "2026-02-30 00:00:00", "2026-11-22", "2026-11-22 24:00:00", "2026-11-22T02:00:00"}) {
    const Outcome outcome = suite_.Preview({"CleanUp"}, {"--at", none});
    EXPECT_EQ(outcome.exitCode, 64) << none;
    EXPECT_THAT(outcome.err, HasSubstr(none));
  }
  const Outcome outcome = suite_.Run({"CleanUp"}, {"--limit", "many"});
  EXPECT_EQ(outcome.exitCode, 64);
  EXPECT_THAT(outcome.err, HasSubstr("many"));
}

TEST_F(PreviewTest, AKilledPreviewLeavesNothing) {
  suite_.Sql(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000)"
      " INSERT INTO PREVIEW(PREVIEWTEXT) SELECT 'draft' FROM n");
  const auto before = suite_.State();
  {
    RunningHost preview(suite_.Words("preview", {"--json", "CleanUp"}), suite_.Environment());
    // Its lines fill the pipe, so it cannot come to its end; killed when its copy is made. (While it is being
    // made, a kill leaves an empty log beside the database, as that of any reader does.)
    const fs::path open = "/proc/" + std::to_string(preview.Pid()) + "/fd";
    for (bool copied = false; !copied;) {
      std::error_code failed;
      for (const auto& entry : fs::directory_iterator(open, failed)) {
        const std::string target = fs::read_symlink(entry.path(), failed).string();
        copied = copied || target.ends_with("copy.sqlite (deleted)");
      }
      std::this_thread::yield();
    }
    preview.Signal(SIGKILL);
    preview.Wait();
  }
  ExpectSameState(suite_.State(), before);
}

TEST_F(PreviewTest, WaitsForNobodyAndSaysWhoHoldsTheSuite) {
  suite_.Run({"CleanUp"});
  const int file = open((suite_.Home() / ".lock").c_str(), O_RDWR);
  ASSERT_EQ(flock(file, LOCK_EX), 0);
  const auto before = suite_.State();
  const Outcome outcome = suite_.Preview({"CleanUp"});
  close(file);
  EXPECT_EQ(outcome.exitCode, 75);
  EXPECT_THAT(outcome.err, HasSubstr("the suite is held by process"));
  EXPECT_THAT(outcome.out, IsEmpty());
  ExpectSameState(suite_.State(), before);
}

// The copy does not fit, or what the jobs change in it does not.
TEST_F(PreviewTest, SaysThatTheDiskOfItsCopyIsFullAndWhich) {
  const auto room = fs::file_size(suite_.DatabaseFile());
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  for (const auto& size : {room / 2, room + room / 16}) {
    const TemporaryFolder folder;
    const SmallDisk disk(folder.Path() / "disk", "size=" + std::to_string(size));
    if (!disk.Mounted()) GTEST_SKIP() << "no file system can be mounted here: " << disk.Problem();
    const auto before = suite_.State();
    const Outcome outcome = RunHost(suite_.Words("preview", {"--json", "Archive", "DormantUserExpiry"}),
                                    {{"TMPDIR", disk.Folder().string()}});
    EXPECT_EQ(outcome.exitCode, 70) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("the preview ended, nothing was changed: "));
    EXPECT_THAT(outcome.err, HasSubstr(disk.Folder().string()));
    EXPECT_THAT(outcome.err, HasSubstr("full"));
    ExpectSameState(suite_.State(), before);
    const Outcome limited = RunHost(suite_.Words("run", {"--limit", "100%", "DormantUserExpiry"}),
                                    {{"TMPDIR", disk.Folder().string()}});
    EXPECT_EQ(limited.exitCode, 70) << limited.err;
    EXPECT_THAT(limited.err, HasSubstr("the limit could not be checked, nothing was begun: "));
    EXPECT_FALSE(fs::exists(suite_.Home() / "journal"));
    fs::remove(suite_.Home() / ".lock");
  }
}

}  // namespace
}  // namespace orvane_test
