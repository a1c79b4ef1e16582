#include "tests/cleanup/clean_up_fixture.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kWeek = 7 * 24 * 60;

struct StandardSweep {
  const char* folder;
  const char* source;
  int kind;  // of the remote folder; 0: none
};

constexpr StandardSweep kStandardSweeps[] = {
    {"ANALYSIS", "ORVProcess.cleanup.DeleteAnalysisFiles", 0},
    {"ARCHIVES", "ORVProcess.cleanup.DeleteArchiveFiles", 0},
    {"CHAT", "ORVProcess.cleanup.DeleteChatFileswithoutcomparingDatabase", 14},
    {"DispatchFiles", "ORVProcess.cleanup.DeletedispatchXmlFiles", 11},
    {"tempAttachments", "ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles", 12},
};

class StandardSweepTest : public CleanUpTest, public testing::WithParamInterface<StandardSweep> {
 protected:
  std::string In(const std::string& name) const { return std::string(GetParam().folder) + "/" + name; }
  std::string SharedCall() const {
    return "DeleteAgedFiles(ftp://farm, 1440, " + std::to_string(GetParam().kind) + ")";
  }
  bool SharedCallMade() const {
    return std::find(farm_->calls.begin(), farm_->calls.end(), SharedCall()) != farm_->calls.end();
  }
};

INSTANTIATE_TEST_SUITE_P(Sweeps, StandardSweepTest, testing::ValuesIn(kStandardSweeps),
                         [](const auto& sweep) { return std::string(sweep.param.folder); });

TEST_P(StandardSweepTest, StopsAtTheFirstFileAndDeletesNothingByAge) {
  OnAWebFarm();
  AddFile(In("a-week-old"), kWeek);
  AddFile(In("an-hour-old"), 60);
  AddFile(In("from-tomorrow"), -24 * 60);
  Run();
  EXPECT_TRUE(Exists(In("a-week-old")));
  EXPECT_TRUE(Exists(In("an-hour-old")));
  EXPECT_TRUE(Exists(In("from-tomorrow")));
  EXPECT_THAT(Messages(), ElementsAre(ObjectRequired(GetParam().source)));
  EXPECT_FALSE(SharedCallMade());
}

TEST_P(StandardSweepTest, AnEmptyFolderOrOneWithSubfoldersOnlyIsSweptToItsEnd) {
  OnAWebFarm();
  AddFile(In("sub/file"), kWeek);
  Run();
  EXPECT_TRUE(Exists(In("sub/file")));
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_EQ(SharedCallMade(), GetParam().kind != 0);
}

TEST_P(StandardSweepTest, AMissingFolderIsNoErrorAndTheSharedFilesAgeOutNonetheless) {
  OnAWebFarm();
  Run();
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_EQ(SharedCallMade(), GetParam().kind != 0);
}

TEST_P(StandardSweepTest, WithoutAWebFarmNoComponentIsCreated) {
  AddFolder(GetParam().folder);
  Run();
  EXPECT_EQ(farm_->created, 0);
}

TEST_P(StandardSweepTest, WithAnAgeThereTheFreshFileWouldGoAndTheOldOneStay) {
  OnAWebFarm();
  AddFile(In("a-week-old"), kWeek);
  AddFile(In("an-hour-old"), 60);
  AddFile(In("at-the-limit"), 24 * 60);
  AddFile(In("past-the-limit"), 24 * 60 + 1);
  AddFile(In("from-tomorrow"), -24 * 60);
  AddFile(In("sub/an-hour-old"), 60);
  RunWithAges();
  EXPECT_TRUE(Exists(In("a-week-old")));
  EXPECT_TRUE(Exists(In("past-the-limit")));
  EXPECT_TRUE(Exists(In("sub/an-hour-old")));
  EXPECT_FALSE(Exists(In("an-hour-old")));
  EXPECT_FALSE(Exists(In("at-the-limit")));
  EXPECT_FALSE(Exists(In("from-tomorrow")));
  EXPECT_THAT(Messages(), IsEmpty());
  EXPECT_EQ(SharedCallMade(), GetParam().kind != 0);
}

TEST_P(StandardSweepTest, AReadOnlyFileEndsTheSweepAndWhatIsGoneStaysGone) {
  OnAWebFarm();
  AddFile(In("a"));
  AddFile(In("b"));
  AddFile(In("c"));
  disk_->SetReadOnly("/suite/home/Data/" + In("b"));
  RunWithAges();
  EXPECT_FALSE(Exists(In("a")));
  EXPECT_TRUE(Exists(In("b")));
  EXPECT_TRUE(Exists(In("c")));
  EXPECT_THAT(Messages(),
              ElementsAre(std::string(GetParam().source) +
                          " caught: Permission denied (70). Additional information: Permission denied"));
  EXPECT_FALSE(SharedCallMade());
  EXPECT_EQ(RunLog(), std::string(kStartBanner) + std::string(kStopLine));
}

TEST_P(StandardSweepTest, AFolderThatMayNotBeEnteredIsReported) {
  AddFile(In("a"));
  disk_->SetBarred(std::string("/suite/home/Data/") + GetParam().folder);
  Run();
  EXPECT_THAT(Messages(),
              ElementsAre(std::string(GetParam().source) +
                          " caught: Permission denied (70). Additional information: Permission denied"));
}

TEST_P(StandardSweepTest, ATextThatDoesNotReadBackAsADateIsReported) {
  AddFile(In("a"));
  OrvaneProcess::CleanUp([](automation::DateTime) { return "no date"; }).Run();
  EXPECT_TRUE(Exists(In("a")));
  EXPECT_THAT(Messages(), ElementsAre(std::string(GetParam().source) +
                                      " caught: Type mismatch (13). Additional information: Type mismatch"));
}

class FolderSweepsTest : public CleanUpTest {};

TEST_F(FolderSweepsTest, TheSharedFoldersAgeOutInTheOrderOfTheSweeps) {
  OnAWebFarm();
  Run();
  EXPECT_THAT(farm_->calls,
              ElementsAre("DeleteAgedFiles(ftp://farm, 1440, 14)", "DeleteAgedFiles(ftp://farm, 1440, 11)",
                          "DeleteAgedFiles(ftp://farm, 1440, 12)"));
  EXPECT_EQ(farm_->created, 3);
  EXPECT_EQ(farm_->alive, 0);
}

TEST_F(FolderSweepsTest, AFailingSharedDeletionIsReportedAndTheNextSweepFollows) {
  OnAWebFarm();
  for (const StandardSweep& sweep : kStandardSweeps) {
    if (sweep.kind == 0) continue;
    const std::string failing = "DeleteAgedFiles(ftp://farm, 1440, " + std::to_string(sweep.kind) + ")";
    farm_->calls.clear();
    farm_->before = [&] {
      if (farm_->calls.back() == failing) throw automation::Error(7000, "OrvCommonMTS.FileHandling", "down");
    };
    environment_.log->clear();
    Run();
    EXPECT_EQ(farm_->calls.size(), 3u);
    EXPECT_THAT(*environment_.log,
                ElementsAre(LogEntry{
                    "OrvCommonMTS.FileHandling",
                    std::string(sweep.source) + " caught: down (7000). Additional information: down", 0}));
  }
}

TEST_F(FolderSweepsTest, TheFtpPathIsHandedOnAsItIsStored) {
  OnAWebFarm();
  SetParameter("FTPPath", " ftp://user:pw@host/root ");
  Run();
  EXPECT_THAT(farm_->calls, testing::Contains("DeleteAgedFiles( ftp://user:pw@host/root , 1440, 11)"));
}

TEST_F(FolderSweepsTest, AFileHandlingThatCannotBeCreatedIsReportedByEachSweepThatNeedsIt) {
  OnAWebFarm();
  farm_->creatable = false;
  Run();
  const std::string failure =
      " caught: ActiveX component can't create object (429). Additional information: ActiveX component can't "
      "create object";
  EXPECT_THAT(Messages(), ElementsAre("ORVProcess.cleanup.DeleteChatFileswithoutcomparingDatabase" + failure,
                                      "ORVProcess.cleanup.DeletedispatchXmlFiles" + failure,
                                      "ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles" + failure));
}

TEST_F(FolderSweepsTest, TheFileHandlingIsCreatedDirectlyEvenInsideAContext) {
  OnAWebFarm();
  const auto context = environment_.EnterObjectContext();
  Run();
  EXPECT_EQ(farm_->created, 3);
  EXPECT_THAT(context->created, testing::Each("Vantrel.Configuration"));
}

TEST_F(FolderSweepsTest, HtmlFilesGoOnEveryRunWhateverTheirAge) {
  AddFile("HTML/old.htm", kWeek);
  AddFile("HTML/new.htm", 0);
  AddFile("HTML/no extension", 60);
  AddFile("HTML/sub/kept.htm", 60);
  Run();
  EXPECT_THAT(Data(), ElementsAre("HTML", "HTML/sub", "HTML/sub/kept.htm"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(FolderSweepsTest, HtmlFilesGoWithoutAWebFarmCall) {
  OnAWebFarm();
  AddFile("HTML/a.htm");
  Run();
  EXPECT_FALSE(Exists("HTML/a.htm"));
  EXPECT_EQ(farm_->calls.size(), 3u);
}

TEST_F(FolderSweepsTest, FilesWithUnusualNamesGoLikeAnyOther) {
  const std::string longest = "HTML/" + std::string(255, 'n');
  for (const std::string& name : {std::string("HTML/it's.htm"), std::string("HTML/Größe-日本.htm"),
                                  std::string("HTML/end "), std::string("HTML/.hidden"), longest}) {
    AddFile(name);
  }
  Run();
  EXPECT_THAT(Data(), ElementsAre("HTML"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(FolderSweepsTest, AReadOnlyHtmlFileEndsTheSweepAtThatFile) {
  AddFile("HTML/a");
  AddFile("HTML/b");
  AddFile("HTML/c");
  disk_->SetReadOnly("/suite/home/Data/HTML/b");
  Run();
  EXPECT_THAT(Data(), ElementsAre("HTML", "HTML/b", "HTML/c"));
  EXPECT_THAT(Messages(), ElementsAre("ORVProcess.cleanup.DeleteHTMLFiles caught: Permission denied (70). "
                                      "Additional information: Permission denied"));
}

constexpr const char* kTroubleShooting[] = {"TS/EndUser/Templates/f", "TS/EndUser/Trees/f",
                                            "TS/Manager/Templates/f", "TS/Manager/Trees/f"};

TEST_F(FolderSweepsTest, TroubleShootingFoldersAreSweptOnAWebFarmOnly) {
  for (const char* file : kTroubleShooting) AddFile(file);
  RunWithAges();
  for (const char* file : kTroubleShooting) EXPECT_TRUE(Exists(file));
  Run();
  EXPECT_THAT(Messages(), IsEmpty());

  OnAWebFarm();
  RunWithAges();
  for (const char* file : kTroubleShooting) EXPECT_FALSE(Exists(file));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(FolderSweepsTest, TheFirstTroubleShootingFileEndsTheSweepOfAllFourFolders) {
  OnAWebFarm();
  for (const char* file : kTroubleShooting) AddFile(file);
  Run();
  for (const char* file : kTroubleShooting) EXPECT_TRUE(Exists(file));
  EXPECT_THAT(Messages(), ElementsAre(ObjectRequired("ORVProcess.cleanup.DeleteTroubleShootingFiles")));
}

TEST_F(FolderSweepsTest, AMissingTroubleShootingFolderIsSkipped) {
  OnAWebFarm();
  AddFile("TS/Manager/Trees/f");
  AddFile("TS/EndUser/f");
  RunWithAges();
  EXPECT_FALSE(Exists("TS/Manager/Trees/f"));
  EXPECT_TRUE(Exists("TS/EndUser/f"));
}

TEST_F(FolderSweepsTest, TroubleShootingFoldersAreVisitedInTheirFixedOrder) {
  OnAWebFarm();
  for (const char* file : kTroubleShooting) AddFile(file);
  disk_->SetHeld("/suite/home/Data/TS/Manager/Templates/f");
  RunWithAges();
  EXPECT_FALSE(Exists("TS/EndUser/Templates/f"));
  EXPECT_FALSE(Exists("TS/EndUser/Trees/f"));
  EXPECT_TRUE(Exists("TS/Manager/Templates/f"));
  EXPECT_TRUE(Exists("TS/Manager/Trees/f"));
}

TEST_F(FolderSweepsTest, AttachmentFoldersAreNotSweptWithoutAWebFarm) {
  AddFile("SRATTACHMENTS/17Q/f");
  Run();
  RunWithAges();
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q/f"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(FolderSweepsTest, TheFirstAttachmentFolderEndsTheSweepUnderTheArchiveSweepsSource) {
  OnAWebFarm();
  AddFolder("SRATTACHMENTS/17Q");
  AddFolder("SRATTACHMENTS/18Q");
  Run();
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_THAT(Messages(), ElementsAre(ObjectRequired("ORVProcess.cleanup.DeleteArchiveFiles")));
}

TEST_F(FolderSweepsTest, WithoutSubfoldersTheAttachmentSweepHasNothingToTest) {
  OnAWebFarm();
  AddFile("SRATTACHMENTS/loose file");
  Run();
  EXPECT_TRUE(Exists("SRATTACHMENTS/loose file"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(FolderSweepsTest, WithAnAgeThereAFreshAttachmentFolderWouldGoWhole) {
  OnAWebFarm();
  AddFile("SRATTACHMENTS/17Q/deep/f");
  disk_->SetAccessed("/suite/home/Data/SRATTACHMENTS/17Q", environment_.now);
  RunWithAges();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_TRUE(Exists("SRATTACHMENTS"));
}

TEST_F(FolderSweepsTest, WithAnAgeThereAnOldFolderWouldLoseItsFilesOfTheLastMonthsAndStay) {
  OnAWebFarm();
  AddFile("SRATTACHMENTS/17Q/ten-years", 10 * 52 * kWeek);
  AddFile("SRATTACHMENTS/17Q/sub/kept", 60);
  disk_->SetAccessed("/suite/home/Data/SRATTACHMENTS/17Q", automation::AddMinutes(environment_.now, -kWeek));
  RunWithAges();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q/ten-years"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q/sub/kept"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q"));
  EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(FolderSweepsTest, WithAnAgeThereMonthsAreComparedWithTheMinutesOfTheKeepPeriod) {
  OnAWebFarm();
  SetParameter("KeepTemporaryFiles", "0");
  AddFile("SRATTACHMENTS/17Q/this-month", 24 * 60);
  AddFile("SRATTACHMENTS/17Q/last-month", 31 * 24 * 60);
  disk_->SetAccessed("/suite/home/Data/SRATTACHMENTS/17Q", automation::AddMinutes(environment_.now, -kWeek));
  RunWithAges();
  EXPECT_FALSE(Exists("SRATTACHMENTS/17Q/this-month"));
  EXPECT_TRUE(Exists("SRATTACHMENTS/17Q/last-month"));
}

}  // namespace
}  // namespace orvane_test
