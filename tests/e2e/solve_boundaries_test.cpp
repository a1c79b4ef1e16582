// OrvaneProcess.SolveOnNoResponse through the real program at its boundaries: the second at which a row is
// due, sheets and servers that fail. The tables are made by hand: only the columns that the job needs, some
// without a key, no prospects and no catalogue.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

using orvane_test::Database;
using orvane_test::DateAt;
using orvane_test::DateText;
using orvane_test::HandMadeSuite;
using orvane_test::kHour;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

constexpr const char* kSolveLog = "OrvSolveOnNoResponseSvc_log_";
const std::string kLongAgo = "1999-12-31 23:59:59";

// By the clock that the program reads: std::time may be some milliseconds behind it.
std::time_t Now() {
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

class SolveBoundariesTest : public testing::Test {
 protected:
  SolveBoundariesTest() {
    database_.Execute(
        "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
        "CREATE TABLE REMINDER (Q_ID INTEGER, T1_DATE DATETIME, T2_DATE DATETIME, R_STATUS INTEGER);"
        "CREATE TABLE QUESTIONS (Q_ID INTEGER, Q_STATUS INTEGER, Q_ORIGINATOR VARCHAR(50), PROSPECT BOOLEAN, "
        "EMAILID VARCHAR(50), Q_DESC TEXT, Q_TEXT TEXT, A_TEXT TEXT, Q_PRODUCTCAT INTEGER, PRODUCTID "
        "INTEGER, "
        "Q_CATEGORY INTEGER, Q_PRIORITY INTEGER, Q_SITE VARCHAR(50), Q_Product VARCHAR(50), Q_OBJECT "
        "VARCHAR(50), "
        "Q_OBJECTNR VARCHAR(50), Q_REPORTED VARCHAR(50), BP_NUMBER INTEGER, D_DIRECT_TO VARCHAR(50), "
        "CENTER INTEGER, Q_CALL VARCHAR(50));"
        "CREATE TABLE TRANSACTIONS (T_ID INTEGER PRIMARY KEY, Q_ID INTEGER, T_NAME TEXT, T_STATUS TEXT, "
        "CENTER INTEGER, T_DATE DATETIME, T_COMMENT TEXT, USERCOMMENT TEXT, TIMESPENT INTEGER);"
        "CREATE TABLE EMAIL (Mail_Id INTEGER, Mail_HTML_File BOOLEAN, MAIL_BODY TEXT, Mail_From TEXT, "
        "Mail_Subject TEXT, Mail_Path_XSL TEXT, Mail_Hyperlink TEXT);"
        "CREATE TABLE I18NTEXT (LOCALEID INTEGER, LABEL VARCHAR(50), TEXT TEXT);"
        "CREATE TABLE DATALABEL (LOCALEID INTEGER, TEXTID VARCHAR(50), TEXT TEXT);"
        "INSERT INTO PARAMETERS VALUES ('Conclusion_Time', '72'), ('Reminder_Time', '24'), "
        "('BackOfficeApplication', '0'), ('DataFileRelativePath', 'Data');"
        "INSERT INTO EMAIL VALUES (8, 1, 'B8', 'help@suite.example', 'S8', 'mail.xsl', "
        "'https://suite.example/'), "
        "(10, 0, 'B10', 'help@suite.example', 'S10', NULL, 'https://suite.example/');"
        "INSERT INTO DATALABEL VALUES (1033, 'S8', 'Reminder'), (1033, 'B8', 'Please reply.'), "
        "(1033, 'S10', 'Concluded'), (1033, 'B10', 'We conclude.');"
        "INSERT INTO I18NTEXT VALUES (1033, 'LBLQX3996', '- good day'), (1033, 'LBLQX3120', 'Request');");
    suite_.Folder().Write("home/config/directory.ldif",
                          "dn: uid=anna\nobjectClass: inetOrgPerson\nuid: anna\ngivenName: Anna\nsn: Aalto\n"
                          "cn: Anna Aalto\nmail: anna@example.org\norvaneLanguageID: 1033\n");
    suite_.Folder().Write("home/Orvane/Mail/Sheets/mail.xsl", R"(<xsl:stylesheet version="1.0"
      xmlns:xsl="http://www.w3.org/1999/XSL/Transform"><xsl:output method="html" encoding="us-ascii"/>
      <xsl:param name="LBLQX3120"/><xsl:template match="/MAIL"><html><body>
      <p><xsl:value-of select="$LBLQX3120"/>=<xsl:value-of select="CASEID"/></p></body></html></xsl:template>
      </xsl:stylesheet>)");
    std::filesystem::create_directories(suite_.Home() / "Data" / "HTML");
    std::filesystem::create_directories(Pickup());
  }

  std::filesystem::path Pickup() const { return suite_.Home() / "mail" / "pickup"; }

  void Add(int id, const std::string& t1, const std::string& t2, const std::string& changes = "") {
    database_.Execute(
        "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, Q_PRODUCTCAT, PRODUCTID, Q_CATEGORY, "
        "Q_PRIORITY, CENTER) VALUES (" +
        std::to_string(id) + ", 150, 'anna', 0, 0, 0, 0, 1, 7)");
    if (!changes.empty()) {
      database_.Execute("UPDATE QUESTIONS SET " + changes + " WHERE Q_ID = " + std::to_string(id));
    }
    AddReminder(id, t1, t2);
  }
  void AddReminder(int id, const std::string& t1, const std::string& t2) {
    const auto date = [](const std::string& text) { return text.empty() ? "NULL" : "'" + text + "'"; };
    database_.Execute("INSERT INTO REMINDER VALUES (" + std::to_string(id) + ", " + date(t1) + ", " +
                      date(t2) + ", 150)");
  }

  Outcome Run(const Strings& options = {}) {
    Strings words{"run", "--home", suite_.Home().string(), "OrvaneProcess.SolveOnNoResponse"};
    words.insert(words.end(), options.begin(), options.end());
    return RunHost(words);
  }

  // The mails in the pickup folder, each whole.
  Strings Mails() const {
    Strings mails;
    for (const auto& entry : std::filesystem::directory_iterator(Pickup())) {
      mails.push_back(TemporaryFolder::Read(entry.path()));
    }
    std::sort(mails.begin(), mails.end());
    return mails;
  }

  HandMadeSuite suite_;
  Database database_{suite_.DatabaseFile()};
};

TEST_F(SolveBoundariesTest, RemindsAndConcludesWhatIsDue) {
  Add(26, DateText(-120), "");
  Add(27, DateText(-30), "");
  Add(28, kLongAgo, DateText(-120));
  Add(29, kLongAgo, DateText(-30));
  Add(30, "", "");

  const std::time_t before = Now();
  const Outcome outcome = Run();
  const std::time_t after = Now();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(suite_.ErrorLog(), IsEmpty());

  EXPECT_THAT(database_.Rows("SELECT Q_ID FROM REMINDER ORDER BY Q_ID"), ElementsAre("26", "27", "29", "30"));
  EXPECT_THAT(database_.Rows("SELECT Q_ID FROM REMINDER WHERE T2_DATE IS NULL ORDER BY Q_ID"),
              ElementsAre("27", "30"));
  const Strings scheduled = database_.Rows("SELECT T2_DATE FROM REMINDER WHERE Q_ID = 26");
  ASSERT_EQ(scheduled.size(), 1U);
  EXPECT_GE(scheduled[0], DateAt(before + 48 * kHour));
  EXPECT_LE(scheduled[0], DateAt(after + 48 * kHour));
  EXPECT_THAT(database_.Rows("SELECT Q_ID, Q_STATUS FROM QUESTIONS ORDER BY Q_ID"),
              ElementsAre("26|150", "27|150", "28|160", "29|150", "30|150"));
  EXPECT_THAT(database_.Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_COMMENT, USERCOMMENT, TIMESPENT FROM "
                             "TRANSACTIONS"),
              ElementsAre("28|LBLQX3479|160|7|LBLQX3480||0"));

  const Strings mails = Mails();
  ASSERT_EQ(mails.size(), 2U);
  for (const std::string& mail : mails) {
    EXPECT_THAT(mail, HasSubstr("anna@example.org"));
    EXPECT_THAT(mail, HasSubstr("help@suite.example"));
  }
  EXPECT_EQ(
      std::count_if(mails.begin(), mails.end(),
                    [](const std::string& mail) { return mail.find("Reminder (26)") != std::string::npos; }),
      1);
  EXPECT_EQ(
      std::count_if(mails.begin(), mails.end(),
                    [](const std::string& mail) { return mail.find("Concluded (28)") != std::string::npos; }),
      1);
  EXPECT_TRUE(std::filesystem::is_empty(suite_.Home() / "Data" / "HTML"));

  const std::string ruler = std::string(53, '*') + "\r\n";
  EXPECT_EQ(orvane_test::WithoutTimes(suite_.RunLog(kSolveLog)),
            ruler + "Orvane NTService Log \r\n" + ruler +
                "Solve On No Response - NTService Started at : <time>\r\n" + ruler +
                " Solve On No Response -NTService Stopped at : <time>\r\n" + ruler);
}

// The pass decides by one moment between its start and its end: the rows must be those of one such second.
TEST_F(SolveBoundariesTest, DrawsTheLineToTheSecond) {
  database_.Execute("UPDATE EMAIL SET Mail_HTML_File = 0");
  const std::time_t base = Now() - 60;
  for (int second = -10; second <= 20; ++second) Add(1000 + second, DateAt(base + second), "");
  const std::time_t before = Now();
  ASSERT_EQ(Run().exitCode, 0);
  const std::time_t after = Now();

  const Strings reminded =
      database_.Rows("SELECT Q_ID FROM REMINDER WHERE T2_DATE IS NOT NULL ORDER BY Q_ID");
  bool explained = false;
  for (std::time_t moment = before; moment <= after; ++moment) {
    Strings expected;
    for (int second = -10; second <= 20; ++second) {
      if (base + second <= moment - 60) expected.push_back(std::to_string(1000 + second));
    }
    explained = explained || reminded == expected;
  }
  EXPECT_TRUE(explained);
  EXPECT_EQ(Mails().size(), reminded.size());
}

TEST_F(SolveBoundariesTest, ASheetThatIsMissingOrBrokenKeepsTheMailBackAndTheRowGoesOn) {
  std::filesystem::remove(suite_.Home() / "Orvane" / "Mail" / "Sheets" / "mail.xsl");
  Add(26, kLongAgo, "");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_THAT(database_.Rows("SELECT Q_ID FROM REMINDER WHERE T2_DATE IS NOT NULL"), ElementsAre("26"));
  EXPECT_THAT(Mails(), IsEmpty());
  EXPECT_THAT(suite_.ErrorLog(),
              ElementsAre(HasSubstr("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: ")));

  suite_.Folder().Write("home/Orvane/Mail/Sheets/mail.xsl", "<xsl:stylesheet");
  Add(27, kLongAgo, "");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_THAT(database_.Rows("SELECT Q_ID FROM REMINDER WHERE T2_DATE IS NOT NULL ORDER BY Q_ID"),
              ElementsAre("26", "27"));
  EXPECT_EQ(suite_.ErrorLog().size(), 2U);
}

TEST_F(SolveBoundariesTest, AMailServerThatIsDownHoldsUpNothing) {
  const std::filesystem::path file = suite_.Home() / "config" / "siteConfiguration.xml";
  std::string site = TemporaryFolder::Read(file);
  const auto replace = [&site](const std::string& from, const std::string& to) {
    site.replace(site.find(from), from.size(), to);
  };
  replace("<key name=\"sendusing\">1</key>", "<key name=\"sendusing\">2</key>");
  replace("<key name=\"smtpserver\"></key><key name=\"smtpserverport\">25</key>",
          "<key name=\"smtpserver\">127.0.0.1</key><key name=\"smtpserverport\">1</key>");
  suite_.Folder().Write("home/config/siteConfiguration.xml", site);
  Add(26, kLongAgo, "");
  Add(27, "", kLongAgo);

  EXPECT_EQ(Run({"--no-preflight"}).exitCode, 0);

  EXPECT_THAT(database_.Rows("SELECT Q_ID FROM REMINDER"), ElementsAre("26"));
  EXPECT_THAT(database_.Rows("SELECT Q_STATUS FROM QUESTIONS ORDER BY Q_ID"), ElementsAre("150", "160"));
  EXPECT_THAT(suite_.ErrorLog(), IsEmpty());
  EXPECT_FALSE(std::filesystem::is_empty(suite_.Home() / "Data" / "HTML"));  // the page of 26 stays
}

}  // namespace
