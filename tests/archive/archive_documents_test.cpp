// What the two files of a customer hold.
#include <gmock/gmock.h>

#include "tests/archive/archive_fixture.hpp"
#include "tests/support/server_backend.hpp"

namespace orvane_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using ArchiveDocumentsTest = ArchiveTest;

TEST_F(ArchiveDocumentsTest, FirstRunMakesBothFilesWithOneEntryNumberedOne) {
  suite.AddRequest(5531, "jdoe");
  suite.AddTransaction(5531, "LBLQX3479");

  suite.Run();

  const MSXML2::DOMDocumentPtr questions = suite.Document("NoBP_jdoe_SR.xml");
  EXPECT_EQ(questions->documentElement()->nodeName(), "QuestionsArchive");
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "/QuestionsArchive/Archives/Archive/@ArchiveID"),
              ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "/QuestionsArchive/Archives/Archive/@DateArchived"),
              ElementsAre("7-26-2004 09:05:03"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "/QuestionsArchive/SRs/SR/@ArchiveID"), ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "/TransactionsArchive/Transactions/SR/@Q_ID"),
              ElementsAre("5531"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "/TransactionsArchive/Transactions/SR/@ArchiveID"),
              ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR/Transaction/T_NAME"), ElementsAre("LBLQX3479"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "/TransactionsArchive/Archives/Archive/@DateArchived"),
              ElementsAre("7-26-2004 09:05:03"));
}

TEST_F(ArchiveDocumentsTest, ANewFileBeginsAsOneLineWithItsRoot) {
  std::vector<std::string> firstLoads;
  suite.faults->onLoad = [&](const std::string& path) {
    if (firstLoads.size() < 2 || path.ends_with("_trans.xml"))
      firstLoads.push_back(suite.Archive(path.substr(path.rfind('\\') + 1)));
  };
  suite.AddRequest(1, "jdoe");

  suite.Run();

  ASSERT_EQ(firstLoads.size(), 4U) << "each file is loaded to be changed and to be kept for the undo";
  EXPECT_EQ(firstLoads[0], "<QuestionsArchive></QuestionsArchive>\r\n");
  EXPECT_THAT(firstLoads[1], StartsWith("<QuestionsArchive><SRs/><Archives/></QuestionsArchive>"));
  EXPECT_EQ(firstLoads[2], "<TransactionsArchive></TransactionsArchive>\r\n");
  EXPECT_THAT(firstLoads[3],
              StartsWith("<TransactionsArchive><Transactions/><Archives/></TransactionsArchive>"));
}

TEST_F(ArchiveDocumentsTest, AttributesStandInTheirOrder) {
  suite.AddRequest(5531, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Archive("NoBP_jdoe_SR.xml"),
              HasSubstr("<SR Q_ID=\"5531\" Q_STATUS=\"LBLQX3558\" ArchiveID=\"1\">"));
  EXPECT_THAT(
      suite.Archive("NoBP_jdoe_SR.xml"),
      HasSubstr("<Archive DateArchived=\"7-26-2004 09:05:03\" ArchiveID=\"1\"><Means>Supervisor</Means>"
                "<ArchivedBy>NTService</ArchivedBy><Comment>Archiving done by NT Service</Comment>"
                "</Archive>"));
  EXPECT_THAT(suite.Archive("NoBP_jdoe_trans.xml"), HasSubstr("<SR Q_ID=\"5531\" ArchiveID=\"1\""));
}

TEST_F(ArchiveDocumentsTest, ColumnsStandInTheTablesOrderWithoutNumberAndStatus) {
  suite.AddRequest(1, "jdoe");

  suite.Run();

  std::vector<std::string> names;
  const MSXML2::NodeListPtr children = suite.Document("NoBP_jdoe_SR.xml")->selectNodes("//SR/*");
  for (std::size_t i = 0; i < children->length(); ++i) names.push_back(children->item(i)->nodeName());
  EXPECT_THAT(names, ElementsAre("Q_ORIGINATOR", "PROSPECT", "EMAILID", "Q_DATE", "REGISTEREDDATE", "Q_DESC",
                                 "Q_TEXT", "A_TEXT", "Q_PRODUCTCAT", "PRODUCTID", "Q_CATEGORY", "Q_PRIORITY",
                                 "Q_SITE", "Q_PRODUCT", "Q_OBJECT", "Q_OBJECTNR", "Q_REPORTED", "BP_NUMBER",
                                 "D_DIRECT_TO", "CENTER", "Q_CALL", "ENDSTATUSTIME"));
}

TEST_F(ArchiveDocumentsTest, ColumnsOfATransactionStandInTheTablesOrderWithoutTheRequestsNumber) {
  suite.AddRequest(1, "jdoe");
  suite.AddTransaction(1, "step");

  suite.Run();

  std::vector<std::string> names;
  const MSXML2::NodeListPtr children = suite.Document("NoBP_jdoe_trans.xml")->selectNodes("//Transaction/*");
  for (std::size_t i = 0; i < children->length(); ++i) names.push_back(children->item(i)->nodeName());
  EXPECT_THAT(names, ElementsAre("T_ID", "T_NAME", "T_STATUS", "CENTER", "T_DATE", "T_COMMENT", "USERCOMMENT",
                                 "TIMESPENT"));
}

TEST_F(ArchiveDocumentsTest, LaterRunsAppendAndNumberOn) {
  suite.AddRequest(1, "jdoe");
  suite.Run();
  const std::string before = suite.Archive("NoBP_jdoe_SR.xml");
  suite.AddRequest(2, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@ArchiveID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/@ArchiveID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Archive/@ArchiveID"), ElementsAre("1", "2"));
  const std::string firstRequest =
      before.substr(before.find("<SR "), before.find("</SRs>") - before.find("<SR "));
  EXPECT_THAT(suite.Archive("NoBP_jdoe_SR.xml"), HasSubstr(firstRequest))
      << "earlier content is never changed";
}

TEST_F(ArchiveDocumentsTest, NumbersOnFromTheLastEntryEvenIfEarlierOnesAreHigher) {
  const auto entry = [](const std::string& number) {
    return "<Archive DateArchived=\"then\" ArchiveID=\"" + number +
           "\"><Means>Supervisor</Means><ArchivedBy>x</ArchivedBy><Comment/></Archive>";
  };
  suite.folder.Write(
      "suite/home/Data/Archives/NoBP_jdoe_SR.xml",
      "<QuestionsArchive><SRs/><Archives>" + entry("12") + entry("7") + "</Archives></QuestionsArchive>");
  suite.folder.Write(
      "suite/home/Data/Archives/NoBP_jdoe_trans.xml",
      "<TransactionsArchive><Transactions/><Archives>" + entry("99") + "</Archives></TransactionsArchive>");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/@ArchiveID"), ElementsAre("12", "7", "8"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Archive/@ArchiveID"), ElementsAre("99", "8"))
      << "the transactions file takes the number of the questions file";
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR/@ArchiveID"), ElementsAre("8"));
}

TEST_F(ArchiveDocumentsTest, ARequestWithoutTransactionsHasAnEmptyElement) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "jdoe");
  suite.AddTransaction(2, "only this one");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR[@Q_ID='1']/*"), IsEmpty());
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR[@Q_ID='2']/Transaction/T_NAME"),
              ElementsAre("only this one"));
}

TEST_F(ArchiveDocumentsTest, TransactionsStandUnderTheirOwnRequestWithoutItsNumber) {
  for (int id = 1; id <= 3; ++id) {
    suite.AddRequest(id, "jdoe");
    suite.AddTransaction(id, "first of " + std::to_string(id));
    suite.AddTransaction(id, "second of " + std::to_string(id));
  }

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR[@Q_ID='2']/Transaction/T_NAME"),
              ElementsAre("first of 2", "second of 2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Transaction/Q_ID"), IsEmpty());
  EXPECT_THAT(suite.Rows("select T_ID from TRANSACTIONS"), IsEmpty());
}

TEST_F(ArchiveDocumentsTest, StatusNumbersBecomeLabels) {
  const std::vector<std::pair<std::string, std::string>> statuses = {
      {"175", "LBLQX3077"}, {"180", "LBLQX3557"}, {"185", "LBLQX3558"}, {"190", ""}, {"0", ""}, {"null", ""}};
  int id = 0;
  std::vector<std::string> expected;
  for (const auto& [status, label] : statuses) {
    suite.AddRequest(++id, "jdoe");
    suite.Execute("update QUESTIONHISTORY set Q_STATUS = " + status + " where Q_ID = " + std::to_string(id));
    expected.push_back(label);
  }

  suite.Run();

  EXPECT_EQ(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_STATUS"), expected);
}

TEST_F(ArchiveDocumentsTest, NullColumnsAreEmptyElements) {
  suite.Execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_ORIGINATOR, ENDSTATUSTIME) values (1, 'jdoe', "
      "'2004-01-01 00:00:00')");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/*[.!='']"), ElementsAre("jdoe", "1/1/2004"));
  EXPECT_EQ(suite.Document("NoBP_jdoe_SR.xml")->selectNodes("//SR/*")->length(), 22U);
}

TEST_F(ArchiveDocumentsTest, NumbersOfTheCatalogueBecomeNames) {
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 3, PRODUCTID = 40, Q_CATEGORY = 5");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_PRODUCTCAT"), ElementsAre("Printers"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/PRODUCTID"), ElementsAre("Laser 40"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_CATEGORY"), ElementsAre("Paper jam"));
}

TEST_F(ArchiveDocumentsTest, ACatalogueNumberWithoutANameIsAnEmptyElement) {
  suite.ExecuteCatalogue("insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (4, null)");
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 4");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_PRODUCTCAT"), ElementsAre(""));
}

TEST_F(ArchiveDocumentsTest, CatalogueNumbersAreComparedAsNumbers) {
  suite.ExecuteCatalogue("drop table PRODUCTCATEGORY");
  suite.ExecuteCatalogue("create table PRODUCTCATEGORY (CATEGORYID varchar(9), CATEGORYNAME varchar(50))");
  suite.ExecuteCatalogue("insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values ('003', 'Plotters')");
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 3");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_PRODUCTCAT"), ElementsAre("Plotters"));
}

TEST_F(ArchiveDocumentsTest, CatalogueNumbersZeroAndUnknownAreEmptyElements) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "jdoe");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 0, PRODUCTID = 0, Q_CATEGORY = 0 where Q_ID = 1");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 7, PRODUCTID = 7, Q_CATEGORY = 7 where Q_ID = 2");

  suite.Run();

  for (const char* column : {"Q_PRODUCTCAT", "PRODUCTID", "Q_CATEGORY"}) {
    EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/" + std::string(column)), ElementsAre("", ""))
        << column;
  }
}

TEST_F(ArchiveDocumentsTest, SeparatorsOfTheHistoryBecomeLabels) {
  suite.AddRequest(1, "jdoe");
  suite.Execute(
      "update QUESTIONHISTORY set Q_TEXT = char(1,2,3,4) || 'one' || char(1,2,3,4) || 'two', "
      "A_TEXT = 'x' || char(4,3,2,1) || 'answer'");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_TEXT"), ElementsAre("LBLQX3388oneLBLQX3388two"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/A_TEXT"), ElementsAre("xLBLQX3429answer"));
}

TEST_F(ArchiveDocumentsTest, RegisteredDateIsWrittenForItsOriginatorsLocale) {
  suite.directory->people["jdoe"].locale = 1043;
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = '2003-12-24 18:30:00'");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/REGISTEREDDATE"),
              ElementsAre("12/24/2003 18:30:00[3,1043]"));
}

TEST_F(ArchiveDocumentsTest, RegisteredDateIsWrittenForTheOneWhoAskedAndNotForTheOwnerOfTheFile) {
  suite.directory->people["zz-prospect"].locale = 1043;
  suite.directory->people["ann@example.org"].locale = 1041;
  suite.AddProspectRequest(1, "ann@example.org");
  suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = '2003-12-24 18:30:00'");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_ann@example.org_SR.xml", "//SR/REGISTEREDDATE"),
              ElementsAre("12/24/2003 18:30:00[3,1043]"));
}

TEST_F(ArchiveDocumentsTest, RegisteredDateOfSomeoneUnknownIsWrittenForTheDefaultLanguage) {
  suite.directory->people.clear();
  suite.AddRequest(1, "gone");
  suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = '2003-12-24 18:30:00'");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_gone_SR.xml", "//SR/REGISTEREDDATE"),
              ElementsAre("12/24/2003 18:30:00[3,1033]"));
}

TEST_F(ArchiveDocumentsTest, OtherValuesHaveTheirDefaultText) {
  suite.AddProspectRequest(1, "ann@example.org", "2004-01-02 03:04:05");
  suite.Execute("update QUESTIONHISTORY set Q_PRIORITY = -3, Q_DATE = '2003-02-01 00:00:00'");

  suite.Run();

  const std::string file = "NoBP_ann@example.org_SR.xml";
  EXPECT_THAT(suite.Texts(file, "//SR/PROSPECT"), ElementsAre("True"));
  EXPECT_THAT(suite.Texts(file, "//SR/Q_PRIORITY"), ElementsAre("-3"));
  EXPECT_THAT(suite.Texts(file, "//SR/Q_DATE"), ElementsAre("2/1/2003"));
  EXPECT_THAT(suite.Texts(file, "//SR/ENDSTATUSTIME"), ElementsAre("1/2/2004 03:04:05"));
}

TEST_F(ArchiveDocumentsTest, TextWithMarkupQuotesAndLineBreaksComesBackAsItWas) {
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set Q_TEXT = '<b>&amp; ]]> \"x\" ''y''' || char(13,10,9) || 'é😀'");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_TEXT"), ElementsAre("<b>&amp; ]]> \"x\" 'y'\r\n\té😀"));
}

TEST_F(ArchiveDocumentsTest, ATextOfTenMegabytesIsKeptWhole) {
  suite.AddRequest(1, "jdoe");
  suite.Execute(TestEngine().empty()
                    ? "update QUESTIONHISTORY set Q_TEXT = replace(hex(zeroblob(5000000)), '0', 'x')"
                    : "update QUESTIONHISTORY set Q_TEXT = repeat('x', 10000000)");

  suite.Run();

  const std::vector<std::string> texts = suite.Texts("NoBP_jdoe_SR.xml", "//SR/Q_TEXT");
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_TRUE(texts.front() == std::string(10'000'000, 'x'));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
}

TEST_F(ArchiveDocumentsTest, AControlCharacterThatXmlCannotHoldKeepsTheRows) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "ann");
  suite.Execute("update QUESTIONHISTORY set Q_TEXT = 'bell' || char(7) where Q_ID = 1");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(), ::testing::Contains("Editing of Archive file " +
                                                       suite.ArchivePath("NoBP_jdoe_SR.xml") + " failed1"));
}

TEST_F(ArchiveDocumentsTest, AsksTheFileHandlingComponentAtItsPoints) {
  suite.SetParameter("Webfarm Implemented", "True");
  suite.SetParameter("FTPPath", "ftp://shared.example/root");
  suite.AddRequest(1, "jdoe");
  suite.Run();
  suite.fileHandling->calls.clear();
  suite.AddRequest(2, "jdoe");

  suite.Run();

  const std::string questions = suite.ArchivePath("NoBP_jdoe_SR.xml");
  const std::string transactions = suite.ArchivePath("NoBP_jdoe_trans.xml");
  EXPECT_THAT(
      suite.fileHandling->calls,
      ElementsAre("FileExists(NoBP_jdoe_SR.xml,[13])", "IsInUse(NoBP_jdoe_SR.xml)",
                  "FetchFile(ftp://shared.example/root,NoBP_jdoe_SR.xml," + questions + ",13,10)",
                  "SetInUse(NoBP_jdoe_SR.xml,-1)", "StoreFile(" + questions + ",13)",
                  "SetInUse(NoBP_jdoe_SR.xml,0)", "FileExists(NoBP_jdoe_trans.xml,[13])",
                  "IsInUse(NoBP_jdoe_trans.xml)",
                  "FetchFile(ftp://shared.example/root,NoBP_jdoe_trans.xml," + transactions + ",13,10)",
                  "SetInUse(NoBP_jdoe_trans.xml,-1)", "StoreFile(" + transactions + ",13)",
                  "SetInUse(NoBP_jdoe_trans.xml,0)"));
}

TEST_F(ArchiveDocumentsTest, ANewFileIsNeitherFetchedNorMarkedButHandedOut) {
  suite.SetParameter("Webfarm Implemented", "True");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.fileHandling->calls,
              ElementsAre("FileExists(NoBP_jdoe_SR.xml,[13])",
                          "StoreFile(" + suite.ArchivePath("NoBP_jdoe_SR.xml") + ",13)",
                          "SetInUse(NoBP_jdoe_SR.xml,0)", "FileExists(NoBP_jdoe_trans.xml,[13])",
                          "StoreFile(" + suite.ArchivePath("NoBP_jdoe_trans.xml") + ",13)",
                          "SetInUse(NoBP_jdoe_trans.xml,0)"));
}

TEST_F(ArchiveDocumentsTest, EachCustomerIsServedByTheParametersOfItsTurn) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  suite.Run();
  suite.fileHandling->calls.clear();
  suite.SetParameter("Webfarm Implemented", "True");
  suite.SetParameter("FTPPath", "ftp://one.example");
  suite.AddRequest(3, "jdoe");
  suite.AddRequest(4, "zoe");
  suite.journal->before = [this](std::string_view step) {
    if (step == "Connection.CommitTrans") suite.fileHandling->calls.push_back("commit");
  };
  suite.journal->beforeStatement = [this, reads = 0](const std::string& sql) mutable {
    if (sql.find("Webfarm Implemented") == std::string::npos || ++reads != 2) return;
    suite.SetParameter("Webfarm Implemented", "0");
  };

  suite.Run();

  std::string customer = "jdoe";
  for (const std::string& call : suite.fileHandling->calls) {
    if (call == "commit") customer = "zoe";
    EXPECT_FALSE(customer == "zoe" && call.rfind("FetchFile(", 0) == 0) << call;
  }
  EXPECT_THAT(suite.fileHandling->calls,
              ::testing::Contains(StartsWith("FetchFile(ftp://one.example,NoBP_jdoe_SR.xml,")));
}

TEST_F(ArchiveDocumentsTest, WithoutItsParametersThereIsNoFarm) {
  suite.Execute("delete from PARAMETERS where PARAM_NAME = 'Webfarm Implemented'");
  suite.AddRequest(1, "jdoe");
  suite.Run();
  suite.fileHandling->calls.clear();
  suite.AddRequest(2, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_EQ(suite.fileHandling->calls[2], "SetInUse(NoBP_jdoe_SR.xml,-1)");
}

TEST_F(ArchiveDocumentsTest, AFileInUseIsNeitherFetchedNorMarked) {
  suite.SetParameter("Webfarm Implemented", "True");
  suite.AddRequest(1, "jdoe");
  suite.Run();
  suite.fileHandling->calls.clear();
  suite.fileHandling->inUse = true;
  suite.AddRequest(2, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.fileHandling->calls[1], StartsWith("IsInUse("));
  EXPECT_THAT(suite.fileHandling->calls[2], StartsWith("StoreFile("));
}

TEST_F(ArchiveDocumentsTest, OnOneServerNothingIsFetched) {
  suite.AddRequest(1, "jdoe");
  suite.Run();
  suite.fileHandling->calls.clear();
  suite.AddRequest(2, "jdoe");

  suite.Run();

  EXPECT_EQ(suite.fileHandling->calls[2], "SetInUse(NoBP_jdoe_SR.xml,-1)");
}

TEST_F(ArchiveDocumentsTest, FilesThatAKilledRunHasJustMadeAreCompleted) {
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_SR.xml",
                     "<QuestionsArchive></QuestionsArchive>\r\n");
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_trans.xml",
                     "<TransactionsArchive></TransactionsArchive>\r\n");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
}

TEST_F(ArchiveDocumentsTest, OnAFarmAFileThatAKilledRunWasJustCreatingIsReplacedByTheSharedOne) {
  suite.SetParameter("Webfarm Implemented", "True");
  suite.AddRequest(1, "jdoe");
  suite.Run();
  const std::string shared = suite.Archive("NoBP_jdoe_SR.xml");
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_SR.xml", "<Quest");
  suite.fileHandling->onFetch = [&](const std::string& name) {
    if (name == "NoBP_jdoe_SR.xml") suite.folder.Write("suite/home/Data/Archives/" + name, shared);
  };
  suite.AddRequest(2, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
}

TEST_F(ArchiveDocumentsTest, AShortFileOfAnotherKindIsNotTakenForOne) {
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_SR.xml", "<Quest!");
  suite.undescribed = {"NoBP_jdoe_SR.xml"};
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), "<Quest!");
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
}

}  // namespace
}  // namespace orvane_test
