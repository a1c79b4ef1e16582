// OrvaneProcess.CleanUp through the real program, on folders and rows made by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/clean_up_suite.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

using orvane_test::Database;
using orvane_test::DateText;
using orvane_test::HandMadeSuite;
using orvane_test::kCleanUpLog;
using orvane_test::kHour;
using orvane_test::Outcome;
using orvane_test::RunHost;
using Strings = std::vector<std::string>;

class CleanUpTest : public testing::Test {
 protected:
  CleanUpTest() {
    database_.Execute(
        "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
        "CREATE TABLE PREVIEW (ID INTEGER PRIMARY KEY, NOTE TEXT);"
        "CREATE TABLE QUESTIONS (Q_ID INTEGER PRIMARY KEY, Q_STATUS INTEGER, Q_DATE DATETIME);"
        "CREATE TABLE DATAFILES (ID1 INTEGER, FILENAME VARCHAR(255), FILETYPE INTEGER, LASTUPLOAD DATETIME);"
        "CREATE TABLE CHATSESSIONS (SESSIONID VARCHAR(50));");
  }

  void SetParameters(const std::string& keepHours, const std::string& webFarm = "false",
                     const std::string& ftpPath = "") {
    database_.Execute(
        "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data'), ('KeepTemporaryFiles', '" +
        keepHours + "'), ('Webfarm Implemented', '" + webFarm + "'), ('FTPPath', '" + ftpPath + "')");
  }
  void AddFile(const std::string& name) { suite_.Folder().Write("home/Data/" + name, "x"); }

  // Every file below the data folder, and every empty folder with a "/" behind it.
  Strings Files() {
    Strings names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(suite_.Home() / "Data")) {
      const bool emptyFolder = entry.is_directory() && std::filesystem::is_empty(entry.path());
      if (entry.is_directory() && !emptyFolder) continue;
      names.push_back(std::filesystem::relative(entry.path(), suite_.Home() / "Data").string() +
                      (emptyFolder ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  Outcome Run() { return RunHost({"run", "--home", suite_.Home().string(), "OrvaneProcess.CleanUp"}); }
  void ExpectWholeRunLog() {
    const std::string ruler = std::string(53, '*') + "\r\n";
    EXPECT_EQ(orvane_test::WithoutTimes(suite_.RunLog(kCleanUpLog)),
              ruler + "Orvane NTService Log \r\n" + ruler + "Clean Up - NTService Started at : <time>\r\n" +
                  " NTService Stopped at : <time>\r\n" + ruler);
  }

  HandMadeSuite suite_;
  Database database_{suite_.DatabaseFile()};
};

TEST_F(CleanUpTest, WithoutItsSettingsOnlyTheLogIsWritten) {
  database_.Execute("INSERT INTO PREVIEW VALUES (1, 'kept')");
  AddFile("HTML/kept.htm");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Files(), Strings{"HTML/kept.htm"});
  EXPECT_EQ(database_.Rows("SELECT * FROM PREVIEW"), Strings{"1|kept"});
  EXPECT_EQ(suite_.ErrorLog(), Strings{});
  ExpectWholeRunLog();
}

TEST_F(CleanUpTest, LeavesExactlyWhatMustStay) {
  SetParameters("24");
  database_.Execute(
      "INSERT INTO PREVIEW VALUES (1, 'a'), (2, 'b');"
      "INSERT INTO CHATSESSIONS VALUES ('live.txt');"
      "INSERT INTO QUESTIONS VALUES (17, 0, '" +
      DateText(-25 * kHour) + "'), (18, 0, '" + DateText(-25 * kHour) + "'), (19, 0, '" +
      DateText(-23 * kHour) + "'), (20, 150, '" + DateText(-99 * kHour) +
      "');"
      "INSERT INTO DATAFILES VALUES (17, 'draft.txt', 1, '" +
      DateText(-25 * kHour) +
      "'),"
      " (31, 'old.txt', 1, '" +
      DateText(-48 * kHour) + "'), (31, 'young.txt', 1, '" + DateText(-1 * kHour) +
      "'),"
      " (32, 'Answer.PDF', 3, '" +
      DateText(-48 * kHour) + "'), (33, 'picture.png', 2, '" + DateText(-48 * kHour) + "')");
  for (const char* file :
       {"HTML/a.htm", "HTML/b.htm", "HTML/sub/c.htm", "CHAT/live.txt", "CHAT/orphan.txt",
        "SRATTACHMENTS/17Q/draft.txt", "SRATTACHMENTS/19Q/young.txt", "SRATTACHMENTS/31Q/old.txt",
        "SRATTACHMENTS/31Q/young.txt", "SRATTACHMENTS/32A/answer.pdf", "TS/EndUser/Trees/tree.xml"}) {
    AddFile(file);
  }

  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0);
  // 31Q held another file, so from then on no folder is removed any more: 32A stays, empty.
  EXPECT_EQ(Files(),
            (Strings{"CHAT/live.txt", "HTML/sub/c.htm", "SRATTACHMENTS/19Q/young.txt",
                     "SRATTACHMENTS/31Q/young.txt", "SRATTACHMENTS/32A/", "TS/EndUser/Trees/tree.xml"}));
  EXPECT_EQ(database_.Rows("SELECT * FROM PREVIEW"), Strings{});
  EXPECT_EQ(database_.Rows("SELECT Q_ID FROM QUESTIONS ORDER BY Q_ID"), (Strings{"19", "20"}));
  EXPECT_EQ(database_.Rows("SELECT ID1, FILENAME FROM DATAFILES ORDER BY ID1, FILENAME"),
            (Strings{"31|young.txt", "33|picture.png"}));
  EXPECT_EQ(suite_.ErrorLog(), Strings{});
  ExpectWholeRunLog();
}

TEST_F(CleanUpTest, SweepsByAgeReportAndDeleteNothing) {
  SetParameters("24");
  for (const char* file : {"ANALYSIS/a.xml", "ARCHIVES/a.xml", "CHAT/a.txt", "DispatchFiles/a.xml",
                           "DispatchFiles/b.xml", "tempAttachments/a.xml"}) {
    AddFile(file);
  }
  const Strings before = Files();
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(Files(), before);

  Strings messages;
  for (const std::string& entry : suite_.ErrorLog())
    messages.push_back(entry.substr(entry.find(" | ", 4) + 3));
  const auto report = [](const std::string& sweep) {
    return "ORVProcess.cleanup." + sweep +
           " caught: Object required (424). Additional information: Object required";
  };
  EXPECT_EQ(messages, (Strings{report("DeleteAnalysisFiles"), report("DeleteArchiveFiles"),
                               report("DeleteChatFileswithoutcomparingDatabase"),
                               report("DeletedispatchXmlFiles"), report("DeleteTempAttachmentsXMLFiles")}));
  ExpectWholeRunLog();

  const Outcome strict = RunHost({"run", "--strict", "--home", suite_.Home().string(), "CleanUp"});
  EXPECT_EQ(strict.exitCode, 0) << "these entries stand in the log of every run";
  EXPECT_NE(strict.err.find("note: OrvaneProcess.CleanUp: " + report("DeleteAnalysisFiles") + "\n"),
            std::string::npos)
      << strict.err;
  EXPECT_EQ(strict.err.find("warning: "), std::string::npos) << strict.err;
}

TEST_F(CleanUpTest, OnAWebFarmTheSharedFilesGoAndTheRowsStay) {
  const std::filesystem::path shared = suite_.Folder().Path() / "shared";
  SetParameters("24", "true", shared.string());
  database_.Execute("INSERT INTO QUESTIONS VALUES (17, 0, '" + DateText(-25 * kHour) + "')");
  suite_.Folder().Write("shared/SRATTACHMENTS/17Q/draft.txt", "x");
  suite_.Folder().Write("shared/SRATTACHMENTS/18Q/kept.txt", "x");
  AddFile("SRATTACHMENTS/17Q/draft.txt");
  for (const char* folder : {"DispatchFiles", "tempAttachments", "CHAT"}) {
    std::filesystem::create_directories(shared / folder);
  }

  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(shared / "SRATTACHMENTS/17Q"));
  EXPECT_TRUE(std::filesystem::exists(shared / "SRATTACHMENTS/18Q/kept.txt"));
  EXPECT_FALSE(std::filesystem::exists(suite_.Home() / "Data/SRATTACHMENTS/17Q"));
  EXPECT_EQ(database_.Rows("SELECT Q_ID FROM QUESTIONS"), Strings{"17"});
}

TEST_F(CleanUpTest, ATableThatIsMissingEndsItsSweepOnly) {
  SetParameters("24");
  database_.Execute("DROP TABLE CHATSESSIONS; INSERT INTO PREVIEW VALUES (1, 'a')");
  AddFile("HTML/a.htm");
  EXPECT_EQ(Run().exitCode, 0);
  ASSERT_EQ(suite_.ErrorLog().size(), 1U);
  EXPECT_NE(suite_.ErrorLog()[0].find("Orvprocess.cleanup.DeleteChatSession caught: "), std::string::npos)
      << suite_.ErrorLog()[0];
  EXPECT_EQ(database_.Rows("SELECT * FROM PREVIEW"), Strings{});
  EXPECT_EQ(Files(), Strings{"HTML/"});
  ExpectWholeRunLog();
}

TEST_F(CleanUpTest, AKeepTimeThatOverflowsEndsTheJob) {
  SetParameters("35791395");
  database_.Execute("INSERT INTO PREVIEW VALUES (1, 'kept')");
  EXPECT_EQ(Run().exitCode, 70);
  EXPECT_EQ(database_.Rows("SELECT * FROM PREVIEW"), Strings{"1|kept"});
  ASSERT_EQ(suite_.ErrorLog().size(), 1U);
  EXPECT_NE(
      suite_.ErrorLog()[0].find("OrvProcess.cleanup.CleanupFilesandRecords caught: Overflow (6). Additional "
                                "information: Overflow"),
      std::string::npos)
      << suite_.ErrorLog()[0];
}

}  // namespace
