// A limit is checked by a preview before a run, and latched while it lasts.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/adodb/session/freshness.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/e2e/previewed_suite.hpp"
#include "tests/support/sqlite_database.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using Strings = std::vector<std::string>;

class RunLimitTest : public testing::Test {
 protected:
  PreviewedSuite suite_{"sqlite"};
};

TEST_F(RunLimitTest, ALimitIsCheckedBeforeAnythingIsTouched) {
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  const auto before = suite_.State().at("home/db/orvane.sqlite");
  const Outcome refused = suite_.Run({"DormantUserExpiry"}, {"--limit", "10"});
  EXPECT_EQ(refused.exitCode, 77);
  EXPECT_THAT(refused.err, HasSubstr("rows of PROSPECT, 10 allowed"));
  EXPECT_TRUE(suite_.State().at("home/db/orvane.sqlite") == before) << "the database has changed";
  EXPECT_EQ(suite_.Run({"DormantUserExpiry"}, {"--limit", "50%"}).exitCode, 77);
  EXPECT_EQ(suite_.Run({"DormantUserExpiry"}, {"--limit", "100%"}).exitCode, 0);
}

TEST_F(RunLimitTest, TheNextJobsStillRunWhenOneIsOverItsLimit) {
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  suite_.Sql("INSERT INTO PREVIEW(PREVIEWTEXT) VALUES('a'),('b'),('c')");
  const Outcome outcome = suite_.Run({"DormantUserExpiry", "CleanUp"}, {"--limit", "100"});
  EXPECT_EQ(outcome.exitCode, 77);
  EXPECT_THAT(outcome.out, HasSubstr("OrvaneProcess.CleanUp: finished"));
}

TEST_F(RunLimitTest, ThePreviewTellsProgressHowMuchThereIsToDo) {
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  const Outcome known = suite_.Run({"DormantUserExpiry"}, {"--limit", "100%", "--progress", "always"});
  EXPECT_THAT(known.err,
              ContainsRegex(
                  "DormantUserExpiry: 200 rows deleted; [0-9,]+ a second, 100 %, 0:[0-5][0-9]:[0-5][0-9]\n"));
  const Outcome unknown = suite_.Run({"CleanUp"}, {"--progress", "always"});
  EXPECT_THAT(unknown.err, ContainsRegex(" a second, 0:[0-5][0-9]:[0-5][0-9]\n"));
  EXPECT_THAT(unknown.err, Not(HasSubstr("%")));
}

// Of what the servers of a web farm share: files that have grown old.
TEST_F(RunLimitTest, ASharedFolderHasItsLimitToo) {
  // A sweep by age ends at the first file that lies here.
  const fs::path here = suite_.Home() / "Data/tempAttachments";
  fs::remove_all(here);
  fs::create_directory(here);
  const fs::path shared = suite_.Folder() / "shared";
  fs::create_directories(shared / "tempAttachments");
  for (int i = 0; i < 10; ++i) {
    const fs::path file = shared / "tempAttachments" / std::to_string(i);
    std::ofstream(file) << "x";
    if (i >= 3) continue;
    constexpr timespec kOld[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), kOld, 0), 0);
  }
  suite_.Sql("UPDATE PARAMETERS SET PARAM_VALUE = 'true' WHERE PARAM_NAME = 'Webfarm Implemented'");
  suite_.Sql("UPDATE PARAMETERS SET PARAM_VALUE = '" + shared.string() + "' WHERE PARAM_NAME = 'FTPPath'");
  EXPECT_THAT(suite_.Preview({"CleanUp"}, {}).out,
              HasSubstr("would delete 3 of 10 shared items of tempAttachments (30.0 %)"));
  EXPECT_THAT(suite_.Run({"CleanUp"}, {"--limit", "29%"}).err,
              HasSubstr("3 of 10 files of tempAttachments, 2 allowed"));
  EXPECT_THAT(suite_.Run({"CleanUp"}, {"--limit", "2"}).err,
              HasSubstr("3 files of tempAttachments, 2 allowed"));
  const Outcome allowed = suite_.Run({"CleanUp"}, {"--limit", "100%"});
  EXPECT_EQ(allowed.exitCode, 0) << allowed.err;
  EXPECT_EQ(std::distance(fs::directory_iterator(shared / "tempAttachments"), {}), 7);
  EXPECT_THAT(suite_.Journals(), HasSubstr(R"("tempAttachments":3)"));
}

// The suite changes when the job has been previewed and cannot yet delete anything: another session has
// begun to write to the embedded database.
class LimitLatchTest : public RunLimitTest {
 protected:
  LimitLatchTest() {
    // However slow the test is, a run that it holds up waits for it.
    const fs::path file = suite_.Home() / "config/siteConfiguration.xml";
    const std::string database = "orvane.sqlite";
    std::string site = TemporaryFolder::Read(file);
    site.insert(site.find(database) + database.size(), ";Timeout=300");
    std::ofstream(file, std::ios::binary) << site;
    suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2030-01-01 00:00:00', PENDINGQUESTIONS = 0");
  }

  // `line` is one of the run's journal, behind which it waits.
  template <class Change>
  Outcome RunWhile(const Strings& words, const std::string& line, const Change& change) const {
    SqliteDatabase other(suite_.DatabaseFile());
    other.Run("BEGIN IMMEDIATE");
    RunningHost run(suite_.Words("run", words), suite_.Environment());
    while (suite_.Journals().find("\"op\":\"" + line + "\"") == std::string::npos) std::this_thread::yield();
    // Rows that the job has read are read anew when they are older than this.
    std::this_thread::sleep_for(ADODB::engine::Freshness::kLimit * 2);
    change(other);
    other.Run("COMMIT");
    return run.Wait();
  }

  long Rows(const std::string& from) const {
    return std::stol(SqliteDatabase(suite_.DatabaseFile()).Value("SELECT count(*) FROM " + from));
  }

  std::vector<nlohmann::json> Lines() const {
    std::vector<nlohmann::json> lines;
    std::istringstream text(suite_.Journals());
    for (std::string line; std::getline(text, line);) lines.push_back(nlohmann::json::parse(line));
    return lines;
  }

  static void MakeAllDue(SqliteDatabase& database) {
    database.Run("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00'");
  }
};

TEST_F(LimitLatchTest, StopsTheRunWhenRowsHaveComeDueSinceThePreview) {
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00' WHERE PROSPECTID % 500 = 0");
  ASSERT_EQ(Rows("PROSPECT"), 200);
  const Outcome outcome =
      RunWhile({"--limit", "30", "DormantUserExpiry", "CleanUp"}, "row.delete", MakeAllDue);
  EXPECT_EQ(outcome.exitCode, 77) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("the limit of 30 is reached in PROSPECT: 30 deleted, 20 foretold; "
                                     "stopped at a safe point\n"));
  EXPECT_EQ(Rows("PROSPECT"), 170);
  const auto lines = Lines();
  EXPECT_EQ(lines.back()["op"], "run.end");
  EXPECT_EQ(lines.back()["exit"], 77);
  EXPECT_THAT(lines[lines.size() - 2]["text"].get<std::string>(), HasSubstr("the limit of 30 is reached"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("CleanUp"))) << "behind a stop no job runs";
}

TEST_F(LimitLatchTest, AShareIsOneOfWhatThereWas) {
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00' WHERE PROSPECTID % 500 = 0");
  const Outcome outcome = RunWhile({"--limit", "15%", "DormantUserExpiry"}, "row.delete", MakeAllDue);
  EXPECT_EQ(outcome.exitCode, 77) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("30 deleted, 20 foretold"));
  EXPECT_EQ(Rows("PROSPECT"), 170);
}

TEST_F(LimitLatchTest, LetsARunThatStaysBelowTheLimitGoOn) {
  suite_.Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00' WHERE PROSPECTID = 100");
  const Outcome outcome =
      RunWhile({"--limit", "10", "DormantUserExpiry"}, "row.delete", [](SqliteDatabase& database) {
        database.Run("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00' WHERE PROSPECTID <= 450");
      });
  EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
  EXPECT_EQ(Rows("PROSPECT"), 192);
}

// The sweep of attached files, which is a unit: no other follows the one in which the limit is reached. It
// comes behind the pages that are left over and the drafts, at which the run waits.
class LimitLatchOnFoldersTest : public LimitLatchTest {
 protected:
  LimitLatchOnFoldersTest() {
    suite_.Sql("DELETE FROM DATAFILES; UPDATE QUESTIONS SET Q_STATUS = 100 WHERE Q_STATUS = 0");
    fs::remove_all(suite_.Home() / "Data/CHAT");
    fs::remove_all(attachments_);
    fs::create_directory(attachments_);
    std::ofstream(suite_.Home() / "Data/HTML/left over.htm") << "<html/>";
  }

  void Attach(SqliteDatabase& database, int from, int to) const {
    for (int id = from; id < to; ++id) {
      const fs::path folder = attachments_ / (std::to_string(id) + "Q");
      fs::create_directories(folder);
      std::ofstream(folder / "a.txt") << "x";
      database.Run("INSERT INTO DATAFILES(ID1, FILENAME, FILETYPE, LASTUPLOAD) VALUES(" + std::to_string(id) +
                   ", 'a.txt', 1, '2001-01-01 00:00:00')");
    }
  }

  const fs::path attachments_ = suite_.Home() / "Data/SRATTACHMENTS";
};

TEST_F(LimitLatchOnFoldersTest, StopsTheRunWhenFilesAreAddedToAFolder) {
  {
    SqliteDatabase database(suite_.DatabaseFile());
    Attach(database, 1, 4);
  }
  const Outcome outcome = RunWhile({"--limit", "10", "CleanUp", "DormantUserExpiry"}, "file.delete",
                                   [&](SqliteDatabase& database) { Attach(database, 4, 10); });
  EXPECT_EQ(outcome.exitCode, 77) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.err,
              HasSubstr("the limit of 10 is reached in Data/SRATTACHMENTS: 18 deleted, 6 foretold"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("DormantUserExpiry")));
  EXPECT_EQ(Lines().back()["exit"], 77);
}

TEST_F(LimitLatchOnFoldersTest, AShareIsOneOfAllThatLiesInTheFolderHoweverDeep) {
  {
    SqliteDatabase database(suite_.DatabaseFile());
    Attach(database, 1, 6);
    Attach(database, 6, 11);
    database.Run("UPDATE DATAFILES SET LASTUPLOAD = '2030-01-01 00:00:00' WHERE ID1 > 5");
  }
  const Outcome told = suite_.Preview({"CleanUp"}, {});
  EXPECT_THAT(told.out, HasSubstr("would delete 5 of 10 files in Data/SRATTACHMENTS (50.0 %)"));
  EXPECT_THAT(told.out, HasSubstr("would delete 5 of 10 folders in Data/SRATTACHMENTS (50.0 %)"));
  EXPECT_THAT(suite_.Run({"CleanUp"}, {"--limit", "49%"}).err,
              HasSubstr("5 of 10 folders of Data/SRATTACHMENTS, 4 allowed"));
  const Outcome allowed = suite_.Run({"CleanUp"}, {"--limit", "50%"});
  EXPECT_EQ(allowed.exitCode, 0) << allowed.err;
}

TEST_F(LimitLatchOnFoldersTest, HoldsWhereNothingWasToGo) {
  std::ofstream(attachments_ / "stays.txt") << "x";
  suite_.Sql(
      "WITH RECURSIVE n(i) AS (SELECT 1001 UNION ALL SELECT i + 1 FROM n WHERE i < 1100)"
      " INSERT INTO DATAFILES(ID1, FILENAME, FILETYPE, LASTUPLOAD) SELECT i, 'a.txt', 1, '2030-01-01 "
      "00:00:00' FROM n");
  const Outcome outcome = RunWhile({"--limit", "90%", "CleanUp"}, "file.delete",
                                   [&](SqliteDatabase& database) { Attach(database, 1, 10); });
  EXPECT_EQ(outcome.exitCode, 77) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.err,
              HasSubstr("the limit of 90% is reached in Data/SRATTACHMENTS: 9 deleted, 0 foretold"));
}

}  // namespace
}  // namespace orvane_test
