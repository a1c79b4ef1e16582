// The run: parameters, selection of the customers, the loop, the lines of the run log.
#include <gmock/gmock.h>

#include "platform/automation/safe_point.hpp"
#include "tests/archive/archive_fixture.hpp"

namespace orvane_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using ArchiveRunTest = ArchiveTest;

const std::string kRuler104(104, '*');

TEST_F(ArchiveRunTest, WritesRulersStartAndEndAroundARunWithNothingToDo) {
  suite.Run();

  EXPECT_EQ(suite.RunLog(), kRuler104 + "\r\n" +
                                "7-26-2004 09:05:03  : Archiving Process started by NTService\r\n"
                                "7-26-2004 09:05:03  : No questions qualified for Archiving.\r\n"
                                "7-26-2004 09:05:03  : Archiving Process ended.\r\n" +
                                kRuler104 + "\r\n");
  EXPECT_FALSE(std::filesystem::exists(suite.archives));
}

TEST_F(ArchiveRunTest, LogLiesInOrvLogBesideTheInstallationUnderTheDaysName) {
  suite.Run();

  EXPECT_TRUE(
      std::filesystem::exists(suite.home.parent_path() / "OrvLog" / "OrvArchiveSvc_log_2004_7_26.txt"));
}

TEST_F(ArchiveRunTest, MakesTheNextDaysLogWhenMidnightPassesDuringTheRun) {
  suite.AddRequest(1, "jdoe");
  suite.faults->onLoad = [this](const std::string&) {
    suite.test.now = automation::AddDays(suite.test.now, 1);
  };

  suite.Run();

  EXPECT_TRUE(
      std::filesystem::exists(suite.home.parent_path() / "OrvLog" / "OrvArchiveSvc_log_2004_7_26.txt"));
  EXPECT_THAT(suite.RunLog(),
              HasSubstr("Archiving Process ended."));  // in the log of the clock's day, by now later
}

TEST_F(ArchiveRunTest, TwoRunsOfADayAppendToTheSameLog) {
  suite.Run();
  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "No questions qualified for Archiving.",
                          "Archiving Process ended.", "Archiving Process started by NTService",
                          "No questions qualified for Archiving.", "Archiving Process ended."));
}

TEST_F(ArchiveRunTest, RunRecordsTheServiceHostAsASupervisor) {
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/Means"), ElementsAre("Supervisor"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/ArchivedBy"), ElementsAre("NTService"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/Comment"),
              ElementsAre("Archiving done by NT Service"));
}

TEST_F(ArchiveRunTest, CallerServiceIsABackgroundProcessWithoutAName) {
  suite.AddRequest(1, "jdoe");

  OrvaneProcess::Archive().archiveQuestions("Service", "nightly");

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/Means"), ElementsAre("Background Process"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/ArchivedBy"), ElementsAre(""));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/Comment"), ElementsAre("nightly"));
  EXPECT_EQ(suite.LogMessages().front(), "Archiving Process started by Service");
}

TEST_F(ArchiveRunTest, ArchivesOnlyWhatEndedLongEnoughBeforeTheRun) {
  suite.SetParameter("ArchiveAfter", "10");
  suite.AddRequest(1, "jdoe", "2004-07-16 09:05:02");  // ten days and a second ago
  suite.AddRequest(2, "jdoe", "2004-07-16 09:05:03");  // ten days ago to the second: not before the run
  suite.AddRequest(3, "jdoe", "2004-07-16 09:05:04");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY order by Q_ID"), ElementsAre("2", "3"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
}

TEST_F(ArchiveRunTest, ArchiveAfterZeroTakesEverythingBeforeTheRun) {
  suite.SetParameter("ArchiveAfter", "0");
  suite.AddRequest(1, "jdoe", "2004-07-26 09:05:02");
  suite.AddRequest(2, "jdoe", "2004-07-26 09:05:03");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
}

TEST_F(ArchiveRunTest, NegativeArchiveAfterReachesIntoTheFuture) {
  suite.SetParameter("ArchiveAfter", "-2");
  suite.AddRequest(1, "jdoe", "2004-07-28 09:05:02");
  suite.AddRequest(2, "jdoe", "2004-07-28 09:05:03");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
}

TEST_F(ArchiveRunTest, ArchiveAfterIsRoundedToWholeDays) {
  suite.SetParameter("ArchiveAfter", " 3.5 ");
  suite.AddRequest(1, "jdoe", "2004-07-22 09:05:02");  // four days and a second ago
  suite.AddRequest(2, "jdoe", "2004-07-22 09:05:03");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
}

TEST_F(ArchiveRunTest, ArchiveAfterBeyondAnyWholeNumberEndsTheRun) {
  suite.SetParameter("ArchiveAfter", "2147483648");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "Archiving Process ended."));
  ASSERT_EQ(suite.test.log->size(), 1U);
  EXPECT_EQ(suite.test.log->front().message,
            "METHOD: \r\nOrvaneProcess.Archive.archiveQuestions caught: Overflow(6).");
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
}

TEST_F(ArchiveRunTest, EveryStatementComparesWithTheMomentOfTheRunsStart) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  suite.AddRequest(3, "zoe", "2004-07-25 09:05:30");  // a day ago by the time it is zoe's turn
  suite.faults->onLoad = [this](const std::string&) {
    automation::DateTimeParts later = suite.test.now.Parts();
    ++later.minute;
    suite.test.now = automation::DateTime::FromParts(later);
  };
  std::vector<std::string> comparisons;
  suite.journal->beforeStatement = [&](const std::string& sql) {
    const std::size_t at = sql.find("ENDSTATUSTIME)<");
    if (at != std::string::npos) comparisons.push_back(sql.substr(at + 15, 21));
  };

  suite.Run();

  ASSERT_EQ(comparisons.size(), 9U) << "the selection of customers, and four statements for each of them";
  EXPECT_EQ(comparisons.front().substr(0, 5), "{ts '");
  for (std::size_t i = 1; i < comparisons.size(); ++i) EXPECT_EQ(comparisons[i], "'7-26-2004 09:05:03' ");
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("3"));
  EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "//Archive/@DateArchived"),
              ElementsAre(::testing::Not("7-26-2004 09:05:03")))
      << "an entry has the moment when it was made";
  EXPECT_EQ(suite.Texts("NoBP_zoe_SR.xml", "//Archive/@DateArchived"),
            suite.Texts("NoBP_zoe_trans.xml", "//Archive/@DateArchived"))
      << "one entry in both files";
}

TEST_F(ArchiveRunTest, AnEntryIsMadeBeforeTheRequestsAreRead) {
  suite.AddRequest(1, "jdoe");
  suite.journal->beforeStatement = [this](const std::string& sql) {
    if (sql.rfind("select * from QUESTIONHISTORY ", 0) != 0) return;
    suite.test.now = automation::DateTime::FromParts(
        {.year = 2004, .month = 7, .day = 26, .hour = 10, .minute = 0, .second = 0});
  };

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/@DateArchived"), ElementsAre("7-26-2004 09:05:03"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Archive/@DateArchived"),
              ElementsAre("7-26-2004 09:05:03"));
}

TEST_F(ArchiveRunTest, TheSameRowsGoInADayFirstLocale) {
  suite.test.locale->dayFirst = true;
  suite.test.locale->separator = ".";
  suite.test.now = automation::DateTime::FromParts({.year = 2004, .month = 3, .day = 5, .hour = 7});
  suite.SetParameter("ArchiveAfter", "0");
  suite.AddRequest(1, "jdoe", "2004-03-05 06:59:59");
  suite.AddRequest(2, "jdoe", "2004-04-01 00:00:00");  // before 3 May, but not before 5 March

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
}

TEST_F(ArchiveRunTest, ARequestWithoutAnEndNeverQualifies) {
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set ENDSTATUSTIME = null");

  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "No questions qualified for Archiving.",
                          "Archiving Process ended."));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
}

TEST_F(ArchiveRunTest, ArchiveAfterThatIsNoNumberEndsTheRun) {
  suite.SetParameter("ArchiveAfter", "abc");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.LogMessages(), ElementsAre("Archiving Process started by NTService",
                                               "No Archive After parameter mentioned in the parameter table",
                                               "Archiving process failed", "Archiving Process ended."));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
}

TEST_F(ArchiveRunTest, MissingArchiveAfterEndsTheRun) {
  suite.Execute("delete from PARAMETERS where PARAM_NAME = 'ArchiveAfter'");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.LogMessages(), ElementsAre("Archiving Process started by NTService",
                                               "No Archive After parameter mentioned in the parameter table",
                                               "Archiving process failed", "Archiving Process ended."));
}

TEST_F(ArchiveRunTest, ProspectsWithDifferentAddressesAreDifferentCustomers) {
  suite.AddProspectRequest(1, "ann@example.org");
  suite.AddProspectRequest(2, "bob@example.org");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_ann@example.org_SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_bob@example.org_SR.xml", "//SR/@Q_ID"), ElementsAre("2"));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
}

TEST_F(ArchiveRunTest, ACustomerWithTwoAddressesFindsNothingLeftTheSecondTime) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "jdoe");
  suite.Execute("update QUESTIONHISTORY set EMAILID = 'a@example.org' where Q_ID = 1");
  suite.Execute("update QUESTIONHISTORY set EMAILID = 'b@example.org' where Q_ID = 2");

  suite.Run();

  const std::string questions = suite.ArchivePath("NoBP_jdoe_SR.xml");
  const std::string transactions = suite.ArchivePath("NoBP_jdoe_trans.xml");
  EXPECT_THAT(
      suite.LogMessages(),
      ElementsAre("Archiving Process started by NTService",
                  "Archive Files " + questions + " and " + transactions + " edited",
                  "Editing of Archive file " + transactions + " failed2", "Archiving Process ended."));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/@ArchiveID"), ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Archive/@ArchiveID"), ElementsAre("1"));
}

TEST_F(ArchiveRunTest, ARunThatFailsWithoutAnExpectedReasonStillClosesItsLogAndReturns) {
  suite.AddRequest(1, "jdoe");
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (sql.find("istinct") != std::string::npos)
      throw automation::Error(-2147467259, "engine", "disk I/O error");
  };

  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "Archiving Process ended."));
  ASSERT_EQ(suite.test.log->size(), 1U);
  EXPECT_EQ(suite.test.log->front().message,
            "METHOD: \r\nOrvaneProcess.Archive.archiveQuestions caught: disk I/O error(-2147467259).");
}

TEST_F(ArchiveRunTest, AnAttachmentsFolderThatIsNullIsNoFailure) {
  suite.ExecuteCatalogue(
      "insert into FAQPARAMETER (PARAMNAME, PARAMVALUE) values ('ATTACHMENTSDIRECTORY', null)");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_THAT(*suite.test.log, IsEmpty());
}

TEST_F(ArchiveRunTest, AMissingCatalogueIsReportedAndReturns) {
  suite.test.configuration->connectionStrings.erase({"VnServer", "ECatalog"});
  suite.AddRequest(1, "jdoe");

  suite.Run();

  ASSERT_FALSE(suite.test.log->empty());
  EXPECT_THAT(
      suite.test.log->back().message,
      HasSubstr("OrvaneProcess.Archive.archiveQuestions caught: no value for VnServer/ECatalog(1001)."));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
}

TEST_F(ArchiveRunTest, AProspectWithAnEmptyAddressStays) {
  suite.AddProspectRequest(1, "");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP__SR.xml", "//SR"), IsEmpty());
}

TEST_F(ArchiveRunTest, ARunThatDoesNotLearnWhereItsLogLiesWritesNoneOfTheRunBefore) {
  OrvaneProcess::Archive archive;
  archive.Run();
  const std::string log = suite.RunLog();
  suite.test.configuration->before = [](std::string_view member) {
    if (member == "RootPath") throw automation::Error(-2147467259, "Vantrel.Configuration", "no home");
  };

  archive.Run();

  EXPECT_EQ(suite.RunLog(), log);
  ASSERT_EQ(suite.test.log->size(), 1U);
  EXPECT_EQ(suite.test.log->front().message,
            "METHOD: \r\nOrvaneProcess.Archive.archiveQuestions caught: no home(-2147467259).");
}

TEST_F(ArchiveRunTest, TheFolderOfTheArchivesIsAskedForAfterTheFirstLine) {
  suite.AddRequest(1, "jdoe");
  const std::filesystem::path elsewhere = suite.folder.Path() / "elsewhere";
  int asked = 0;
  suite.test.configuration->before = [&](std::string_view member) {
    if (member == "RootPath" && ++asked == 2) suite.test.configuration->rootPath = elsewhere.string();
  };

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(elsewhere / "Data" / "Archives" / "NoBP_jdoe_SR.xml"));
  EXPECT_EQ(suite.LogMessages().back(), "Archiving Process ended.") << "where the log was at the start";
}

TEST_F(ArchiveRunTest, ACustomerNamedProspectIsFoundByItsIdAndNotByItsAddress) {
  suite.AddRequest(1, "Prospect");
  suite.Execute("update QUESTIONHISTORY set EMAILID = 'a@example.org'");
  suite.AddProspectRequest(2, "a@example.org", "2004-07-26 09:05:04");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP__SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
}

TEST_F(ArchiveRunTest, NothingOfARunIsKeptForTheNextOneOfTheSameObject) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe", "2004-07-25 12:00:00");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 3");
  OrvaneProcess::Archive archive;
  archive.archiveQuestions("one", "first");
  suite.SetParameter("DataFileRelativePath", "Other");
  suite.SetParameter("ArchiveAfter", "2");
  suite.ExecuteCatalogue("update PRODUCTCATEGORY set CATEGORYNAME = 'Plotters'");
  suite.test.now = automation::AddDays(suite.test.now, 2);

  archive.archiveQuestions("two", "second");

  const MSXML2::DOMDocumentPtr document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  ASSERT_TRUE(document->load(suite.home.string() + "\\Other\\Archives\\NoBP_zoe_SR.xml"));
  EXPECT_EQ(document->selectSingleNode("//Archive")->text(), "Supervisortwosecond");
  EXPECT_EQ(document->selectSingleNode("//SR/@Q_ID")->text(), "2");
  EXPECT_EQ(document->selectSingleNode("//SR/Q_PRODUCTCAT")->text(), "Plotters");
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_EQ(suite.LogMessages().front(), "Archiving Process started by two");
}

TEST_F(ArchiveRunTest, TheObjectMayBeUsedAgainAndReadsItsParametersAnew) {
  suite.SetParameter("ArchiveAfter", "100000");
  suite.AddRequest(1, "jdoe");
  OrvaneProcess::Archive archive;
  archive.Run();
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));

  suite.SetParameter("ArchiveAfter", "1");
  archive.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
}

TEST_F(ArchiveRunTest, ARunMayBeEndedAfterEachCustomer) {
  suite.AddRequest(1, "anna");
  suite.AddRequest(2, "bert");
  std::vector<std::string> seen;
  const automation::SafePoints listening([&] {
    seen.push_back(std::to_string(suite.Rows("select Q_ID from QUESTIONHISTORY").size()) +
                   " left: " + suite.LogMessages().back());
  });

  suite.Run();

  EXPECT_THAT(seen, ElementsAre("1 left: Archive Files " + suite.ArchivePath("NoBP_anna_SR.xml") + " and " +
                                    suite.ArchivePath("NoBP_anna_trans.xml") + " edited",
                                "0 left: Archive Files " + suite.ArchivePath("NoBP_bert_SR.xml") + " and " +
                                    suite.ArchivePath("NoBP_bert_trans.xml") + " edited"));
}

}  // namespace
}  // namespace orvane_test
