// Previews of suites on servers: what holds them up, and what they must not hold up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/host_process.hpp"
#include "tests/e2e/previewed_suite.hpp"
#include "tests/e2e/seeded_previews.hpp"
#include "tests/servers/server_sessions.hpp"

namespace orvane_test {

std::vector<std::string> EnginesOfSeededPreviews() {
  return {"postgresql", "mariadb"};
}

unsigned EverydaySeeds() {
  return 3;
}

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class ServerPreviewTest : public testing::TestWithParam<std::string> {
 protected:
  ServerPreviewTest() {
    suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  }

  static std::vector<std::string> ThreeTimesAllJobs() {
    std::vector<std::string> words = {"--json"};
    for (int again = 0; again < 3; ++again) words.insert(words.end(), AllJobs().begin(), AllJobs().end());
    return words;
  }

  // A preview that has changed rows and cannot come to its end, since nobody reads what it prints.
  std::unique_ptr<RunningHost> PreviewInTheMiddle() const {
    const auto session = suite_.Server().Orvane().Connect();
    auto preview =
        std::make_unique<RunningHost>(suite_.Words("preview", ThreeTimesAllJobs()), suite_.Environment());
    while (!HoldsRows(*session)) std::this_thread::yield();
    return preview;
  }

  // Whether somebody has changed customers and not made up his mind.
  static bool HoldsRows(ADODB::engine::Session& session) {
    session.Begin();
    bool holds = false;
    try {
      const auto rows = session.Query("SELECT PROSPECTID FROM PROSPECT FOR UPDATE NOWAIT", {});
      while (rows->Next()) {
      }
    } catch (const automation::Error&) {
      holds = true;
    }
    session.Rollback();
    return holds;
  }

  PreviewedSuite suite_{GetParam()};
};

TEST_P(ServerPreviewTest, EndsWhenItsServerGoesAwayInTheMiddle) {
  const auto before = suite_.State();
  const auto preview = PreviewInTheMiddle();
  EndOtherSessions(suite_.Server().Orvane(), GetParam());
  const Outcome outcome = preview->Wait();
  EXPECT_EQ(outcome.exitCode, 69) << outcome.err;
  EXPECT_THAT(outcome.err,
              HasSubstr("the preview ended, nothing was changed: the suite's database does not answer "
                        "any more: "));
  ExpectSameState(suite_.State(), before);
}

TEST_P(ServerPreviewTest, HoldsRowsNoLongerThanItMay) {
  suite_.SetHostKey("PreviewSeconds", "3");
  const auto before = suite_.State();
  // Nobody reads what it prints, so that it cannot come to its end.
  RunningHost preview(suite_.Words("preview", ThreeTimesAllJobs()), suite_.Environment());
  preview.AwaitEnd();
  const Outcome outcome = preview.Wait();
  EXPECT_EQ(outcome.exitCode, 75) << outcome.err;
  EXPECT_THAT(outcome.err,
              HasSubstr("nothing was changed: it has held rows of the suite's database for 3 s"));
  const auto session = suite_.Server().Orvane().Connect();
  while (HoldsRows(*session)) std::this_thread::yield();
  ExpectSameState(suite_.State(), before);
}

TEST_P(ServerPreviewTest, ItsTimeIsANumberOfSeconds) {
  suite_.SetHostKey("PreviewSeconds", "0");
  const Outcome outcome = suite_.Preview({"CleanUp"});
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_THAT(outcome.err,
              HasSubstr("key \"PreviewSeconds\": found \"0\"; expected a number of seconds, 1 to 86400"));
}

TEST_P(ServerPreviewTest, EndsAtARowThatSomebodyElseHolds) {
  const auto session = suite_.Server().Orvane().Connect();
  session->Begin();
  session->Execute("UPDATE PROSPECT SET COMPANY = 'mine' WHERE PROSPECTID = 5000", {});
  const Outcome outcome = suite_.Preview({"DormantUserExpiry"});
  EXPECT_EQ(outcome.exitCode, 75) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("kept from going on by somebody else's lock"));
  session->Rollback();
}

TEST_P(ServerPreviewTest, RefusesToTouchTablesThatTakeNoPartInTransactions) {
  if (GetParam() != "mariadb") GTEST_SKIP() << "every table of this engine does";
  for (const char* engine : {"MyISAM", "Aria"}) {
    suite_.Sql(std::string("ALTER TABLE PREVIEW ENGINE=") + engine);
    const auto before = suite_.State();
    const Outcome previewed = suite_.Preview({"CleanUp"});
    EXPECT_EQ(previewed.exitCode, 78) << previewed.err;
    EXPECT_THAT(previewed.err, HasSubstr("the preview ended, nothing was changed: table "));
    EXPECT_THAT(previewed.err,
                testing::ContainsRegex("table [Pp][Rr][Ee][Vv][Ii][Ee][Ww] takes no part in transactions"));
    const Outcome limited = suite_.Run({"CleanUp"}, {"--limit", "500"});
    EXPECT_EQ(limited.exitCode, 78) << limited.err;
    EXPECT_THAT(limited.err, HasSubstr("takes no part in transactions"));
    fs::remove(suite_.Home() / ".lock");
    ExpectSameState(suite_.State(), before);
    // Jobs that leave that table alone can be previewed.
    EXPECT_EQ(suite_.Preview({"DormantUserExpiry"}).exitCode, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerPreviewTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
}  // namespace orvane_test
