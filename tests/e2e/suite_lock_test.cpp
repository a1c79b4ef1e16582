// One run at a time, as an operator meets it: who waits, for whom, and what ends the waiting.
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "run/lock/file_lock.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace orvane_test {
namespace {

using orvane_lock::FileLock;
using orvane_lock::Holder;
using testing::HasSubstr;
using testing::Not;
using Strings = std::vector<std::string>;

const Holder kSomebody{.process = 42, .host = "alpha", .job = "Archive", .since = "2026-11-22 00:30:00"};
constexpr const char* kHeld =
    "orvane-host: the suite is held by process 42 on alpha (Archive, since 2026-11-22 00:30:00 UTC)";

class SuiteLockTest : public testing::Test {
 protected:
  SuiteLockTest() {
    Database database(suite_.DatabaseFile());
    database.Execute(
        "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
        "CREATE TABLE PROSPECT (NAME TEXT PRIMARY KEY, LASTVISITEDTIME DATETIME, PENDINGQUESTIONS INTEGER);"
        "INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', '30');"
        "INSERT INTO PROSPECT VALUES ('away', '2004-07-26 09:05:03', 0)");
  }
  Strings Words(const Strings& more = {}) const {
    Strings words{"run", "--home", suite_.Home().string(), "DormantUserExpiry"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  std::unique_ptr<FileLock> Hold() const { return FileLock::TryTake(File(), kSomebody); }
  std::filesystem::path File() const { return suite_.Home() / ".lock"; }
  Strings Left() { return Database(suite_.DatabaseFile()).Rows("SELECT NAME FROM PROSPECT"); }
  void ExpectNothingWasBegun() {
    EXPECT_FALSE(std::filesystem::exists(suite_.Logs()));
    EXPECT_EQ(Left(), Strings{"away"});
  }

  HandMadeSuite suite_;
};

TEST_F(SuiteLockTest, ARunWaitsForTheOneThatHoldsTheSuiteAndSaysForWhom) {
  auto held = Hold();
  RunningHost waiting(Words());
  waiting.AwaitError(std::string(kHeld) + "; waiting\n");
  ExpectNothingWasBegun();
  held.reset();
  const Outcome outcome = waiting.Wait();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(outcome.err, std::string(kHeld) + "; waiting\n");
  EXPECT_EQ(Left(), Strings{});
}

TEST_F(SuiteLockTest, ARunThatIsNotToWaitEndsAtOnce) {
  const auto held = Hold();
  const Outcome outcome = RunHost(Words({"--no-wait"}));
  EXPECT_EQ(outcome.exitCode, 75);
  EXPECT_EQ(outcome.err, std::string(kHeld) + "; nothing was begun\n");
  ExpectNothingWasBegun();
}

TEST_F(SuiteLockTest, ARunWaitsNoLongerThanItIsTo) {
  const auto held = Hold();
  const Outcome outcome = RunHost(Words({"--wait", "1"}));
  EXPECT_EQ(outcome.exitCode, 75);
  EXPECT_EQ(outcome.err, std::string(kHeld) + "; waiting\n" + kHeld + "; nothing was begun\n");
  ExpectNothingWasBegun();
}

TEST_F(SuiteLockTest, ASignalEndsTheWaitingAtOnce) {
  const auto held = Hold();
  for (const int number : {SIGTERM, SIGINT}) {
    RunningHost waiting(Words());
    waiting.AwaitError("; waiting\n");
    waiting.Signal(number);
    const Outcome outcome = waiting.Wait();
    EXPECT_EQ(outcome.exitCode, 75) << number;
    EXPECT_THAT(outcome.err, HasSubstr("orvane-host: asked to stop while waiting; nothing was begun\n"));
  }
  ExpectNothingWasBegun();
}

TEST_F(SuiteLockTest, AHolderThatIsKilledLetsTheNextOneGoOn) {
  // However slow the test is, the run that it holds up waits for it.
  const std::string name = "config/siteConfiguration.xml", file = "orvane.sqlite";
  std::string site = TemporaryFolder::Read(suite_.Home() / name);
  suite_.Folder().Write("home/" + name, site.insert(site.find(file) + file.size(), ";Timeout=300"));
  Database database(suite_.DatabaseFile());
  database.Execute("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE");
  auto holder = std::make_unique<RunningHost>(Words());
  const auto begun = [&] {
    const Holder now = FileLock::HolderOf(File()).value_or(Holder());
    return now.process == holder->Pid() && !now.job.empty();
  };
  while (!begun()) {
  }
  RunningHost waiting(Words());
  waiting.AwaitError("held by process " + std::to_string(holder->Pid()) + " on ");
  waiting.AwaitError("(OrvaneProcess.DormantUserExpiry, since ");
  holder->Signal(SIGKILL);
  EXPECT_EQ(holder->Wait().exitCode, -1);
  database.Execute("ROLLBACK; PRAGMA locking_mode=NORMAL; SELECT 1 FROM PROSPECT");
  const Outcome outcome = waiting.Wait();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(Left(), Strings{});
}

TEST_F(SuiteLockTest, ALockThatCannotBeMadeIsAMatterOfConfiguration) {
  std::filesystem::create_directory(File());
  const Outcome outcome = RunHost(Words());
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err,
            "orvane-host: the suite's lock cannot be made: " + File().string() + ": Is a directory\n");
  ExpectNothingWasBegun();
}

TEST_F(SuiteLockTest, ArgumentsAndConfigurationComeBeforeTheLock) {
  const auto held = Hold();
  EXPECT_EQ(RunHost(Words({"Nothing", "--no-wait"})).exitCode, 64);
  EXPECT_EQ(RunHost(Words({"--wait", "soon"})).exitCode, 64);
  EXPECT_EQ(RunHost(Words({"--wait", "1", "--no-wait"})).exitCode, 64);
  suite_.Folder().Write("home/config/siteConfiguration.xml", "<siteConfiguration/>\n");
  EXPECT_EQ(RunHost(Words({"--no-wait"})).exitCode, 78);
}

TEST_F(SuiteLockTest, TheOtherCommandsDoNotWait) {
  const auto held = Hold();
  EXPECT_EQ(RunHost({"list"}).exitCode, 0);
  EXPECT_EQ(RunHost({"status", "--home", suite_.Home().string()}).exitCode, 0);
}

}  // namespace
}  // namespace orvane_test
