// orvane-host init: a suite from nothing, and the demo's.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

using orvane_test::Database;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::TemporaryFolder;
using Strings = std::vector<std::string>;

class InitTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const std::filesystem::path home_ = folder_.Path() / "home";
};

TEST_F(InitTest, MakesASuiteThatEveryJobRunsOn) {
  const Outcome made = RunHost({"init", home_.string()});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  const Outcome outcome = RunHost({"run", "--strict", "--home", home_.string(), "DormantUserExpiry",
                                   "CleanUp", "Archive", "SolveOnNoResponse"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
  EXPECT_EQ(outcome.err, "");
}

TEST_F(InitTest, TheSettingsOfANewSuiteLetNothingGoEarly) {
  ASSERT_EQ(RunHost({"init", home_.string()}).exitCode, 0);
  Database database(home_ / "db/orvane.sqlite");
  EXPECT_EQ(database.Rows(
                "SELECT PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN ('MAXDORMANCYTIME', 'ArchiveAfter') "
                "ORDER BY PARAM_NAME"),
            (Strings{"365", "730"}));
  EXPECT_EQ(database.Rows("SELECT count(*) FROM PROSPECT"), Strings{"0"});
}

TEST_F(InitTest, TheTextsOfAllLanguagesAreInPlace) {
  ASSERT_EQ(RunHost({"init", home_.string()}).exitCode, 0);
  Database database(home_ / "db/orvane.sqlite");
  EXPECT_EQ(database.Rows("SELECT LOCALEID FROM I18NTEXT WHERE LABEL = 'LBLQX3429' ORDER BY LOCALEID"),
            (Strings{"1031", "1033", "1041", "1043"}));
  EXPECT_EQ(database.Rows("SELECT TEXT FROM I18NTEXT WHERE LABEL = 'LBLQX3470' AND LOCALEID = 1031"),
            Strings{"Stunden"});
  EXPECT_EQ(database.Rows("SELECT DISTINCT TEXTID FROM DATALABEL ORDER BY TEXTID"),
            (Strings{"MAIL10BODY", "MAIL10SUBJECT", "MAIL8BODY", "MAIL8SUBJECT"}));
}

TEST_F(InitTest, LeavesAPlaceAloneThatIsTaken) {
  const auto file = folder_.Write("home/db/orvane.sqlite", "precious");
  const Outcome outcome = RunHost({"init", home_.string(), "--demo"});
  EXPECT_EQ(outcome.exitCode, 73);
  EXPECT_EQ(outcome.err, "orvane-host: " + home_.string() +
                             ": there is something in this place already; a suite is made in a new or empty "
                             "directory\n");
  EXPECT_EQ(TemporaryFolder::Read(file), "precious");
  EXPECT_FALSE(std::filesystem::exists(home_ / "config"));
}

TEST_F(InitTest, ASuiteThatCannotBeFinishedLeavesNothingBehind) {
  const Outcome outcome =
      RunHost({"init", home_.string(), "--database", "Provider=SQLite;Data Source=nowhere\\x.sqlite",
               "--catalog", "Provider=SQLite;Data Source=nowhere\\y.sqlite"});
  EXPECT_EQ(outcome.exitCode, 73);
  EXPECT_NE(outcome.err.find("the suite could not be made: "), std::string::npos) << outcome.err;
  EXPECT_FALSE(std::filesystem::exists(home_));
}

// Whatever the one who starts the program has set, what it makes is for its owner and the group alone.
TEST_F(InitTest, NobodyElseMayReadWhatASuiteHolds) {
  for (const mode_t mask : {mode_t{0}, mode_t{077}}) {
    SCOPED_TRACE(mask);
    TemporaryFolder place;
    const std::filesystem::path home = place.Path() / "home";
    const mode_t before = umask(mask);
    const Outcome made = RunHost({"init", home.string(), "--demo"});
    const Outcome ran = RunHost(
        {"run", "--home", home.string(), "DormantUserExpiry", "SolveOnNoResponse", "Archive", "CleanUp"});
    umask(before);
    ASSERT_EQ(made.exitCode, 0) << made.err;
    ASSERT_EQ(ran.exitCode, 0) << ran.err;
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(place.Path())) {
      using std::filesystem::perms;
      const bool secret = entry.path().filename() == "siteConfiguration.xml" ||
                          entry.path().parent_path().filename() == "journal";
      const unsigned expected = entry.is_directory() ? 0750 : secret ? 0600 : 0640;
      EXPECT_EQ(static_cast<unsigned>(entry.status().permissions() & perms::mask), expected) << entry.path();
      ++files;
    }
    EXPECT_GT(files, 100);
  }
}

TEST_F(InitTest, TheDemoHoldsEveryKindOfProspect) {
  ASSERT_EQ(RunHost({"init", home_.string(), "--demo"}).exitCode, 0);
  Database database(home_ / "db/orvane.sqlite");
  const std::string count = "SELECT count(*) > 50 FROM PROSPECT WHERE ";
  EXPECT_EQ(database.Rows("SELECT count(*) FROM PROSPECT"), Strings{"10000"});
  for (const char* kind : {"LASTVISITEDTIME IS NULL", "PENDINGQUESTIONS IS NULL", "PENDINGQUESTIONS < 0",
                           "LASTVISITEDTIME > datetime('now', '+1 hour')",
                           "datetime(LASTVISITEDTIME, '+90 days') < datetime('now') AND PENDINGQUESTIONS > 0",
                           "datetime(LASTVISITEDTIME, '+90 days') < datetime('now') AND PENDINGQUESTIONS = 0",
                           "datetime(LASTVISITEDTIME, '+90 days') BETWEEN datetime('now', '+50 minutes') AND "
                           "datetime('now', '+1 hour')",
                           "datetime(LASTVISITEDTIME, '+90 days') BETWEEN datetime('now', '-70 minutes') AND "
                           "datetime('now', '-1 hour')",
                           "LASTVISITEDTIME LIKE '% 00:00:00'"}) {
    EXPECT_EQ(database.Rows(count + kind), Strings{"1"}) << kind;
  }
}

TEST_F(InitTest, TheDemosDormantProspectsGoAndTheOthersStay) {
  ASSERT_EQ(RunHost({"init", home_.string(), "--demo"}).exitCode, 0);
  Database database(home_ / "db/orvane.sqlite");
  const std::string stay =
      "SELECT PROSPECTID FROM PROSPECT WHERE LASTVISITEDTIME IS NULL OR PENDINGQUESTIONS IS NULL OR "
      "PENDINGQUESTIONS > 0 OR datetime(LASTVISITEDTIME, '+90 days') >= datetime('now') ORDER BY PROSPECTID";
  const Strings expected = database.Rows(stay);
  ASSERT_EQ(RunHost({"run", "--strict", "--home", home_.string(), "DormantUserExpiry"}).exitCode, 0);
  EXPECT_EQ(database.Rows("SELECT PROSPECTID FROM PROSPECT ORDER BY PROSPECTID"), expected);
}

}  // namespace
