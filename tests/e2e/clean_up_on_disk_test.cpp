// OrvaneProcess.CleanUp through the real program: what a real disk adds to the rules.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/clean_up_suite.hpp"

namespace {

namespace fs = std::filesystem;
using orvane_test::CleanUpSuite;
using orvane_test::DateText;
using orvane_test::kCleanUpLog;
using orvane_test::kHour;
using orvane_test::ObjectRequiredEntry;
using orvane_test::Outcome;
using orvane_test::WithoutTimes;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CleanUpOnDiskTest : public testing::Test {
 protected:
  CleanUpSuite suite_;
};

TEST_F(CleanUpOnDiskTest, LeavesExactlyWhatTheRulesLeave) {
  suite_.AddFile("ANALYSIS/old.txt", 200);
  suite_.AddFile("ARCHIVES/old.txt", 200);
  suite_.AddFile("DispatchFiles/old.xml", 200);
  suite_.AddFile("DispatchFiles/new.xml", 1);
  suite_.AddFile("tempAttachments/old.xml", 200);
  suite_.AddFile("HTML/old.htm", 200);
  suite_.AddFile("HTML/new.htm", 0);
  suite_.AddFile("HTML/sub/kept.htm", 200);
  suite_.AddFile("TS/EndUser/Trees/old.txt", 200);
  suite_.AddFile("CHAT/live.txt", 200);
  suite_.AddFile("CHAT/orphan.txt", 0);
  suite_.AddFile("SRATTACHMENTS/17Q/a.txt");
  suite_.AddFile("SRATTACHMENTS/18Q/Alt.TXT");
  suite_.AddFile("SRATTACHMENTS/19A/answer.txt");
  suite_.AddFile("SRATTACHMENTS/19A/other.txt");
  suite_.AddFile("SRATTACHMENTS/20Q/young.txt");
  suite_.AddFile("SRATTACHMENTS/21Q/loose.txt", 5000);
  const std::string old = DateText(-30 * kHour), young = DateText(-20 * kHour);
  suite_.database.Execute(
      "INSERT INTO PREVIEW VALUES (1, 'draft');"
      "INSERT INTO CHATSESSIONS VALUES ('live.txt');"
      "INSERT INTO QUESTIONS VALUES (17, 0, '" +
      old + "', 'never submitted'), (18, 160, '" + old +
      "', 'x'), "
      "(20, 0, '" +
      young +
      "', 'being written');"
      "INSERT INTO DATAFILES VALUES (17, 'a.txt', 1, '" +
      young + "'), (18, 'alt.txt', 1, '" + old +
      "'), "
      "(19, 'answer.txt', 3, '" +
      old + "'), (20, 'young.txt', 1, '" + young + "');");

  const Outcome outcome = suite_.Run();

  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(suite_.Files(),
              ElementsAre("ANALYSIS/old.txt", "ARCHIVES/old.txt", "CHAT/live.txt", "DispatchFiles/new.xml",
                          "DispatchFiles/old.xml", "HTML/sub/kept.htm", "SRATTACHMENTS/19A/other.txt",
                          "SRATTACHMENTS/20Q/young.txt", "SRATTACHMENTS/21Q/loose.txt",
                          "TS/EndUser/Trees/old.txt", "tempAttachments/old.xml"));
  EXPECT_FALSE(suite_.Exists("SRATTACHMENTS/17Q"));
  EXPECT_FALSE(suite_.Exists("SRATTACHMENTS/18Q"));
  EXPECT_THAT(suite_.database.Rows("SELECT * FROM PREVIEW"), IsEmpty());
  EXPECT_THAT(suite_.database.Rows("SELECT Q_ID FROM QUESTIONS ORDER BY Q_ID"), ElementsAre("18", "20"));
  EXPECT_THAT(suite_.database.Rows("SELECT ID1, FILENAME FROM DATAFILES ORDER BY ID1"),
              ElementsAre("20|young.txt"));
  EXPECT_THAT(suite_.suite.ErrorLog(),
              ElementsAre(ObjectRequiredEntry("ORVProcess.cleanup.DeleteAnalysisFiles"),
                          ObjectRequiredEntry("ORVProcess.cleanup.DeleteArchiveFiles"),
                          ObjectRequiredEntry("ORVProcess.cleanup.DeletedispatchXmlFiles"),
                          ObjectRequiredEntry("ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles")));
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
}

TEST_F(CleanUpOnDiskTest, AnEmptySuiteIsSweptWithoutAnEntryInTheErrorLog) {
  EXPECT_EQ(suite_.Run().exitCode, 0);
  EXPECT_THAT(suite_.suite.ErrorLog(), IsEmpty());
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
}

TEST_F(CleanUpOnDiskTest, ALinkInsideAnAttachmentFolderGoesAndWhatItLeadsToStays) {
  suite_.AddFile("SRATTACHMENTS/17Q/deep/a.txt");
  suite_.suite.Folder().Write("precious/ledger.txt", "x");
  fs::create_directory_symlink("../../../../../precious",
                               suite_.suite.Home() / "Data/SRATTACHMENTS/17Q/deep/link");
  suite_.database.Execute("INSERT INTO QUESTIONS VALUES (17, 0, '" + DateText(-30 * kHour) + "', '')");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_FALSE(suite_.Exists("SRATTACHMENTS/17Q"));
  EXPECT_TRUE(fs::exists(suite_.suite.Folder().Path() / "precious/ledger.txt"));
  EXPECT_THAT(suite_.suite.ErrorLog(), IsEmpty());
}

TEST_F(CleanUpOnDiskTest, AnAttachmentFolderThatIsALinkGoesAsALink) {
  suite_.suite.Folder().Write("precious/ledger.txt", "x");
  fs::create_directories(suite_.suite.Home() / "Data/SRATTACHMENTS");
  fs::create_directory_symlink("../../../precious", suite_.suite.Home() / "Data/SRATTACHMENTS/17Q");
  suite_.database.Execute("INSERT INTO QUESTIONS VALUES (17, 0, '" + DateText(-30 * kHour) + "', '')");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_FALSE(suite_.Exists("SRATTACHMENTS/17Q"));
  EXPECT_TRUE(fs::exists(suite_.suite.Folder().Path() / "precious/ledger.txt"));
}

TEST_F(CleanUpOnDiskTest, NoAttachmentIsDeletedBehindALinkInItsFoldersPlace) {
  suite_.suite.Folder().Write("precious/report.txt", "x");
  suite_.suite.Folder().Write("precious/other.txt", "x");
  suite_.AddFile("SRATTACHMENTS/17Q/old.txt");
  suite_.AddFile("SRATTACHMENTS/19Q/old.txt");
  fs::create_directory_symlink("../../../precious", suite_.suite.Home() / "Data/SRATTACHMENTS/18Q");
  const std::string old = DateText(-30 * kHour);
  for (const char* file : {"17, 'old.txt'", "18, 'report.txt'", "19, 'old.txt'"}) {
    suite_.database.Execute("INSERT INTO DATAFILES VALUES (" + std::string(file) + ", 1, '" + old + "')");
  }

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_TRUE(fs::exists(suite_.suite.Folder().Path() / "precious/report.txt"));
  EXPECT_TRUE(fs::exists(suite_.suite.Folder().Path() / "precious/other.txt"));
  EXPECT_THAT(suite_.Files(), IsEmpty());
  EXPECT_FALSE(suite_.Exists("SRATTACHMENTS/18Q"));
  EXPECT_THAT(suite_.database.Rows("SELECT * FROM DATAFILES"), IsEmpty());
  EXPECT_THAT(suite_.suite.ErrorLog(), IsEmpty());
}

// An operator may keep a folder of the suite on another disk.
TEST_F(CleanUpOnDiskTest, AFolderOfTheSuiteThatIsALinkIsSweptWhereItLies) {
  const fs::path data = suite_.suite.Home() / "Data";
  fs::create_directories(data);
  for (const char* folder : {"HTML", "CHAT"}) {
    suite_.suite.Folder().Write(fs::path("disk2") / folder / "a.txt", "x");
    suite_.suite.Folder().Write(fs::path("disk2") / folder / "deep/b.txt", "x");
    fs::create_directory_symlink(fs::path("../../disk2") / folder, data / folder);
  }
  suite_.suite.Folder().Write("disk2/beside.txt", "x");
  fs::create_symlink("../beside.txt", suite_.suite.Folder().Path() / "disk2/HTML/link.txt");
  suite_.suite.Folder().Write("disk2/CHAT/live.txt", "x");
  suite_.database.Execute("INSERT INTO CHATSESSIONS VALUES ('live.txt')");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  const fs::path disk = suite_.suite.Folder().Path() / "disk2";
  EXPECT_TRUE(fs::is_symlink(data / "HTML"));
  EXPECT_TRUE(fs::is_symlink(data / "CHAT"));
  EXPECT_FALSE(fs::exists(disk / "HTML/a.txt"));
  EXPECT_FALSE(fs::exists(disk / "CHAT/a.txt"));
  EXPECT_FALSE(fs::is_symlink(disk / "HTML/link.txt"));
  for (const char* kept : {"HTML/deep/b.txt", "CHAT/deep/b.txt", "CHAT/live.txt", "beside.txt"}) {
    EXPECT_TRUE(fs::exists(disk / kept)) << kept;
  }
  EXPECT_THAT(suite_.suite.ErrorLog(), IsEmpty());
}

// Such a link is the first item of its folder, whose age cannot be rendered, like any other.
TEST_F(CleanUpOnDiskTest, ALinkThatLeadsNowhereEndsAnAgeTestedSweepAsAFileDoes) {
  const std::vector<std::string> folders{"ANALYSIS", "ARCHIVES", "DispatchFiles", "tempAttachments"};
  for (const std::string& folder : folders) {
    fs::create_directories(suite_.suite.Home() / "Data" / folder);
    fs::create_symlink("nowhere", suite_.suite.Home() / "Data" / folder / "link.xml");
  }

  EXPECT_EQ(suite_.Run().exitCode, 0);

  for (const std::string& folder : folders) {
    EXPECT_TRUE(fs::is_symlink(suite_.suite.Home() / "Data" / folder / "link.xml")) << folder;
  }
  EXPECT_THAT(suite_.suite.ErrorLog(),
              ElementsAre(ObjectRequiredEntry("ORVProcess.cleanup.DeleteAnalysisFiles"),
                          ObjectRequiredEntry("ORVProcess.cleanup.DeleteArchiveFiles"),
                          ObjectRequiredEntry("ORVProcess.cleanup.DeletedispatchXmlFiles"),
                          ObjectRequiredEntry("ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles")));
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
}

TEST_F(CleanUpOnDiskTest, FilesWithoutPermissionEndTheirSweepAndTheNextOnesRun) {
  suite_.AddFile("HTML/a.htm");
  suite_.AddFile("HTML/sealed.htm");
  suite_.AddFile("CHAT/orphan.txt");
  suite_.database.Execute(
      "INSERT INTO CHATSESSIONS VALUES ('live.txt'); INSERT INTO PREVIEW VALUES (1, 'draft')");
  fs::permissions(suite_.suite.Home() / "Data/HTML/sealed.htm",
                  fs::perms::owner_read | fs::perms::group_read);
  suite_.suite.GiveAway();
  fs::permissions(suite_.suite.Home() / "Data/CHAT", fs::perms::owner_read | fs::perms::owner_exec);

  const Outcome outcome = orvane_test::RunHostUnprivileged(
      {"run", "--home", suite_.suite.Home().string(), "OrvaneProcess.CleanUp"});

  fs::permissions(suite_.suite.Home() / "Data/CHAT", fs::perms::owner_all);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(suite_.Files(), ElementsAre("CHAT/orphan.txt", "HTML/sealed.htm"));
  EXPECT_THAT(suite_.database.Rows("SELECT * FROM PREVIEW"), IsEmpty());
  const std::string denied = " caught: Permission denied (70). Additional information: Permission denied";
  EXPECT_THAT(suite_.suite.ErrorLog(),
              ElementsAre(HasSubstr(" | Orvprocess.cleanup.DeleteChatSession" + denied),
                          HasSubstr(" | ORVProcess.cleanup.DeleteHTMLFiles" + denied)));
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
}

TEST_F(CleanUpOnDiskTest, UnusualNamesAreDeletedAndMatchedOnARealDisk) {
  const std::string longest(255, 'n');
  for (const std::string& name : {std::string("it's.htm"), std::string("Größe-日本.htm"), std::string("end "),
                                  std::string("back\\slash"), std::string("-r"), longest}) {
    suite_.AddFile("HTML/" + name);
  }
  suite_.AddFile("CHAT/Größe-日本 ");
  suite_.AddFile("CHAT/" + longest);
  suite_.database.Execute("INSERT INTO CHATSESSIONS VALUES ('Größe-日本 ')");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_THAT(suite_.Files(), ElementsAre("CHAT/Größe-日本 "));
  EXPECT_THAT(suite_.suite.ErrorLog(), IsEmpty());
}

TEST_F(CleanUpOnDiskTest, ATrailingBlankOfTheRelativePathNamesAnotherFolder) {
  suite_.SetParameter("DataFileRelativePath", "Data ");
  suite_.AddFile("HTML/beside.htm");
  suite_.suite.Folder().Write("home/Data /HTML/inside.htm", "x");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_TRUE(suite_.Exists("HTML/beside.htm"));
  EXPECT_FALSE(fs::exists(suite_.suite.Home() / "Data /HTML/inside.htm"));
}

TEST_F(CleanUpOnDiskTest, ANameWithAnApostropheKeepsTheRowsAndIsReported) {
  suite_.AddFile("SRATTACHMENTS/17Q/it's.txt");
  suite_.database.Execute("INSERT INTO DATAFILES VALUES (17, 'it''s.txt', 1, '" + DateText(-30 * kHour) +
                          "')");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_FALSE(suite_.Exists("SRATTACHMENTS/17Q"));
  EXPECT_THAT(suite_.database.Rows("SELECT FILENAME FROM DATAFILES"), ElementsAre("it's.txt"));
  EXPECT_THAT(
      suite_.suite.ErrorLog(),
      ElementsAre(HasSubstr(" | ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: ")));
}

// In SQL the two quotes would be one, and the row another customer's.
TEST_F(CleanUpOnDiskTest, ANameWithQuotesInPairsDeletesNoOtherRow) {
  suite_.database.Execute("INSERT INTO DATAFILES VALUES (17, 'it''''s.txt', 1, '" + DateText(-30 * kHour) +
                          "'), (17, 'it''s.txt', 1, '" + DateText(0) + "')");
  suite_.AddFile("SRATTACHMENTS/17Q/it''s.txt");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_THAT(suite_.database.Rows("SELECT FILENAME FROM DATAFILES ORDER BY 1"),
              ElementsAre("it''s.txt", "it's.txt"));
  EXPECT_THAT(
      suite_.suite.ErrorLog(),
      ElementsAre(AllOf(HasSubstr(" | ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: "),
                        HasSubstr("near \"s\": syntax error"))));
}

}  // namespace
