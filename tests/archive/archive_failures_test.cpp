// What the run does when something around it fails: catalogue, directory, run log.
#include <gmock/gmock.h>

#include "tests/archive/archive_fixture.hpp"

namespace orvane_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Strings = std::vector<std::string>;

class ArchiveFailuresTest : public ArchiveTest {
 protected:
  Strings RequestsLeft() { return suite.Rows("select Q_ID from QUESTIONHISTORY order by Q_ID"); }
};

TEST_F(ArchiveFailuresTest, AnEmptyCatalogueTableEndsOnlyTheCustomersThatNeedIt) {
  const std::vector<std::pair<std::string, std::string>> tables = {
      {"FAQCATEGORY", "Q_CATEGORY"}, {"PRODUCTCATEGORY", "Q_PRODUCTCAT"}, {"PRODUCT", "PRODUCTID"}};
  int id = 0;
  for (const auto& [table, column] : tables) {
    suite.ExecuteCatalogue("delete from " + table);
    const int needy = ++id;
    suite.AddRequest(needy, "jdoe");
    suite.AddTransaction(needy, "stays");
    suite.Execute("update QUESTIONHISTORY set " + column + " = 3 where Q_ID = " + std::to_string(needy));
    suite.AddRequest(++id, "zoe");
    suite.Execute("update QUESTIONHISTORY set " + column + " = 0 where Q_ID = " + std::to_string(id));

    suite.Run();

    EXPECT_THAT(RequestsLeft(), ElementsAre(std::to_string(needy))) << table;
    EXPECT_THAT(suite.Rows("select T_NAME from TRANSACTIONS"), ElementsAre("stays")) << table;
    EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR"), IsEmpty()) << table;
    suite.Execute("delete from TRANSACTIONS");
    suite.Execute("delete from QUESTIONHISTORY");
  }
  EXPECT_THAT(
      suite.LogMessages(),
      Contains("Editing of Archive file " + suite.ArchivePath("NoBP_jdoe_SR.xml") + " failed1").Times(3));
}

TEST_F(ArchiveFailuresTest, AnAddressWithLineBreaksWritesNoLinesOfItsOwn) {
  suite.AddProspectRequest(1, "x\r\n7-26-2004 09:05:03  : Archive Files a and b edited\r\n");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService",
                          "Questions XML file " +
                              suite.ArchivePath("NoBP_x??7-26-2004 09:05:03  : Archive Files a and b edited??"
                                                "_SR.xml") +
                              " could not be created/loaded",
                          "Archiving Process ended."));
}

TEST_F(ArchiveFailuresTest, ANumberThatTheCatalogueHasTwiceEndsTheRunBeforeAnythingIsTouched) {
  suite.ExecuteCatalogue("drop table PRODUCTCATEGORY");
  suite.ExecuteCatalogue("create table PRODUCTCATEGORY (CATEGORYID integer, CATEGORYNAME varchar(50))");
  suite.ExecuteCatalogue("insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (3, 'Printers')");
  suite.ExecuteCatalogue("insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (3, 'Plotters')");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
  EXPECT_FALSE(std::filesystem::exists(suite.archives));
  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "Archiving Process ended."));
  ASSERT_EQ(suite.test.log->size(), 1U);
  EXPECT_THAT(suite.test.log->front().message, HasSubstr("OrvaneProcess.Archive.archiveQuestions caught: "));
}

TEST_F(ArchiveFailuresTest, ACatalogueThatGoesDownDuringTheRunEndsIt) {
  suite.AddRequest(1, "jdoe");
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (sql.find("from FAQCATEGORY") != std::string::npos) {
      throw automation::Error(-2147467259, "engine", "connection lost");
    }
  };

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
  EXPECT_FALSE(std::filesystem::exists(suite.archives));
  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService", "Archiving Process ended."));
  EXPECT_EQ(suite.journal->openConnections, 0);
  EXPECT_EQ(suite.journal->openRecordsets, 0);
}

TEST_F(ArchiveFailuresTest, ACatalogueThatIsDownFromTheStartLeavesTheClosingLines) {
  suite.test.configuration->connectionStrings.erase({"VnServer", "ECatalog"});
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_EQ(suite.RunLog(),
            "7-26-2004 09:05:03  : Archiving Process ended.\r\n" + std::string(104, '*') + "\r\n");
  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
}

TEST_F(ArchiveFailuresTest, ASuiteDatabaseThatIsDownFromTheStartLeavesTheClosingLines) {
  suite.test.configuration->connectionStrings.erase({"Orvane", "Orvane"});
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_EQ(suite.RunLog(),
            "7-26-2004 09:05:03  : Archiving Process ended.\r\n" + std::string(104, '*') + "\r\n");
  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
}

TEST_F(ArchiveFailuresTest, WithoutTheDirectoryFilesHaveNoPartnerNumberAndDatesTheDefaultLanguage) {
  suite.directory->people["jdoe"].businessPartner = 1042;
  suite.directory->people["jdoe"].locale = 1043;
  suite.directory->before = [](std::string_view) {
    throw automation::Error(-2147467259, "VnMembership.User", "the directory is down");
  };
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = '2003-12-24 18:30:00'");
  suite.directory->people.clear();

  suite.Run();

  EXPECT_THAT(RequestsLeft(), IsEmpty());
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/REGISTEREDDATE"),
              ElementsAre("12/24/2003 18:30:00[3,1033]"));
  EXPECT_EQ(suite.test.log->size(), 2U) << "an entry for the partner number and one for the locale";
}

TEST_F(ArchiveFailuresTest, ARunThatCannotWriteItsFirstLineTouchesNothing) {
  suite.folder.Write("suite/OrvLog", "in the place of the log's folder");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
  EXPECT_FALSE(std::filesystem::exists(suite.archives));
  ASSERT_EQ(suite.test.log->size(), 1U);
  EXPECT_THAT(suite.test.log->front().message, HasSubstr("OrvaneProcess.Archive.archiveQuestions caught: "));
}

TEST_F(ArchiveFailuresTest, ARunLogThatTakesNoMoreLinesDoesNotKeepCustomersFromBeingArchived) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  suite.faults->onLoad = [this](const std::string&) {
    // The day's log turns into something that no line can be written to.
    const std::filesystem::path log = suite.home.parent_path() / "OrvLog" / "OrvArchiveSvc_log_2004_7_26.txt";
    if (!std::filesystem::is_regular_file(log)) return;
    std::filesystem::remove(log);
    std::filesystem::create_directory(log);
  };

  suite.Run();

  EXPECT_THAT(RequestsLeft(), IsEmpty());
  EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "//SR/@Q_ID"), ElementsAre("2"));
  ASSERT_EQ(suite.test.log->size(), 3U) << "one entry a customer, one for the closing lines";
  for (const int customer : {0, 1}) {
    const std::string name = customer == 0 ? "jdoe" : "zoe";
    EXPECT_THAT((*suite.test.log)[static_cast<std::size_t>(customer)].message,
                ::testing::StartsWith("OrvaneProcess.Archive.archiveOriginator caught: "));
    EXPECT_THAT(
        (*suite.test.log)[static_cast<std::size_t>(customer)].message,
        HasSubstr("Additional information: Archive Files " + suite.ArchivePath("NoBP_" + name + "_SR.xml") +
                  " and " + suite.ArchivePath("NoBP_" + name + "_trans.xml") + " edited"));
  }
}

TEST_F(ArchiveFailuresTest, ARequestOfNobodyStays) {
  suite.Execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_STATUS, ENDSTATUSTIME) values (1, 185, '2004-01-01 00:00:00')");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath("NoBP__trans.xml") + " failed2"));
}

TEST_F(ArchiveFailuresTest, AProspectWithoutAnAddressStays) {
  suite.AddProspectRequest(1, "ann@example.org");
  suite.Execute("update QUESTIONHISTORY set EMAILID = null");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath("NoBP__trans.xml") + " failed2"));
}

TEST_F(ArchiveFailuresTest, AnAddressThatIsHalfAStatementTouchesNobodysRows) {
  suite.AddRequest(1, "jdoe");
  suite.AddProspectRequest(2, "x'' or ''a''=''a");  // doubled for the insert only
  suite.AddProspectRequest(3, "x''; delete from QUESTIONHISTORY; --");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("2", "3"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(), Contains("Editing of Archive file " +
                                            suite.ArchivePath("NoBP_x' or 'a'='a_SR.xml") + " failed1"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " +
                       suite.ArchivePath("NoBP_x'; delete from QUESTIONHISTORY; --_SR.xml") + " failed1"));
}

// Well-formed, but not what the job has written: nothing is guessed.
TEST_F(ArchiveFailuresTest, AFileThatLacksWhatItNeedsIsLeftAsItIs) {
  const std::string entry = "<Means>Supervisor</Means><ArchivedBy/><Comment/></Archive>";
  const Strings contents = {
      "<QuestionsArchive><Archives/></QuestionsArchive>", "<QuestionsArchive><SRs/></QuestionsArchive>",
      "<QuestionsArchive><SRs/><Archives><Archive DateArchived=\"x\">" + entry +
          "</Archives></QuestionsArchive>",
      "<QuestionsArchive><SRs/><Archives><Archive DateArchived=\"x\" ArchiveID=\"one\">" + entry +
          "</Archives></QuestionsArchive>",
      "<QuestionsArchive><SRs/><Archives><Archive DateArchived=\"x\" ArchiveID=\"2147483647\">" + entry +
          "</Archives></QuestionsArchive>"};
  suite.undescribed = {"NoBP_jdoe_SR.xml"};
  suite.AddRequest(1, "jdoe");
  for (const std::string& content : contents) {
    suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_SR.xml", content);

    suite.Run();

    EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), content);
    EXPECT_THAT(RequestsLeft(), ElementsAre("1")) << content;
  }
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath("NoBP_jdoe_SR.xml") + " failed1")
                  .Times(contents.size()));
}

TEST_F(ArchiveFailuresTest, ATransactionsFileThatLacksWhatItNeedsGivesTheRequestsFileItsContentBack) {
  suite.AddRequest(1, "jdoe");
  suite.Run();
  const std::string before = suite.Archive("NoBP_jdoe_SR.xml");
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_trans.xml",
                     "<TransactionsArchive><Archives/></TransactionsArchive>");
  suite.undescribed = {"NoBP_jdoe_trans.xml"};
  suite.AddRequest(2, "jdoe");

  suite.Run();

  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), before);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), "<TransactionsArchive><Archives/></TransactionsArchive>");
  EXPECT_THAT(RequestsLeft(), ElementsAre("2"));
}

TEST_F(ArchiveFailuresTest, ATransactionThatCannotBeBegunUndoesBothFiles) {
  suite.AddRequest(1, "jdoe");
  suite.Run();
  const std::string questions = suite.Archive("NoBP_jdoe_SR.xml");
  const std::string transactions = suite.Archive("NoBP_jdoe_trans.xml");
  suite.AddRequest(2, "jdoe");
  suite.journal->before = [](std::string_view step) {
    if (step == "Connection.BeginTrans")
      throw automation::Error(-2147467259, "engine", "no more transactions");
  };

  suite.Run();

  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questions);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactions);
  EXPECT_THAT(RequestsLeft(), ElementsAre("2"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Changes to XML files undone" + suite.ArchivePath("NoBP_jdoe_SR.xml") +
                       suite.ArchivePath("NoBP_jdoe_trans.xml") + " undone"));
}

TEST_F(ArchiveFailuresTest, ATransactionThatXmlCannotHoldKeepsTheRowsAndTheRequestsFile) {
  suite.AddRequest(1, "jdoe");
  suite.Run();
  const std::string before = suite.Archive("NoBP_jdoe_SR.xml");
  suite.AddRequest(2, "jdoe");
  suite.AddTransaction(2, "bell\x07");

  suite.Run();

  EXPECT_THAT(RequestsLeft(), ElementsAre("2"));
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), before);
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath("NoBP_jdoe_trans.xml") + " failed2"));
}

TEST_F(ArchiveFailuresTest, ATransactionsTextOfTenMegabytesIsKeptWhole) {
  suite.AddRequest(1, "jdoe");
  suite.AddTransaction(1, "long");
  const std::string text(10'000'000, 'x');
  suite.Execute("update TRANSACTIONS set T_COMMENT = '" + text + "'");

  suite.Run();

  const Strings texts = suite.Texts("NoBP_jdoe_trans.xml", "//T_COMMENT");
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_TRUE(texts.front() == text);
  EXPECT_THAT(RequestsLeft(), IsEmpty());
}

}  // namespace
}  // namespace orvane_test
