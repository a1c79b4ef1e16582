// What "status" tells those who watch over the jobs.
#include <gmock/gmock.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "run/lock/file_lock.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace orvane_test {
namespace {

using orvane_lock::FileLock;
using testing::HasSubstr;
using testing::Not;
using Strings = std::vector<std::string>;

constexpr const char* kJob = "OrvaneProcess.DormantUserExpiry";

class StatusTest : public testing::Test {
 protected:
  // A run that began some hours ago and took ten seconds, or never ended.
  void LogRun(int hoursAgo, bool finished) const {
    const std::time_t began = std::time(nullptr) - hoursAgo * 3600L;
    Append(began, "Dormant User Expiry - NTService Started at : ");
    if (finished) Append(began + 10, " NTService Stopped at : ");
  }
  Outcome Status(const Strings& more) const {
    Strings words{"status", "--home", suite_.Home().string()};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }
  std::unique_ptr<FileLock> Hold() const {
    return FileLock::TryTake(suite_.Home() / ".lock", orvane_lock::ThisProcess(kJob));
  }

  HandMadeSuite suite_;

 private:
  void Append(std::time_t moment, const std::string& line) const {
    std::tm day{};
    gmtime_r(&moment, &day);
    const auto text = [](int number) { return std::to_string(number); };
    const std::string year = text(day.tm_year + 1900);
    const std::string month = text(day.tm_mon + 1);
    char clock[16];
    std::strftime(clock, sizeof clock, "%H:%M:%S", &day);
    std::filesystem::create_directories(suite_.Logs());
    std::ofstream(suite_.Logs() / ("OrvDormantUserExpirySvc_log_" + year + "_" + month + "_" +
                                   text(day.tm_mday) + ".txt"),
                  std::ios::binary | std::ios::app)
        << line << month << "-" << day.tm_mday << "-" << year << " " << clock << "\r\n";
  }
};

TEST_F(StatusTest, ShowsTheJobsThatAreNamed) {
  LogRun(1, true);
  EXPECT_EQ(WithoutTimes(Status({"dormantuserexpiry"}).out),
            std::string(kJob) + "\n  started <time>  stopped <time>\n");
  const Outcome outcome = Status({"Dormant"});
  EXPECT_EQ(outcome.exitCode, 64);
  EXPECT_THAT(outcome.err, HasSubstr("unknown job Dormant; \"orvane-host list\" shows the jobs\n"));
}

TEST_F(StatusTest, FailsForAJobWithoutAYoungFinishedRun) {
  LogRun(30, true);
  LogRun(2, false);
  const Outcome old = Status({"--max-age", "26", kJob});
  EXPECT_EQ(old.exitCode, 1);
  EXPECT_EQ(old.err,
            "orvane-host: OrvaneProcess.DormantUserExpiry: no run has finished in the last 26 hours\n");
  EXPECT_EQ(Status({"--max-age", "31", kJob}).exitCode, 0);
  EXPECT_EQ(Status({"--max-age", "4294967295", kJob}).exitCode, 0);
  EXPECT_EQ(Status({kJob}).exitCode, 0);
  EXPECT_EQ(Status({"--max-age", "31"}).exitCode, 1);  // the other jobs have never run
}

TEST_F(StatusTest, FindsTheFinishedRunBehindManyThatFailed) {
  LogRun(20, true);
  for (int hour = 12; hour > 0; --hour) LogRun(hour, false);
  EXPECT_EQ(Status({"--max-age", "26", kJob}).exitCode, 0);
}

TEST_F(StatusTest, PrintsOneObjectForEachJob) {
  LogRun(2, true);
  LogRun(1, false);
  const Outcome outcome = Status({"--json", "--max-age", "26", kJob, "Archive"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out,
              testing::MatchesRegex(
                  R"(\{"v":1,"job":"OrvaneProcess.DormantUserExpiry","runs":\[)"
                  R"(\{"started":"[-0-9]+ [:0-9]+","stopped":"[-0-9]+ [:0-9]+","state":"finished"\},)"
                  R"(\{"started":"[-0-9]+ [:0-9]+","stopped":null,"state":"unfinished"\}\],)"
                  R"("youngEnough":true\})"
                  "\n"
                  R"(\{"v":1,"job":"OrvaneProcess.Archive","runs":\[\],"youngEnough":false\})"
                  "\n"));
}

TEST_F(StatusTest, ARunThatHasNotWrittenItsStartLineIsNoEarlierOne) {
  LogRun(24, false);
  const auto held = Hold();
  EXPECT_EQ(WithoutTimes(Status({kJob}).out),
            std::string(kJob) + "\n  started <time>  unfinished\n  running, process " +
                std::to_string(getpid()) + " on " + orvane_lock::ThisProcess({}).host +
                ", no start line yet\n");
  EXPECT_THAT(Status({"--json", kJob}).out,
              AllOf(HasSubstr("\"state\":\"unfinished\""), HasSubstr("\"running\":{\"process\":")));
}

TEST_F(StatusTest, ARunIsOverWithItsStopLine) {
  const auto held = Hold();
  LogRun(0, true);
  EXPECT_EQ(WithoutTimes(Status({kJob}).out), std::string(kJob) + "\n  started <time>  stopped <time>\n");
  EXPECT_THAT(Status({"--json", kJob}).out, Not(HasSubstr("\"running\"")));
}

TEST_F(StatusTest, AReportTellsWhatRunsDidAndWhichJournalCannotBeRead) {
  const std::string home = suite_.Home().string();
  const Outcome before = RunHost({"report", "--home", home});
  EXPECT_EQ(before.exitCode, 0) << before.err;
  ASSERT_EQ(RunHost({"run", "--home", home, kJob}).exitCode, 70) << "the suite has no parameters";
  const std::filesystem::path journals = suite_.Home() / "journal";
  std::ofstream(journals / "20260101T000000Z-1-Archive.jsonl") << "{\"torn";

  const Outcome text = RunHost({"report", "--home", home});
  EXPECT_EQ(text.exitCode, 0) << text.err;
  EXPECT_THAT(text.out, HasSubstr("DormantUserExpiry"));
  const Outcome json = RunHost({"report", "--home", home, "--json"});
  EXPECT_EQ(json.exitCode, 0) << json.err;
  EXPECT_THAT(json.out, testing::StartsWith("{"));
  EXPECT_THAT(json.out, HasSubstr("\"ending\":\"exit 70\""));
  EXPECT_THAT(json.out, HasSubstr("\"ending\":\"unreadable\",\"problem\":\"" + journals.string() +
                                  "/20260101T000000Z-1-Archive.jsonl: it has no whole line\""));
  const std::filesystem::path page = suite_.Home() / "report.html";
  EXPECT_EQ(RunHost({"report", "--home", home, "--html", page.string()}).exitCode, 0);
  const std::string html = TemporaryFolder::Read(page);
  EXPECT_THAT(html, testing::StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(html, HasSubstr("20260101T000000Z-1-Archive"));
  EXPECT_THAT(html, Not(HasSubstr("<script")));
}

}  // namespace
}  // namespace orvane_test
