// OrvaneProcess.Archive through the real program, on a history made by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/support/archive_files.hpp"

namespace {

using orvane_test::Database;
using orvane_test::DateText;
using orvane_test::HandMadeSuite;
using orvane_test::kDay;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::TemporaryFolder;
using orvane_test::WithoutTimes;
using Strings = std::vector<std::string>;

constexpr const char* kArchiveLog = "OrvArchiveSvc_log_";
const std::string kRuler = std::string(104, '*') + "\r\n";

class ArchiveTest : public testing::Test {
 protected:
  ArchiveTest() {
    database_.Execute(
        "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
        "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data/'), ('Webfarm Implemented', 'false'),"
        " ('FTPPath', '');"
        "CREATE TABLE QUESTIONHISTORY (Q_ID INTEGER PRIMARY KEY, Q_STATUS INTEGER, Q_ORIGINATOR VARCHAR(50),"
        " PROSPECT BIT, EMAILID VARCHAR(50), Q_TEXT TEXT, A_TEXT TEXT, Q_PRODUCTCAT INTEGER, PRODUCTID "
        "INTEGER,"
        " Q_CATEGORY INTEGER, REGISTEREDDATE DATETIME, ENDSTATUSTIME DATETIME);"
        "CREATE TABLE TRANSACTIONS (T_ID INTEGER PRIMARY KEY, Q_ID INTEGER, T_NAME VARCHAR(50), T_STATUS "
        "VARCHAR(10));");
    Database catalogue(suite_.CatalogueFile());
    catalogue.Execute(
        "CREATE TABLE FAQPARAMETER (PARAMNAME VARCHAR(50), PARAMVALUE VARCHAR(50));"
        "CREATE TABLE FAQCATEGORY (FAQCATEGORYID INTEGER, FAQCATEGORYDESCRIPTION VARCHAR(50));"
        "CREATE TABLE PRODUCTCATEGORY (CATEGORYID INTEGER, CATEGORYNAME VARCHAR(50));"
        "CREATE TABLE PRODUCT (PRODUCTID INTEGER, PRODUCTDESCRIPTION VARCHAR(50));"
        "INSERT INTO FAQCATEGORY VALUES (3, 'Parts & tools');"
        "INSERT INTO PRODUCTCATEGORY VALUES (1, 'Pumps');"
        "INSERT INTO PRODUCT VALUES (101, 'Pump <30>');");
    suite_.Folder().Write("home/config/directory.ldif",
                          "dn: cn=orvane\nuserPassword: secret\n\n"
                          "dn: uid=jdoe\nuid: jdoe\norvaneLocale: 1043\norvaneBusinessPartner: 1042\n\n"
                          "dn: uid=visitor\nuid: visitor\norvaneLocale: 1033\n");
  }

  void TearDown() override { orvane_test::ExpectArchiveFiles(ArchiveFolder()); }

  void SetArchiveAfter(const std::string& days) {
    database_.Execute("INSERT INTO PARAMETERS VALUES ('ArchiveAfter', '" + days + "')");
  }
  void AddRequest(const std::string& values, long closedSecondsAgo) {
    database_.Execute("INSERT INTO QUESTIONHISTORY VALUES (" + values + ", '" + DateText(-closedSecondsAgo) +
                      "')");
  }
  Outcome Run() { return RunHost({"run", "--home", suite_.Home().string(), "Archive"}); }
  std::filesystem::path ArchiveFolder() const { return suite_.Home() / "Data" / "Archives"; }
  Strings Files() {
    Strings names;
    for (const auto& entry : std::filesystem::directory_iterator(ArchiveFolder())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  std::string Path(const std::string& name) const {
    return suite_.Home().string() + "\\Data\\Archives\\" + name;
  }
  Strings Left() { return database_.Rows("SELECT Q_ID FROM QUESTIONHISTORY ORDER BY Q_ID"); }

  HandMadeSuite suite_;
  Database database_{suite_.DatabaseFile()};
};

TEST_F(ArchiveTest, MovesAClosedRequestIntoTheCustomersTwoFiles) {
  SetArchiveAfter("30");
  AddRequest(
      "5531, 185, 'jdoe', 0, NULL, char(1,2,3,4) || 'A & B', char(4,3,2,1) || 'yes', 1, 101, 3, "
      "'2004-07-26 09:05:03'",
      31 * kDay);
  database_.Execute("UPDATE QUESTIONHISTORY SET ENDSTATUSTIME = '2004-08-01 00:00:00'");
  AddRequest("5532, 175, 'jdoe', 0, NULL, 'kept', NULL, 0, 0, 0, NULL", 29 * kDay);
  database_.Execute(
      "INSERT INTO TRANSACTIONS VALUES (1, 5531, 'LBLQX3479', '160'), (2, 5532, 'kept', '150')");

  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(Files(), (Strings{"BP1042_jdoe_SR.xml", "BP1042_jdoe_trans.xml"}));
  const std::string entry =
      "<Archives><Archive DateArchived=\"<time>\" "
      "ArchiveID=\"1\"><Means>Supervisor</Means><ArchivedBy>NTService"
      "</ArchivedBy><Comment>Archiving done by NT Service</Comment></Archive></Archives>";
  EXPECT_EQ(
      WithoutTimes(TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_SR.xml")),
      "<QuestionsArchive><SRs><SR Q_ID=\"5531\" Q_STATUS=\"LBLQX3558\" ArchiveID=\"1\">"
      "<Q_ORIGINATOR>jdoe</Q_ORIGINATOR><PROSPECT>False</PROSPECT><EMAILID/><Q_TEXT>LBLQX3388A &amp; "
      "B</Q_TEXT>"
      "<A_TEXT>LBLQX3429yes</A_TEXT><Q_PRODUCTCAT>Pumps</Q_PRODUCTCAT><PRODUCTID>Pump &lt;30&gt;</PRODUCTID>"
      "<Q_CATEGORY>Parts &amp; tools</Q_CATEGORY><REGISTEREDDATE><time></REGISTEREDDATE>"
      "<ENDSTATUSTIME>8/1/2004</ENDSTATUSTIME></SR></SRs>" +
          entry + "</QuestionsArchive>\n");
  EXPECT_EQ(WithoutTimes(TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_trans.xml")),
            "<TransactionsArchive><Transactions><SR Q_ID=\"5531\" ArchiveID=\"1\"><Transaction><T_ID>1</T_ID>"
            "<T_NAME>LBLQX3479</T_NAME><T_STATUS>160</T_STATUS></Transaction></SR></Transactions>" +
                entry + "</TransactionsArchive>\n");
  EXPECT_EQ(Left(), Strings{"5532"});
  EXPECT_EQ(database_.Rows("SELECT T_ID FROM TRANSACTIONS"), Strings{"2"});
  EXPECT_EQ(WithoutTimes(suite_.RunLog(kArchiveLog)),
            kRuler + "<time>  : Archiving Process started by NTService\r\n<time>  : Archive Files " +
                Path("BP1042_jdoe_SR.xml") + " and " + Path("BP1042_jdoe_trans.xml") +
                " edited\r\n<time>  : Archiving Process ended.\r\n" + kRuler);
  EXPECT_EQ(suite_.ErrorLog(), Strings{});
}

TEST_F(ArchiveTest, AProspectsFilesAreNamedByTheAddress) {
  SetArchiveAfter("30");
  AddRequest("1, 175, 'visitor', 1, 'someone@fair.example', 'x', NULL, 0, 0, 0, NULL", 40 * kDay);
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Files(), (Strings{"NoBP_someone@fair.example_SR.xml", "NoBP_someone@fair.example_trans.xml"}));
  EXPECT_EQ(Left(), Strings{});
}

TEST_F(ArchiveTest, ASecondRunAppendsUnderTheNextNumber) {
  SetArchiveAfter("30");
  AddRequest("1, 175, 'jdoe', 0, NULL, 'x', NULL, 0, 0, 0, NULL", 40 * kDay);
  ASSERT_EQ(Run().exitCode, 0);
  AddRequest("2, 190, 'jdoe', 0, NULL, 'y', NULL, 0, 0, 0, NULL", 40 * kDay);
  ASSERT_EQ(Run().exitCode, 0);
  const std::string file = TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_SR.xml");
  EXPECT_NE(file.find("<SR Q_ID=\"1\" Q_STATUS=\"LBLQX3077\" ArchiveID=\"1\">"), std::string::npos) << file;
  EXPECT_NE(file.find("<SR Q_ID=\"2\" Q_STATUS=\"\" ArchiveID=\"2\">"), std::string::npos) << file;
}

TEST_F(ArchiveTest, NothingIsTouchedWhenNothingQualifies) {
  SetArchiveAfter("30");
  AddRequest("1, 175, 'jdoe', 0, NULL, 'x', NULL, 0, 0, 0, NULL", 10 * kDay);
  database_.Execute("INSERT INTO QUESTIONHISTORY (Q_ID, Q_ORIGINATOR) VALUES (2, 'jdoe')");  // never closed
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Left(), (Strings{"1", "2"}));
  EXPECT_EQ(WithoutTimes(suite_.RunLog(kArchiveLog)),
            kRuler +
                "<time>  : Archiving Process started by NTService\r\n"
                "<time>  : No questions qualified for Archiving.\r\n<time>  : Archiving Process ended.\r\n" +
                kRuler);
}

TEST_F(ArchiveTest, ALimitThatIsNoNumberEndsTheRunWithItsTwoLines) {
  SetArchiveAfter("abc");
  AddRequest("1, 175, 'jdoe', 0, NULL, 'x', NULL, 0, 0, 0, NULL", 400 * kDay);
  EXPECT_EQ(Run().exitCode, 0);  // the stop line is written on this path too
  EXPECT_EQ(Left(), Strings{"1"});
  EXPECT_EQ(WithoutTimes(suite_.RunLog(kArchiveLog)),
            kRuler +
                "<time>  : Archiving Process started by NTService\r\n"
                "<time>  : No Archive After parameter mentioned in the parameter table\r\n"
                "<time>  : Archiving process failed\r\n<time>  : Archiving Process ended.\r\n" +
                kRuler);
}

TEST_F(ArchiveTest, ADeletionThatFailsUndoesFilesAndRows) {
  SetArchiveAfter("30");
  AddRequest("1, 175, 'jdoe', 0, NULL, 'x', NULL, 0, 0, 0, NULL", 40 * kDay);
  ASSERT_EQ(Run().exitCode, 0);
  const std::string before = TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_SR.xml");
  const std::string transactionsBefore = TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_trans.xml");

  AddRequest("2, 175, 'jdoe', 0, NULL, 'y', NULL, 0, 0, 0, NULL", 40 * kDay);
  database_.Execute(
      "INSERT INTO TRANSACTIONS VALUES (1, 2, 'x', '1');"
      "CREATE TRIGGER refuse BEFORE DELETE ON QUESTIONHISTORY BEGIN SELECT RAISE(ABORT, 'not now'); END");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Left(), Strings{"2"});
  EXPECT_EQ(database_.Rows("SELECT T_ID FROM TRANSACTIONS"), Strings{"1"});
  EXPECT_EQ(TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_SR.xml"), before);
  EXPECT_EQ(TemporaryFolder::Read(ArchiveFolder() / "BP1042_jdoe_trans.xml"), transactionsBefore);
  EXPECT_NE(suite_.RunLog(kArchiveLog)
                .find("  : Changes to XML files undone" + Path("BP1042_jdoe_SR.xml") +
                      Path("BP1042_jdoe_trans.xml") + " undone\r\n"),
            std::string::npos);
}

TEST_F(ArchiveTest, AnUnreachableCatalogueEndsTheRunWithItsClosingLinesAndAnEntryInTheErrorLog) {
  SetArchiveAfter("30");
  AddRequest("1, 175, 'jdoe', 0, NULL, 'x', NULL, 0, 0, 0, NULL", 40 * kDay);
  std::filesystem::remove(suite_.CatalogueFile());
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_NE(outcome.err.find("OrvaneProcess.Archive.archiveQuestions caught: "), std::string::npos)
      << outcome.err;
  EXPECT_EQ(Left(), Strings{"1"});
  EXPECT_FALSE(std::filesystem::exists(ArchiveFolder()));
  EXPECT_EQ(WithoutTimes(suite_.RunLog(kArchiveLog)), "<time>  : Archiving Process ended.\r\n" + kRuler);
  EXPECT_FALSE(suite_.ErrorLog().empty());
}

TEST_F(ArchiveTest, AnUnreachableSuiteDatabaseEndsTheRunTheSameWay) {
  suite_.Folder().Write("home/db/orvane.sqlite", "this is no database, however long it is looked at\n");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(ArchiveFolder()));
  const std::string log = WithoutTimes(suite_.RunLog(kArchiveLog));
  const std::string closing = "<time>  : Archiving Process ended.\r\n" + kRuler;
  ASSERT_GE(log.size(), closing.size());
  EXPECT_EQ(log.substr(log.size() - closing.size()), closing);
  EXPECT_FALSE(suite_.ErrorLog().empty());
}

}  // namespace
