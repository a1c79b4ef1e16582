#include "tests/cleanup/clean_up_fixture.hpp"

namespace orvane_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr int kYear = 366 * 24 * 60;

class ChatPurgeTest : public CleanUpTest {
 protected:
  const std::string kSource = "Orvprocess.cleanup.DeleteChatSession";
  const std::string kNotFound =
      "Orvprocess.cleanup.DeleteChatSession caught: Path not found (76). Additional information: Path not "
      "found";
};

TEST_F(ChatPurgeTest, SessionsAreReadByADynamicPessimisticCursor) {
  Run();
  EXPECT_THAT(environment_.adodb->recordsets,
              Contains(OpenedRecordset{"SELECT SESSIONID FROM CHATSESSIONS", ADODB::CursorType::Dynamic,
                                       ADODB::LockType::Pessimistic, ADODB::kOptionsUnspecified}));
}

TEST_F(ChatPurgeTest, FilesWithoutASessionGoAndThoseOfSessionsStayHoweverOld) {
  AddSession("s1.txt");
  AddSession("s3.txt");
  AddSession("without a file");
  AddFile("CHAT/s1.txt", kYear);
  AddFile("CHAT/s2.txt", 0);
  AddFile("CHAT/s3.txt", kYear);
  AddFile("CHAT/s3", kYear);
  AddFile("CHAT/s4.txt", kYear);
  Run();
  EXPECT_THAT(Data(), ElementsAre("CHAT", "CHAT/s1.txt", "CHAT/s3.txt"));
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_THAT(farm_->calls, IsEmpty());
}

TEST_F(ChatPurgeTest, SubfoldersAreNotTouched) {
  AddSession("s1");
  AddFile("CHAT/s1/s2");
  AddFile("CHAT/orphan/s2");
  Run();
  EXPECT_TRUE(Exists("CHAT/s1/s2"));
  EXPECT_TRUE(Exists("CHAT/orphan/s2"));
}

TEST_F(ChatPurgeTest, TheFolderIsFoundInEitherSpelling) {
  AddSession("s1");
  AddFile("chat/s1");
  AddFile("chat/s2");
  Run();
  EXPECT_TRUE(Exists("chat/s1"));
  EXPECT_FALSE(Exists("chat/s2"));
}

TEST_F(ChatPurgeTest, AMissingFolderIsAnErrorWhileThereAreSessions) {
  AddSession("s1");
  Run();
  EXPECT_THAT(Messages(), ElementsAre(kNotFound));
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
  EXPECT_EQ(environment_.adodb->openRecordsets, 0);
}

TEST_F(ChatPurgeTest, AnEmptyFolderIsNone) {
  AddSession("s1");
  AddFolder("CHAT");
  Run();
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ChatPurgeTest, WithoutAnySessionFilesAreAgedOutInsteadOfCompared) {
  AddFile("CHAT/s1");
  Run();
  EXPECT_TRUE(Exists("CHAT/s1"));
  EXPECT_THAT(Messages(),
              ElementsAre(ObjectRequired("ORVProcess.cleanup.DeleteChatFileswithoutcomparingDatabase")));
  environment_.log->clear();
  RunWithAges();
  EXPECT_FALSE(Exists("CHAT/s1"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ChatPurgeTest, WithoutAnySessionAMissingFolderIsNoError) {
  OnAWebFarm();
  Run();
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_THAT(farm_->calls, Contains("DeleteAgedFiles(ftp://farm, 1440, 14)"));
}

TEST_F(ChatPurgeTest, AnApostropheInAFileNameBreaksTheSearchAndEndsThePurge) {
  AddSession("s1");
  AddFile("CHAT/a-orphan");
  AddFile("CHAT/it's");
  AddFile("CHAT/z-orphan");
  Run();
  EXPECT_FALSE(Exists("CHAT/a-orphan"));
  EXPECT_TRUE(Exists("CHAT/it's"));
  EXPECT_TRUE(Exists("CHAT/z-orphan"));
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_THAT(Messages().front(), StartsWith(kSource + " caught: Arguments are of the wrong type"));
  EXPECT_THAT(Messages().front(), HasSubstr(" (3001). Additional information: "));
}

// Each is a session that is alive, under a name that a search could take for another text.
class ChatNameWithAQuoteTest : public ChatPurgeTest, public testing::WithParamInterface<const char*> {};

TEST_P(ChatNameWithAQuoteTest, EndsThePurgeAndDeletesNothing) {
  AddSession(GetParam());
  AddSession("chat");
  AddFile(std::string("CHAT/") + GetParam());
  AddFile("CHAT/~orphan");
  Run();
  EXPECT_TRUE(Exists(std::string("CHAT/") + GetParam()));
  EXPECT_TRUE(Exists("CHAT/~orphan"));
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_THAT(Messages().front(), StartsWith(kSource + " caught: Arguments are of the wrong type"));
}

INSTANTIATE_TEST_SUITE_P(Names, ChatNameWithAQuoteTest,
                         testing::Values("a''b", "''x''", "chat'--1", "x' --", "''", "''''", "chat'", "'chat",
                                         "chat''", "chat' ", "chat' or 'a'='a"));

TEST_F(ChatPurgeTest, UnusualNamesAreMatchedWhole) {
  AddSession("Größe-日本 ");
  AddSession("100%");
  AddFile("CHAT/Größe-日本 ");
  AddFile("CHAT/100%");
  AddFile("CHAT/100x");
  AddFile("CHAT/" + std::string(255, 'n'));
  Run();
  EXPECT_TRUE(Exists("CHAT/Größe-日本 "));
  EXPECT_TRUE(Exists("CHAT/100%"));
  EXPECT_FALSE(Exists("CHAT/100x"));
  EXPECT_FALSE(Exists("CHAT/" + std::string(255, 'n')));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ChatPurgeTest, AReadOnlyFileEndsThePurgeAtThatFile) {
  OnAWebFarm();
  AddSession("s1");
  AddFile("CHAT/a");
  AddFile("CHAT/b");
  AddFile("CHAT/c");
  disk_->SetReadOnly("/suite/home/Data/CHAT/b");
  Run();
  EXPECT_FALSE(Exists("CHAT/a"));
  EXPECT_TRUE(Exists("CHAT/b"));
  EXPECT_TRUE(Exists("CHAT/c"));
  EXPECT_THAT(
      Messages(),
      ElementsAre(kSource + " caught: Permission denied (70). Additional information: Permission denied"));
  EXPECT_THAT(farm_->calls, Not(Contains(HasSubstr("DeleteListedItems"))));
}

TEST_F(ChatPurgeTest, OnAWebFarmTheDeletedNamesAreHandedOnInAListSizedByTheFiles) {
  OnAWebFarm();
  AddSession("s1");
  AddFile("CHAT/a");
  AddFile("CHAT/b");
  AddFile("CHAT/s1");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteListedItems(ftp://farm, [a|b|], 14)"));
  // The live session's file is the first that the age test meets.
  EXPECT_THAT(Messages(), ElementsAre(ObjectRequired(kSource)));
  EXPECT_TRUE(Exists("CHAT/s1"));
}

TEST_F(ChatPurgeTest, OnAWebFarmNothingIsHandedOnWhenNothingWasDeleted) {
  OnAWebFarm();
  AddSession("s1");
  AddFile("CHAT/s1");
  Run();
  EXPECT_THAT(farm_->calls, Not(Contains(HasSubstr("DeleteListedItems"))));
  EXPECT_THAT(Messages(), ElementsAre(ObjectRequired(kSource)));
}

TEST_F(ChatPurgeTest, OnAWebFarmWithEveryFileGoneTheAgeTestHasNothingToFailOn) {
  OnAWebFarm();
  AddSession("s1");
  AddFile("CHAT/a");
  Run();
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_THAT(farm_->calls, Not(Contains("DeleteAgedFiles(ftp://farm, 1440, 14)")));
}

TEST_F(ChatPurgeTest, OnAWebFarmAnAgeWouldDeleteTheFreshFilesOfSessions) {
  OnAWebFarm();
  AddSession("fresh");
  AddSession("old");
  AddFile("CHAT/fresh", 60);
  AddFile("CHAT/old", kYear);
  RunWithAges();
  EXPECT_FALSE(Exists("CHAT/fresh"));
  EXPECT_TRUE(Exists("CHAT/old"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ChatPurgeTest, WithoutAWebFarmNothingIsAgedOutWhileThereAreSessions) {
  AddSession("s1");
  AddFile("CHAT/s1", 60);
  RunWithAges();
  EXPECT_TRUE(Exists("CHAT/s1"));
}

TEST_F(ChatPurgeTest, AFailureIsReportedAndTheDispatchSweepFollows) {
  OnAWebFarm();
  environment_.database.Run("DROP TABLE CHATSESSIONS");
  AddFile("CHAT/s1");
  Run();
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_THAT(Messages().front(), StartsWith(kSource + " caught: "));
  EXPECT_TRUE(Exists("CHAT/s1"));
  EXPECT_THAT(farm_->calls, Contains("DeleteAgedFiles(ftp://farm, 1440, 11)"));
}

TEST_F(ChatPurgeTest, ThePurgeCanBeCalledByItself) {
  AddSession("s1");
  AddFile("CHAT/s2");
  OrvaneProcess::CleanUp job;
  job.Initialize();
  job.CleanupFilesandRecords();
  EXPECT_FALSE(Exists("CHAT/s2"));
  AddFile("CHAT/s3");
  job.DeleteChatSession();
  EXPECT_FALSE(Exists("CHAT/s3"));
  job.Cleanupobjects();
}

TEST_F(ChatPurgeTest, MatchingFollowsTheDatabasesCollationForCase) {
  AddSession("Session");
  AddFile("CHAT/session");
  Run();
  // This engine tells the cases apart.
  EXPECT_FALSE(Exists("CHAT/session"));
}

}  // namespace
}  // namespace orvane_test
