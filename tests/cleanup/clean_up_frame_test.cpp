// The frame of a run: settings, data root, order of the sweeps, run log.
#include "platform/automation/safe_point.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "tests/cleanup/clean_up_fixture.hpp"
#include "tests/support/private_member.hpp"

namespace orvane_test {

struct WriteJobLog {
  using Member = void (OrvaneProcess::CleanUp::*)(std::int16_t);
  friend Member MemberOf(WriteJobLog);
};
template struct PrivateMember<WriteJobLog, &OrvaneProcess::CleanUp::WriteJobLog>;

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kOverflow =
    "OrvProcess.cleanup.CleanupFilesandRecords caught: Overflow (6). Additional information: Overflow";
constexpr const char* kMismatch =
    "OrvProcess.cleanup.CleanupFilesandRecords caught: Type mismatch (13). Additional information: Type "
    "mismatch";

TEST_F(CleanUpTest, ARunIsBracketedByTheLinesOfItsLog) {
  Run();
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(CleanUpTest, ASecondRunOfTheDayAppendsToTheLog) {
  Run();
  Run();
  const std::string once = std::string(kStartBanner) + std::string(kStopLine);
  EXPECT_EQ(RunLog(), once + once);
}

TEST_F(CleanUpTest, ARunAcrossMidnightStopsInTheNextDaysLog) {
  environment_.now = automation::DateTime::FromParts(
      {.year = 2004, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59});
  environment_.adodb->before = [this](std::string_view step) {
    if (step == "Connection.Execute") {
      environment_.now = automation::DateTime::FromParts({.year = 2005, .month = 1, .day = 1});
    }
  };
  Run();
  EXPECT_THAT(disk_->Bytes("/suite/OrvLog/OrvCleanUpSvc_log_2004_12_31.txt"),
              HasSubstr("Clean Up - NTService Started at : 12-31-2004 23:59:59\r\n"));
  EXPECT_EQ(disk_->Bytes("/suite/OrvLog/OrvCleanUpSvc_log_2005_1_1.txt"),
            " NTService Stopped at : 1-1-2005 00:00:00\r\n"
            "*****************************************************\r\n");
}

TEST_F(CleanUpTest, TheStopLineMakesTheLogFolderAnewWhenItWentAwayDuringTheRun) {
  environment_.adodb->before = [](std::string_view step) {
    if (step == "Connection.Execute") {
      automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject")
          ->DeleteFolder("/suite/OrvLog", true);
    }
  };
  Run();
  EXPECT_EQ(RunLog(), kStopLine);
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(CleanUpTest, ALineOfAnotherKindIsNotWritten) {
  OrvaneProcess::CleanUp job;
  job.Initialize();
  for (const int kind : {0, 3, -1}) (job.*MemberOf(WriteJobLog()))(static_cast<std::int16_t>(kind));
  EXPECT_FALSE(disk_->Exists(kRunLog));
  (job.*MemberOf(WriteJobLog()))(2);
  EXPECT_EQ(RunLog(), kStopLine);
  job.Cleanupobjects();
}

TEST_F(CleanUpTest, TheConfigurationForTheRunLogIsCreatedDirectlyEvenInsideAContext) {
  const auto context = environment_.EnterObjectContext();
  RemoveParameter("DataFileRelativePath");
  RemoveParameter("KeepTemporaryFiles");
  RemoveParameter("FTPPath");
  Run();
  EXPECT_THAT(context->created, ElementsAre("Vantrel.Configuration"));  // the connection's
  EXPECT_EQ(environment_.configuration->created, 3);                    // and one for each write
}

TEST_F(CleanUpTest, WithoutAnyOfTheFourParametersNoSweepRuns) {
  environment_.database.Run("DELETE FROM PARAMETERS");
  SetParameter("ArchiveAfter", "7");
  environment_.database.Run("INSERT INTO PREVIEW VALUES (1, '2004-07-26 09:00:00')");
  AddFile("HTML/a.htm");
  Run();
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_THAT(Executed(), IsEmpty());
  EXPECT_TRUE(Exists("HTML/a.htm"));
  EXPECT_EQ(environment_.adodb->openRecordsets, 0);
  EXPECT_EQ(environment_.adodb->openConnections, 0);
}

TEST_F(CleanUpTest, TheParametersAreReadByOneFixedStatement) {
  Run();
  ASSERT_FALSE(environment_.adodb->recordsets.empty());
  EXPECT_EQ(environment_.adodb->recordsets.front(),
            (OpenedRecordset{
                "Select PARAM_NAME, PARAM_VALUE from PARAMETERS where PARAM_NAME IN "
                "('KeepTemporaryFiles','FTPPath', 'Webfarm Implemented', 'DataFileRelativePath') ",
                ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified}));
}

TEST_F(CleanUpTest, ARunUsesOneConnectionAndLeavesNothingOpen) {
  Run();
  EXPECT_EQ(environment_.adodb->connectionStrings.size(), 1u);
  EXPECT_EQ(environment_.adodb->openConnections, 0);
  EXPECT_EQ(environment_.adodb->openRecordsets, 0);
}

// Every sweep is made to fail, so that the error log shows which of them ran, and in which order.
TEST_F(CleanUpTest, TheSweepsFollowEachOtherInTheirFixedOrderAndEachReportsUnderItsSource) {
  OnAWebFarm();
  AddFile("ANALYSIS/a");
  AddFile("ARCHIVES/a");
  AddFile("CHAT/a");
  AddFile("DispatchFiles/a");
  AddFile("HTML/a");
  disk_->SetHeld("/suite/home/Data/HTML/a");
  environment_.database.Run("DROP TABLE PREVIEW");
  AddQuestion(17, 0, "2004-07-01 00:00:00");
  AddFile("SRATTACHMENTS/17Q/a");
  disk_->SetHeld("/suite/home/Data/SRATTACHMENTS/17Q/a");
  AddDataFile(18, "a", 1, "2004-07-01 00:00:00");
  AddFile("tempAttachments/a");
  AddFile("TS/EndUser/Trees/a");
  Run();

  const std::vector<std::string> messages = Messages();
  ASSERT_EQ(messages.size(), 11u);
  EXPECT_EQ(messages[0], ObjectRequired("ORVProcess.cleanup.DeleteAnalysisFiles"));
  EXPECT_EQ(messages[1], ObjectRequired("ORVProcess.cleanup.DeleteArchiveFiles"));
  EXPECT_EQ(messages[2], ObjectRequired("ORVProcess.cleanup.DeleteChatFileswithoutcomparingDatabase"));
  EXPECT_EQ(messages[3], ObjectRequired("ORVProcess.cleanup.DeletedispatchXmlFiles"));
  EXPECT_EQ(messages[4],
            "ORVProcess.cleanup.DeleteHTMLFiles caught: Permission denied (70). Additional information: "
            "Permission denied");
  EXPECT_THAT(messages[5], testing::StartsWith("ORVPROCESS.CLEANUP.DELETEPREVIEWS caught: "));
  EXPECT_EQ(
      messages[6],
      "ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus caught: Permission denied (70). Additional "
      "information: Permission denied");
  EXPECT_EQ(
      messages[7],
      "ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: Path not found (76). Additional "
      "information: Path not found");
  // The sweep of the attachment folders shares its source with the one of the archive files.
  EXPECT_EQ(messages[8], ObjectRequired("ORVProcess.cleanup.DeleteArchiveFiles"));
  EXPECT_EQ(messages[9], ObjectRequired("ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles"));
  EXPECT_EQ(messages[10], ObjectRequired("ORVProcess.cleanup.DeleteTroubleShootingFiles"));
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
}

TEST_F(CleanUpTest, EveryPreviewGoesOnEveryRunWhateverItsAge) {
  environment_.database.Run("INSERT INTO PREVIEW VALUES (1, '2004-07-26 09:05:00'), (2, NULL)");
  Run();
  EXPECT_THAT(Executed(), ElementsAre("DELETE FROM PREVIEW "));
  EXPECT_THAT(environment_.database.Rows("SELECT PREVIEWID FROM PREVIEW"), IsEmpty());
}

TEST_F(CleanUpTest, TheKeepHoursAreHandedOnAsMinutes) {
  OnAWebFarm();
  SetParameter("KeepTemporaryFiles", " 24 ");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteAgedFiles(ftp://farm, 1440, 11)"));
}

TEST_F(CleanUpTest, TheLongestKeepPeriodThatFitsIsTaken) {
  OnAWebFarm();
  SetParameter("KeepTemporaryFiles", "35791394");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteAgedFiles(ftp://farm, 2147483640, 11)"));
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
}

TEST_F(CleanUpTest, OneHourMoreOverflowsAndEndsTheJob) {
  AddFile("HTML/a.htm");
  for (const char* hours : {"35791395", "-35791395"}) {
    SetParameter("KeepTemporaryFiles", hours);
    environment_.log->clear();
    Run();
    EXPECT_THAT(Messages(), ElementsAre(kOverflow)) << hours;
  }
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStartBanner));
  EXPECT_TRUE(Exists("HTML/a.htm"));
  EXPECT_THAT(Executed(), IsEmpty());
}

TEST_F(CleanUpTest, AKeepPeriodThatIsNoIntegerEndsTheJob) {
  for (const auto& [hours, message] : {std::pair{"abc", kMismatch},
                                       {"", kMismatch},
                                       {" ", kMismatch},
                                       {"24 hours", kMismatch},
                                       {"99999999999", kOverflow}}) {
    SetParameter("KeepTemporaryFiles", hours);
    environment_.log->clear();
    Run();
    EXPECT_THAT(Messages(), ElementsAre(message)) << hours;
  }
}

TEST_F(CleanUpTest, ANullValueEndsTheJob) {
  environment_.database.Run(
      "UPDATE PARAMETERS SET PARAM_VALUE = NULL WHERE PARAM_NAME = 'KeepTemporaryFiles'");
  Run();
  EXPECT_THAT(Messages(),
              ElementsAre("OrvProcess.cleanup.CleanupFilesandRecords caught: Invalid use of Null (94). "
                          "Additional information: Invalid use of Null"));
}

TEST_F(CleanUpTest, AMissingKeepPeriodIsZero) {
  OnAWebFarm();
  RemoveParameter("KeepTemporaryFiles");
  Run();
  EXPECT_THAT(farm_->calls, Contains("DeleteAgedFiles(ftp://farm, 0, 11)"));
}

TEST_F(CleanUpTest, AWebFarmIsTheWordTrueInAnyCaseOrANumberThatIsNotZero) {
  for (const char* yes : {"True", "true", "TRUE", "tRuE", " true ", "1", "-1", "42", "0.5"}) {
    SetParameter("Webfarm Implemented", yes);
    farm_->calls.clear();
    Run();
    EXPECT_EQ(farm_->calls.size(), 3u) << yes;
  }
  for (const char* no : {"False", "false", "FALSE", "0", "0.0", " 0 "}) {
    SetParameter("Webfarm Implemented", no);
    farm_->calls.clear();
    Run();
    EXPECT_EQ(farm_->calls.size(), 0u) << no;
  }
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(CleanUpTest, AWebFarmThatIsNeitherTrueNorFalseEndsTheJob) {
  for (const char* neither : {"yes", "", "truex", "on"}) {
    SetParameter("Webfarm Implemented", neither);
    environment_.log->clear();
    Run();
    EXPECT_THAT(Messages(), ElementsAre(kMismatch)) << neither;
  }
}

TEST_F(CleanUpTest, AMissingWebFarmRowIsNoWebFarm) {
  RemoveParameter("Webfarm Implemented");
  Run();
  EXPECT_THAT(farm_->calls, IsEmpty());
  EXPECT_EQ(farm_->created, 0);
}

TEST_F(CleanUpTest, ParameterNamesAreTrimmedBeforeTheyAreCompared) {
  // As on an engine that pads its texts, or ignores blanks at their end.
  environment_.database.Run("ALTER TABLE PARAMETERS RENAME TO STORED");
  environment_.database.Run(
      "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255) COLLATE RTRIM, PARAM_VALUE TEXT)");
  environment_.database.Run("INSERT INTO PARAMETERS SELECT PARAM_NAME || '   ', PARAM_VALUE FROM STORED");
  AddFile("HTML/a.htm");
  Run();
  EXPECT_FALSE(Exists("HTML/a.htm"));
}

TEST_F(CleanUpTest, ParameterNamesAreComparedWithTheirCase) {
  environment_.database.Run("ALTER TABLE PARAMETERS RENAME TO STORED");
  environment_.database.Run(
      "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255) COLLATE NOCASE, PARAM_VALUE TEXT)");
  environment_.database.Run(
      "INSERT INTO PARAMETERS VALUES ('WEBFARM IMPLEMENTED', 'neither'), "
      "('keeptemporaryfiles', 'abc'), ('DataFileRelativePath', 'Data')");
  AddFile("HTML/a.htm");
  Run();
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_FALSE(Exists("HTML/a.htm"));
}

TEST_F(CleanUpTest, ATrailingBlankOfTheRelativePathBelongsToTheDataRoot) {
  SetParameter("DataFileRelativePath", "Data ");
  disk_->AddFile("/suite/home/Data /HTML/inside.htm", "x");
  AddFile("HTML/beside.htm");
  Run();
  EXPECT_FALSE(disk_->Exists("/suite/home/Data /HTML/inside.htm"));
  EXPECT_TRUE(Exists("HTML/beside.htm"));
}

TEST_F(CleanUpTest, AMissingRelativePathMakesTheInstallationTheDataRoot) {
  RemoveParameter("DataFileRelativePath");
  disk_->AddFile("/suite/home/HTML/a.htm", "x");
  Run();
  EXPECT_FALSE(disk_->Exists("/suite/home/HTML/a.htm"));
}

TEST_F(CleanUpTest, TheDataRootTakesTheInstallationDirectoryInEitherSpelling) {
  for (const char* directory : {"/suite/home", "\\suite\\home", "/suite/home/", "\\suite/home\\"}) {
    environment_.configuration->installDir = directory;
    AddFile("HTML/a.htm");
    Run();
    EXPECT_FALSE(Exists("HTML/a.htm")) << directory;
  }
}

TEST_F(CleanUpTest, ARelativePathOfSeveralLevelsIsTakenAsItIs) {
  SetParameter("DataFileRelativePath", "Shared/Data");
  disk_->AddFile("/suite/home/Shared/Data/HTML/a.htm", "x");
  Run();
  EXPECT_FALSE(disk_->Exists("/suite/home/Shared/Data/HTML/a.htm"));
}

TEST_F(CleanUpTest, AFailureBeforeTheSweepsEndsTheJobWithoutItsStopLine) {
  AddFile("HTML/a.htm");
  environment_.database.Run("DROP TABLE PARAMETERS");
  Run();
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_THAT(Messages().front(), testing::StartsWith("OrvProcess.cleanup.CleanupFilesandRecords caught: "));
  EXPECT_EQ(RunLog(), kStartBanner);
  EXPECT_TRUE(Exists("HTML/a.htm"));
  EXPECT_EQ(environment_.adodb->openConnections, 0);
}

TEST_F(CleanUpTest, ARunLogThatCannotBeWrittenEndsTheJobBeforeTheSweeps) {
  AddFile("HTML/a.htm");
  disk_->AddFile(kRunLog, "");
  disk_->SetReadOnly(kRunLog);
  Run();
  EXPECT_THAT(Messages(),
              ElementsAre("OrvProcess.cleanup.CleanupFilesandRecords caught: Permission denied (70). "
                          "Additional information: Permission denied"));
  EXPECT_TRUE(Exists("HTML/a.htm"));
}

TEST_F(CleanUpTest, ADataRootThatDoesNotExistIsASuiteWithNothingToSweep) {
  SetParameter("DataFileRelativePath", "nowhere");
  Run();
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
}

TEST_F(CleanUpTest, SettingsAreReadAnewByEveryRun) {
  OnAWebFarm();
  Run();
  SetParameter("Webfarm Implemented", "False");
  farm_->calls.clear();
  Run();
  EXPECT_THAT(farm_->calls, IsEmpty());
}

TEST_F(CleanUpTest, SettingsOfAnEarlierRunOfTheObjectAreForgotten) {
  OnAWebFarm();
  OrvaneProcess::CleanUp job;
  job.Run();
  EXPECT_EQ(farm_->calls.size(), 3u);
  farm_->calls.clear();
  RemoveParameter("Webfarm Implemented");
  job.Run();
  EXPECT_THAT(farm_->calls, IsEmpty());
}

TEST_F(CleanUpTest, TheMembersCanBeCalledOneByOne) {
  environment_.database.Run("INSERT INTO PREVIEW VALUES (1, NULL)");
  OrvaneProcess::CleanUp job;
  job.Initialize();
  EXPECT_EQ(environment_.adodb->openConnections, 1);
  job.CleanupFilesandRecords();
  EXPECT_THAT(environment_.database.Rows("SELECT PREVIEWID FROM PREVIEW"), IsEmpty());
  EXPECT_EQ(environment_.adodb->openConnections, 1);
  job.Cleanupobjects();
  EXPECT_EQ(environment_.adodb->openConnections, 0);
  job.Cleanupobjects();
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(CleanUpTest, WithoutInitializeTheJobReportsTheMissingObject) {
  OrvaneProcess::CleanUp().CleanupFilesandRecords();
  EXPECT_THAT(Messages(),
              ElementsAre("OrvProcess.cleanup.CleanupFilesandRecords caught: Object variable or With "
                          "block variable not set (91). Additional information: Object variable or "
                          "With block variable not set"));
}

TEST_F(CleanUpTest, WhateverStepOfTheDatabaseFailsTheRunEndsAndNothingStaysOpen) {
  AddQuestion(17, 0, "2004-07-01 00:00:00");
  AddFile("SRATTACHMENTS/17Q/a");
  AddSession("s1");
  AddFile("CHAT/s1");
  AddFile("CHAT/s2");
  int failing = 0;
  bool failed = true;
  while (failed) {
    ++failing;
    failed = false;
    int step = 0;
    environment_.adodb->before = [&](std::string_view) {
      if (++step != failing) return;
      failed = true;
      throw automation::Error(automation::ErrorNumber::PermissionDenied, "Injected");
    };
    environment_.log->clear();
    Run();
    EXPECT_EQ(environment_.adodb->openConnections, 0) << "after a failure of step " << failing;
    EXPECT_EQ(environment_.adodb->openRecordsets, 0) << "after a failure of step " << failing;
    EXPECT_EQ(failed, !environment_.log->empty()) << "after a failure of step " << failing;
  }
  EXPECT_GT(failing, 20);
}

TEST_F(CleanUpTest, ARunMayBeEndedAfterEachSweepAndEachFileOfTheHtmlFolder) {
  AddFile("HTML/a.htm");
  AddFile("HTML/b.htm");
  std::vector<int> pages;
  const automation::SafePoints listening(
      [&] { pages.push_back((Exists("HTML/a.htm") ? 1 : 0) + (Exists("HTML/b.htm") ? 1 : 0)); });
  Run();
  // Four sweeps before that of the pages; then each page, their sweep and the five behind it.
  EXPECT_THAT(pages, ElementsAre(2, 2, 2, 2, 1, 0, 0, 0, 0, 0, 0, 0));
}

}  // namespace

}  // namespace orvane_test
