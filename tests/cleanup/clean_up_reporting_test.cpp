// What reaches the suite's error log, and what a failing log does to the job.
#include "tests/cleanup/clean_up_fixture.hpp"
#include "tests/doubles/broken_log.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CleanUpReportingTest : public CleanUpTest {};

TEST_F(CleanUpReportingTest, AHeldFileGivesTheMessageThatOperatorsKnow) {
  AddFile("DispatchFiles/a");
  disk_->SetHeld("/suite/home/Data/DispatchFiles/a");
  RunWithAges();
  ASSERT_EQ(environment_.log->size(), 1u);
  EXPECT_EQ(
      environment_.log->front().message,
      "ORVProcess.cleanup.DeletedispatchXmlFiles caught: Permission denied (70). Additional information: "
      "Permission denied");
  EXPECT_EQ(environment_.log->front().code, 0);
}

TEST_F(CleanUpReportingTest, AnEntryNamesWhoRaisedTheError) {
  OnAWebFarm();
  AddFile("ANALYSIS/a");
  farm_->before = [] { throw automation::Error(7000, "OrvCommonMTS.FileHandling", "down"); };
  Run();
  ASSERT_EQ(environment_.log->size(), 4u);
  EXPECT_EQ((*environment_.log)[0],
            (LogEntry{"OrvaneProcess", ObjectRequired("ORVProcess.cleanup.DeleteAnalysisFiles"), 0}));
  EXPECT_EQ((*environment_.log)[1].errorSource, "OrvCommonMTS.FileHandling");
}

TEST_F(CleanUpReportingTest, ADatabasesMessageStandsTwiceInTheEntry) {
  environment_.adodb->before = [](std::string_view step) {
    if (step == "Connection.Execute")
      throw automation::Error(-2147217900, "SQLite", "no such table: PREVIEW");
  };
  Run();
  EXPECT_THAT(*environment_.log,
              ElementsAre(LogEntry{"SQLite",
                                   "ORVPROCESS.CLEANUP.DELETEPREVIEWS caught: no such table: PREVIEW "
                                   "(-2147217900). Additional information: no such table: PREVIEW",
                                   0}));
}

TEST_F(CleanUpReportingTest, AConnectionThatCannotBeOpenedIsReportedWithoutAdditionalInformation) {
  environment_.adodb->before = [](std::string_view step) {
    if (step == "Connection.Open") throw automation::Error(-2147467259, "SQLite", "unable to open");
  };
  Run();
  EXPECT_THAT(Messages(),
              ElementsAre("METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: "
                          "unable to open(-2147467259).",
                          "Orvane.Cleanup.StartRun caught: unable to open (-2147467259)."));
  EXPECT_FALSE(disk_->Exists("/suite/OrvLog"));
}

TEST_F(CleanUpReportingTest, InsideAContextTheLogIsCreatedThroughIt) {
  const auto context = environment_.EnterObjectContext();
  AddFile("ANALYSIS/a");
  Run();
  EXPECT_THAT(context->created, testing::Contains("Vantrel.Log"));
  EXPECT_THAT(Messages(), ElementsAre(ObjectRequired("ORVProcess.cleanup.DeleteAnalysisFiles")));
}

TEST_F(CleanUpReportingTest, AContextThatCannotMakeTheLogEndsTheJob) {
  const auto context = environment_.EnterObjectContext();
  AddFile("CHAT/a");
  AddFile("HTML/a.htm");
  int queries = 0;
  environment_.adodb->before = [&](std::string_view step) {
    if (step == "Recordset.Open" && ++queries == 2) context->answersNull = true;  // the chat sessions
  };
  Run();
  EXPECT_TRUE(Exists("HTML/a.htm"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(CleanUpReportingTest, WithoutALogTheFirstErrorEndsTheWholeJob) {
  auto entries = std::make_shared<std::vector<LogEntry>>();
  environment_.logFactory = [entries] { return std::make_shared<BrokenLog>(entries); };
  AddFile("ANALYSIS/a");
  AddFile("HTML/a.htm");
  Run();
  EXPECT_TRUE(Exists("HTML/a.htm"));
  EXPECT_EQ(RunLog(), kStartBanner);
  EXPECT_THAT(Executed(), IsEmpty());
  EXPECT_EQ(environment_.adodb->openConnections, 0);
  // The sweep's report, then the job's and at last the run's, each of them about the failure of the one
  // before.
  EXPECT_THAT(
      *entries,
      ElementsAre(LogEntry{"OrvaneProcess", ObjectRequired("ORVProcess.cleanup.DeleteAnalysisFiles"), 0},
                  LogEntry{"Vantrel.Log",
                           "OrvProcess.cleanup.CleanupFilesandRecords caught: Disk full (61). Additional "
                           "information: Disk full",
                           0},
                  LogEntry{"Vantrel.Log", "Orvane.Cleanup.StartRun caught: Disk full (61).", 0}));
}

TEST_F(CleanUpReportingTest, ALogThatFailsInsideTheNestedChatSweepPassesThroughBothReports) {
  auto entries = std::make_shared<std::vector<LogEntry>>();
  environment_.logFactory = [entries] { return std::make_shared<BrokenLog>(entries); };
  AddFile("CHAT/a");
  Run();
  ASSERT_EQ(entries->size(), 4u);
  EXPECT_EQ((*entries)[1].message,
            "Orvprocess.cleanup.DeleteChatSession caught: Disk full (61). Additional information: Disk full");
}

TEST_F(CleanUpReportingTest, ALogThatCannotBeCreatedEndsTheJobInTheSameWay) {
  environment_.logFactory = []() -> automation::ObjectPtr {
    throw automation::Error(automation::ErrorNumber::CannotCreateObject);
  };
  AddFile("ANALYSIS/a");
  AddFile("HTML/a.htm");
  Run();
  EXPECT_TRUE(Exists("HTML/a.htm"));
  EXPECT_EQ(RunLog(), kStartBanner);
  EXPECT_EQ(environment_.adodb->openConnections, 0);
}

TEST_F(CleanUpReportingTest, ALogThatIsNeverNeededDoesNoHarm) {
  environment_.logFactory = []() -> automation::ObjectPtr {
    throw automation::Error(automation::ErrorNumber::CannotCreateObject);
  };
  AddFile("HTML/a.htm");
  Run();
  EXPECT_FALSE(Exists("HTML/a.htm"));
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
}

}  // namespace
}  // namespace orvane_test
