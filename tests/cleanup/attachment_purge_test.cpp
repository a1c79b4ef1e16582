#include "tests/cleanup/clean_up_fixture.hpp"

namespace orvane_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// The cutoff of a run at 26 July 2004, 09:05:03 with 24 keep hours is 25 July 2004, 09:05:03.
constexpr const char* kOld = "2004-07-25 09:05:02";
constexpr const char* kAtTheCutoff = "2004-07-25 09:05:03";
constexpr const char* kYoung = "2004-07-25 09:05:04";

class NeverSubmittedQuestionsTest : public CleanUpTest {};

TEST_F(NeverSubmittedQuestionsTest, AreFoundByOneStaticReadOnlyQuery) {
  Run();
  EXPECT_THAT(environment_.adodb->recordsets,
              Contains(OpenedRecordset{
                  "SELECT * FROM QUESTIONS WHERE Q_STATUS = 0 AND Q_DATE < {ts '2004-07-25 09:05:03'}",
                  ADODB::CursorType::Static, ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified}));
}

TEST_F(NeverSubmittedQuestionsTest, GoWithTheirRowsAndFolders) {
  AddQuestion(17, 0, kOld);
  AddQuestion(18, 0, kOld);
  AddQuestion(19, 160, kOld);
  AddDataFile(17, "a.txt", 1, kYoung);
  AddDataFile(17, "a.txt", 3, kYoung);
  AddDataFile(18, "b.txt", 1, kYoung);
  AddDataFile(19, "c.txt", 1, kYoung);
  AddFile("SRATTACHMENTS/17Q/a.txt");
  AddFile("SRATTACHMENTS/17Q/deep/er/a.txt");
  AddFile("SRATTACHMENTS/17A/a.txt");
  AddFile("SRATTACHMENTS/18Q/b.txt");
  AddFile("SRATTACHMENTS/19Q/c.txt");
  Run();
  EXPECT_THAT(Questions(), ElementsAre("19"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:3:a.txt", "19:1:c.txt"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/18Q"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/17A/a.txt"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/19Q/c.txt"));
  EXPECT_THAT(Messages(), IsEmpty());
}

// Forms in which a hand-made table may hold a date, or something that is none.
struct StoredDate {
  const char* text;
  bool isOld;
};

class StoredDatesTest : public CleanUpTest, public testing::WithParamInterface<StoredDate> {};

TEST_P(StoredDatesTest, OnlyADateIsEverOlderThanTheCutoff) {
  AddQuestion(17, 0, GetParam().text);
  AddDataFile(18, "a.txt", 1, GetParam().text);
  AddFile("SRATTACHMENTS/17Q/a.txt");
  AddFile("SRATTACHMENTS/18Q/a.txt");
  Run();
  EXPECT_EQ(Questions().empty(), GetParam().isOld);
  EXPECT_EQ(DataFiles().empty(), GetParam().isOld);
  EXPECT_EQ(Exists("SRATTACHMENTS/17Q/a.txt"), !GetParam().isOld);
  EXPECT_EQ(Exists("SRATTACHMENTS/18Q/a.txt"), !GetParam().isOld);
  EXPECT_THAT(Messages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Forms, StoredDatesTest,
    testing::Values(StoredDate{kOld, true}, StoredDate{"2004-07-25", true},
                    StoredDate{"2004-07-25T09:05:02", true}, StoredDate{"2004-07-25 09:05:02.999", true},
                    StoredDate{"2004-07-25T09:05:03", false}, StoredDate{"", false}, StoredDate{"0", false},
                    StoredDate{"01/02/2030", false}, StoredDate{"01/02/2003", false},
                    StoredDate{"2003-02-31", false}, StoredDate{"2003", false}, StoredDate{"-1", false},
                    StoredDate{"2003-01-01T00:00:00Z", false}, StoredDate{"2452640.5", false}));

TEST_F(NeverSubmittedQuestionsTest, AreDeletedByOneStatementForEachTable) {
  AddQuestion(17, 0, kOld);
  AddQuestion(18, 0, kOld);
  Run();
  EXPECT_THAT(Executed(),
              ElementsAre("DELETE FROM PREVIEW ",
                          "DELETE FROM QUESTIONS WHERE  (Q_ID = 17 AND Q_STATUS=0 ) or  (Q_ID = 18 AND "
                          "Q_STATUS=0 ) ",
                          "DELETE FROM DATAFILES WHERE  (ID1 = 17 AND FILETYPE =1) or  (ID1 = 18 AND "
                          "FILETYPE =1) "));
}

TEST_F(NeverSubmittedQuestionsTest, StayWhenTheyAreNotOlderThanTheKeepPeriod) {
  AddQuestion(17, 0, kOld);
  AddQuestion(18, 0, kAtTheCutoff);
  AddQuestion(19, 0, kYoung);
  environment_.database.Run("INSERT INTO QUESTIONS VALUES (20, 0, NULL)");
  Run();
  EXPECT_THAT(Questions(), ElementsAre("18", "19", "20"));
}

TEST_F(NeverSubmittedQuestionsTest, WithoutAnyNothingIsDeletedAndNoStatementIsSent) {
  AddQuestion(19, 160, kOld);
  AddFile("SRATTACHMENTS/19Q/c.txt");
  Run();
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
  EXPECT_TRUE(Exists("SRATTACHMENTS/19Q/c.txt"));
}

TEST_F(NeverSubmittedQuestionsTest, WithoutAFolderLoseTheirRowsAllTheSame) {
  AddQuestion(17, 0, kOld);
  AddQuestion(18, 0, kOld);
  AddFile("SRATTACHMENTS/18Q/a");
  Run();
  EXPECT_THAT(Questions(), IsEmpty());
  EXPECT_FALSE(Exists("SRATTACHMENTS/18Q"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(NeverSubmittedQuestionsTest, KeysAreWrittenWithoutThousandsSeparators) {
  AddQuestion(1234567, 0, kOld);
  AddFile("SRATTACHMENTS/1234567Q/a");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/1234567Q"));
  EXPECT_THAT(Executed(), Contains("DELETE FROM QUESTIONS WHERE  (Q_ID = 1234567 AND Q_STATUS=0 ) "));
}

TEST_F(NeverSubmittedQuestionsTest, AFolderThatCannotBeDeletedEndsThePurgeBeforeAnyRowGoes) {
  AddQuestion(17, 0, kOld);
  AddQuestion(18, 0, kOld);
  AddQuestion(19, 0, kOld);
  for (const char* file : {"SRATTACHMENTS/17Q/a", "SRATTACHMENTS/18Q/a", "SRATTACHMENTS/19Q/a"})
    AddFile(file);
  disk_->SetReadOnly("/suite/home/Data/SRATTACHMENTS/18Q/a");
  Run();
  EXPECT_THAT(Questions(), ElementsAre("17", "18", "19"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/18Q/a"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/19Q/a"));
  EXPECT_THAT(Messages(),
              ElementsAre("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus caught: Permission "
                          "denied (70). Additional information: Permission denied"));
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
}

TEST_F(NeverSubmittedQuestionsTest, AFailureOfTheFirstStatementKeepsTheSecondFromBeingSent) {
  AddQuestion(17, 0, kOld);
  AddDataFile(17, "a", 1, kYoung);
  environment_.database.Run(
      "CREATE TRIGGER KEPT BEFORE DELETE ON QUESTIONS BEGIN SELECT RAISE(ABORT, 'questions are kept'); END");
  Run();
  EXPECT_THAT(Questions(), ElementsAre("17"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a"));
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_THAT(Messages().front(),
              StartsWith("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus caught: "));
  EXPECT_THAT(Messages().front(), HasSubstr("questions are kept"));
}

TEST_F(NeverSubmittedQuestionsTest, OnAWebFarmTheirFoldersAreHandedOnAndTheRowsStay) {
  OnAWebFarm();
  AddQuestion(17, 0, kOld);
  AddQuestion(18, 0, kOld);
  AddDataFile(17, "a.txt", 1, kYoung);
  AddFile("SRATTACHMENTS/17Q/a.txt");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteListedItems(ftp://farm, [17Q|18Q], 1)"));
  EXPECT_EQ(farm_->alive, 0);
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_THAT(Questions(), ElementsAre("17", "18"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a.txt"));
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
}

TEST_F(NeverSubmittedQuestionsTest, WithoutAnyTheFarmIsNotAsked) {
  OnAWebFarm();
  Run();
  EXPECT_THAT(farm_->calls, Not(Contains(HasSubstr("DeleteListedItems"))));
}

TEST_F(NeverSubmittedQuestionsTest, AFailingFarmIsReportedAndTheNextPurgeFollows) {
  OnAWebFarm();
  AddQuestion(17, 0, kOld);
  AddDataFile(18, "a", 1, kOld);
  AddFile("SRATTACHMENTS/18Q/a");
  farm_->before = [this] {
    if (farm_->calls.back().rfind("DeleteListedItems", 0) == 0) {
      throw automation::Error(7000, "OrvCommonMTS.FileHandling", "down");
    }
  };
  Run();
  EXPECT_THAT(Messages(),
              ElementsAre("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus caught: down (7000). "
                          "Additional information: down",
                          "ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: down "
                          "(7000). Additional information: down"));
}

TEST_F(NeverSubmittedQuestionsTest, AKeepPeriodThatReachesBeforeTheCalendarIsReported) {
  SetParameter("KeepTemporaryFiles", "35791394");
  AddQuestion(17, 0, "1000-01-01 00:00:00");
  Run();
  const std::string failure =
      " caught: Invalid procedure call or argument (5). Additional information: Invalid procedure call or "
      "argument";
  EXPECT_THAT(Messages(), ElementsAre("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus" + failure,
                                      "ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus" + failure));
  EXPECT_THAT(Questions(), ElementsAre("17"));
}

class OldAttachmentsTest : public CleanUpTest {
 protected:
  const std::string kSource = "ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus";
};

TEST_F(OldAttachmentsTest, AreFoundByOneStaticReadOnlyQuery) {
  Run();
  EXPECT_THAT(environment_.adodb->recordsets,
              Contains(OpenedRecordset{"SELECT ID1, FILENAME, FILETYPE FROM DATAFILES WHERE LASTUPLOAD < {ts "
                                       "'2004-07-25 09:05:03'} AND FILETYPE IN (3, 1)",
                                       ADODB::CursorType::Static, ADODB::LockType::ReadOnly,
                                       ADODB::kOptionsUnspecified}));
}

TEST_F(OldAttachmentsTest, GoWithTheirRowsAndTheFoldersThatHeldNothingElse) {
  AddDataFile(17, "Report.TXT", 1, kOld);
  AddDataFile(18, "answer.txt", 3, kOld);
  AddDataFile(19, "kept.txt", 1, kYoung);
  AddDataFile(20, "other kind", 2, kOld);
  AddFile("SRATTACHMENTS/17Q/report.txt");
  AddFile("SRATTACHMENTS/18A/Answer.txt");
  AddFile("SRATTACHMENTS/19Q/kept.txt");
  AddFile("SRATTACHMENTS/20Q/other kind");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/18A"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/19Q/kept.txt"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/20Q/other kind"));
  EXPECT_THAT(DataFiles(), ElementsAre("19:1:kept.txt", "20:2:other kind"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(OldAttachmentsTest, AreDeletedByOneStatement) {
  AddDataFile(17, "a b.txt", 1, kOld);
  AddDataFile(18, "c.txt", 3, kOld);
  AddFile("SRATTACHMENTS/17Q/a b.txt");
  AddFile("SRATTACHMENTS/18A/c.txt");
  Run();
  EXPECT_THAT(Executed(),
              ElementsAre("DELETE FROM PREVIEW ",
                          "DELETE FROM DATAFILES WHERE  (ID1 = 17 and FILENAME = 'a b.txt' and  FILETYPE "
                          "= 1 ) or  (ID1 = 18 and FILENAME = 'c.txt' and  FILETYPE = 3 ) "));
}

TEST_F(OldAttachmentsTest, StayWhenTheyAreNotOlderThanTheKeepPeriod) {
  AddDataFile(17, "a", 1, kAtTheCutoff);
  environment_.database.Run("INSERT INTO DATAFILES VALUES (18, 'b', 1, NULL)");
  Run();
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a", "18:1:b"));
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
}

TEST_F(OldAttachmentsTest, AFolderWithAnyOtherFileStaysWithThatFile) {
  AddDataFile(17, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  AddFile("SRATTACHMENTS/17Q/b");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q/a"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q/b"));
  EXPECT_THAT(DataFiles(), IsEmpty());
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(OldAttachmentsTest, AfterThatFolderNoFurtherOneIsRemovedInTheRun) {
  AddDataFile(17, "a", 1, kOld);
  AddDataFile(18, "a", 1, kOld);
  AddDataFile(19, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  AddFile("SRATTACHMENTS/18Q/a");
  AddFile("SRATTACHMENTS/18Q/other");
  AddFile("SRATTACHMENTS/19Q/a");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/19Q"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/19Q/a"));
  EXPECT_THAT(DataFiles(), IsEmpty());
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(OldAttachmentsTest, SeveralOldFilesOfOneFolderKeepTheFolder) {
  // Each is another file to the other's row.
  AddDataFile(17, "a", 1, kOld);
  AddDataFile(17, "b", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  AddFile("SRATTACHMENTS/17Q/b");
  Run();
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q/a"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q/b"));
  EXPECT_THAT(DataFiles(), IsEmpty());
}

TEST_F(OldAttachmentsTest, AFolderThatHoldsNoFileGoesWithWhatElseIsInIt) {
  AddDataFile(17, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/sub/b");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_THAT(DataFiles(), IsEmpty());
}

TEST_F(OldAttachmentsTest, AMissingFolderEndsThePurgeWhileOnlyMatchingFilesWereSeen) {
  AddDataFile(17, "a", 1, kOld);
  AddDataFile(18, "a", 1, kOld);
  AddDataFile(19, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  AddFile("SRATTACHMENTS/19Q/a");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/19Q/a"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a", "18:1:a", "19:1:a"));
  EXPECT_THAT(Messages(),
              ElementsAre(kSource + " caught: Path not found (76). Additional information: Path not found"));
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
}

TEST_F(OldAttachmentsTest, OnAWebFarmAMissingFolderKeepsTheListFromBeingHandedOn) {
  OnAWebFarm();
  AddDataFile(17, "a.txt", 1, kOld);
  AddDataFile(18, "b.txt", 1, kOld);
  AddFile("SRATTACHMENTS/18Q/b.txt");
  Run();
  EXPECT_THAT(Messages(),
              Contains("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: Path not "
                       "found (76). Additional information: Path not found"));
  EXPECT_THAT(farm_->calls, Not(Contains(HasSubstr("DeleteListedItems"))));
  EXPECT_TRUE(Exists("SRATTACHMENTS/18Q/b.txt"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a.txt", "18:1:b.txt"));
}

TEST_F(OldAttachmentsTest, OnAWebFarmAMissingFolderIsHandedOnOnceAnotherFileWasSeen) {
  OnAWebFarm();
  AddDataFile(17, "a.txt", 1, kOld);
  AddDataFile(18, "b.txt", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/other.txt");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteListedItems(ftp://farm, [17Q\\a.txt|18Q\\b.txt], 15)"));
}

TEST_F(OldAttachmentsTest, AMissingFolderIsPassedOverOnceAnotherFileWasSeen) {
  AddDataFile(17, "a", 1, kOld);
  AddDataFile(18, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/other");
  Run();
  EXPECT_THAT(DataFiles(), IsEmpty());
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(OldAttachmentsTest, AnApostropheInAFileNameBreaksTheStatementAndNoRowGoes) {
  AddDataFile(17, "a", 1, kOld);
  AddDataFile(18, "it's", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  AddFile("SRATTACHMENTS/18Q/it's");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/18Q"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a", "18:1:it's"));
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_THAT(Messages().front(), StartsWith(kSource + " caught: "));
}

TEST_F(OldAttachmentsTest, AFileNameCannotBecomePartOfTheStatement) {
  AddDataFile(17, "x' or 'a'='a", 1, kOld);
  AddDataFile(18, "kept", 1, kYoung);
  AddFolder("SRATTACHMENTS/17Q");
  Run();
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:x' or 'a'='a", "18:1:kept"));
  ASSERT_EQ(Messages().size(), 1u);
}

TEST_F(OldAttachmentsTest, UnusualNamesAreMatchedLikeAnyOther) {
  AddDataFile(17, "Größe-日本.txt", 1, kOld);
  AddDataFile(18, "end ", 3, kOld);
  AddFile("SRATTACHMENTS/17Q/Größe-日本.txt");
  AddFile("SRATTACHMENTS/18A/end ");
  Run();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/18A"));
  EXPECT_THAT(DataFiles(), IsEmpty());
}

TEST_F(OldAttachmentsTest, ANameThatPointsOutOfItsFolderDeletesNothingThere) {
  AddDataFile(17, "..\\..\\..\\precious", 1, kOld);
  disk_->AddFile("/suite/home/precious", "x");
  AddFile("SRATTACHMENTS/17Q/other");
  Run();
  EXPECT_TRUE(disk_->Exists("/suite/home/precious"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q/other"));
}

TEST_F(OldAttachmentsTest, AHeldFileEndsThePurge) {
  AddDataFile(17, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  disk_->SetHeld("/suite/home/Data/SRATTACHMENTS/17Q/a");
  Run();
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a"));
  EXPECT_THAT(
      Messages(),
      ElementsAre(kSource + " caught: Permission denied (70). Additional information: Permission denied"));
}

TEST_F(OldAttachmentsTest, OnAWebFarmTooNoFolderIsRemovedAfterOneWithAnotherFile) {
  OnAWebFarm();
  AddDataFile(17, "a", 1, kOld);
  AddDataFile(18, "a", 1, kOld);
  AddFile("SRATTACHMENTS/17Q/a");
  AddFile("SRATTACHMENTS/17Q/other");
  AddFile("SRATTACHMENTS/18Q/a");
  Run();
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q/other"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/18Q"));
  EXPECT_FALSE(Exists("SRATTACHMENTS/18Q/a"));
}

TEST_F(OldAttachmentsTest, OnAWebFarmTheyAreHandedOnAndTheRowsStay) {
  OnAWebFarm();
  AddDataFile(17, "a.txt", 1, kOld);
  AddDataFile(18, "b.txt", 3, kOld);
  AddFile("SRATTACHMENTS/17Q/a.txt");
  AddFile("SRATTACHMENTS/18A/b.txt");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteListedItems(ftp://farm, [17Q\\a.txt|18A\\b.txt], 15)"));
  EXPECT_EQ(farm_->alive, 0);
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_THAT(DataFiles(), ElementsAre("17:1:a.txt", "18:3:b.txt"));
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
}

}  // namespace
}  // namespace orvane_test
