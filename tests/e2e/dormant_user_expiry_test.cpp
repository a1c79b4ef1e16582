// OrvaneProcess.DormantUserExpiry through the real program, on databases made by hand.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <regex>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

using orvane_test::Database;
using orvane_test::DateText;
using orvane_test::HandMadeSuite;
using orvane_test::kDay;
using orvane_test::Outcome;
using orvane_test::RunHost;
using Strings = std::vector<std::string>;

constexpr const char* kExpiryLog = "OrvDormantUserExpirySvc_log_";

class DormantUserExpiryTest : public testing::Test {
 protected:
  DormantUserExpiryTest() {
    database_.Execute(
        "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
        "CREATE TABLE PROSPECT (NAME TEXT PRIMARY KEY, LASTVISITEDTIME DATETIME, PENDINGQUESTIONS INTEGER);");
  }

  void SetLimit(const std::string& days) {
    database_.Execute("INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', '" + days + "')");
  }
  void AddProspect(const std::string& name, const std::string& lastVisit, const std::string& pending) {
    const std::string visit = lastVisit == "NULL" ? lastVisit : "'" + lastVisit + "'";
    database_.Execute("INSERT INTO PROSPECT VALUES ('" + name + "', " + visit + ", " + pending + ")");
  }
  Strings Left() { return database_.Rows("SELECT NAME FROM PROSPECT ORDER BY NAME"); }
  Outcome Run() {
    return RunHost({"run", "--home", suite_.Home().string(), "OrvaneProcess.DormantUserExpiry"});
  }

  HandMadeSuite suite_;
  Database database_{suite_.DatabaseFile()};
};

TEST_F(DormantUserExpiryTest, DeletesWhoStayedAwayLongerThanTheLimitWithoutAQuestionPending) {
  SetLimit("30");
  AddProspect("away", DateText(-31 * kDay), "0");
  AddProspect("away with a question", DateText(-31 * kDay), "1");
  AddProspect("away with fewer than none", DateText(-31 * kDay), "-3");
  AddProspect("away, unknown questions", DateText(-31 * kDay), "NULL");
  AddProspect("never seen", "NULL", "0");
  AddProspect("recent", DateText(-29 * kDay), "0");
  AddProspect("at midnight", DateText(-40 * kDay).substr(0, 10) + " 00:00:00", "0");
  AddProspect("in the future", DateText(5 * kDay), "0");
  AddProspect("ages ago", "1950-01-01 12:00:00", "0");

  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(Left(), (Strings{"away with a question", "away, unknown questions", "in the future", "never seen",
                             "recent"}));
  EXPECT_TRUE(suite_.ErrorLog().empty());
}

// The run decides by one moment. It lies between the times of the two log lines, so the rows that are left
// must be those of one such moment, to the second.
TEST_F(DormantUserExpiryTest, DrawsTheLineToTheSecond) {
  SetLimit("90");
  const std::time_t base = std::time(nullptr);
  const auto name = [](long second) { return std::to_string(1000 + second); };
  for (long second = -20; second <= 40; ++second) {
    AddProspect(name(second), orvane_test::DateAt(base + second - 90 * kDay), "0");
  }
  const std::time_t before = std::time(nullptr);
  ASSERT_EQ(Run().exitCode, 0);
  // By the clock that the program reads: std::time may be some milliseconds behind it.
  const std::time_t after = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());

  bool explained = false;
  for (std::time_t moment = before; moment <= after; ++moment) {
    Strings expected;
    for (long second = -20; second <= 40; ++second) {
      if (base + second >= moment) expected.push_back(name(second));  // equal is not earlier
    }
    explained = explained || Left() == expected;
  }
  EXPECT_TRUE(explained);
}

TEST_F(DormantUserExpiryTest, ANegativeLimitMovesTheMomentBack) {
  SetLimit("-10");
  AddProspect("in nine days", DateText(9 * kDay), "0");
  AddProspect("in eleven days", DateText(11 * kDay), "0");
  AddProspect("today", DateText(-60), "0");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Left(), (Strings{"in eleven days"}));
}

TEST_F(DormantUserExpiryTest, TheRunLogIsExactToTheByte) {
  SetLimit("30");
  ASSERT_EQ(Run().exitCode, 0);
  ASSERT_EQ(Run().exitCode, 0);  // a second run of the day appends
  const std::string log = suite_.RunLog(kExpiryLog);

  const std::regex time("[0-9]{1,2}-[0-9]{1,2}-[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}");
  Strings times{std::sregex_token_iterator(log.begin(), log.end(), time), {}};
  ASSERT_EQ(times.size(), 4U);
  const std::string ruler = std::string(53, '*') + "\r\n";
  std::string expected;
  for (std::size_t run = 0; run < 2; ++run) {
    expected += ruler + "Orvane NTService Log \r\n" + ruler +
                "Dormant User Expiry - NTService Started at : " + times[2 * run] +
                "\r\n NTService Stopped at : " + times[2 * run + 1] + "\r\n" + ruler;
  }
  EXPECT_EQ(log, expected);
}

TEST_F(DormantUserExpiryTest, TheLogFileBearsTheDayWithoutLeadingZeros) {
  SetLimit("30");
  ASSERT_EQ(Run().exitCode, 0);
  const std::time_t now = std::time(nullptr);
  std::tm day{};
  gmtime_r(&now, &day);
  const std::string name = kExpiryLog + std::to_string(day.tm_year + 1900) + "_" +
                           std::to_string(day.tm_mon + 1) + "_" + std::to_string(day.tm_mday) + ".txt";
  EXPECT_TRUE(std::filesystem::exists(suite_.Logs() / name)) << name;
}

// What a run without its stop line leaves: the start banner, the rows as they were, and exit code 70.
class UnfinishedExpiryTest : public DormantUserExpiryTest {
 protected:
  void ExpectUnfinished() {
    AddProspect("away", DateText(-400 * kDay), "0");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 70);
    EXPECT_NE(outcome.out.find("OrvaneProcess.DormantUserExpiry: ended without its stop line"),
              std::string::npos)
        << outcome.out;
    EXPECT_EQ(Left(), Strings{"away"});
    const std::string ruler = std::string(53, '*') + "\r\n";
    EXPECT_EQ(orvane_test::WithoutTimes(suite_.RunLog(kExpiryLog)),
              ruler + "Orvane NTService Log \r\n" + ruler +
                  "Dormant User Expiry - NTService Started at : <time>\r\n");
  }
};

TEST_F(UnfinishedExpiryTest, WithoutALimit) {
  ExpectUnfinished();
}

TEST_F(UnfinishedExpiryTest, WithALimitThatIsNoNumber) {
  SetLimit("ninety");
  ExpectUnfinished();
}

TEST_F(UnfinishedExpiryTest, WithALimitThatOverflows) {
  SetLimit("2147483648");
  ExpectUnfinished();
}

TEST_F(UnfinishedExpiryTest, WithANullLimit) {
  database_.Execute("INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', NULL)");
  ExpectUnfinished();
}

}  // namespace
