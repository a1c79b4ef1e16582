// OrvaneProcess.SolveOnNoResponse through the real program, on questions made by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

using orvane_test::Database;
using orvane_test::DateText;
using orvane_test::HandMadeSuite;
using orvane_test::kHour;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::TemporaryFolder;
using Strings = std::vector<std::string>;

constexpr long kMinute = 60;

class SolveOnNoResponseTest : public testing::Test {
 protected:
  SolveOnNoResponseTest() {
    // A suite as init makes it, with plain-text mails and no ERP.
    std::filesystem::remove_all(suite_.Home());
    const Outcome made = RunHost({"init", suite_.Home().string()});
    if (made.exitCode != 0) throw std::runtime_error(made.err);
    database_ = std::make_unique<Database>(suite_.DatabaseFile());
    database_->Execute(
        "UPDATE EMAIL SET Mail_HTML_File = 0;"
        "UPDATE DATALABEL SET TEXT = 'Reminded' WHERE TEXTID = 'MAIL8SUBJECT';"
        "UPDATE DATALABEL SET TEXT = 'Concluded' WHERE TEXTID = 'MAIL10SUBJECT';"
        "UPDATE PARAMETERS SET PARAM_VALUE = '72' WHERE PARAM_NAME = 'Reminder_Time';"
        "UPDATE PARAMETERS SET PARAM_VALUE = '100' WHERE PARAM_NAME = 'Conclusion_Time'");
    AppendPerson("jdoe", "jane@x.example", "1033");
  }

  void AppendPerson(const std::string& id, const std::string& mail, const std::string& language) {
    const auto file = suite_.Home() / "config/directory.ldif";
    suite_.Folder().Write("home/config/directory.ldif",
                          TemporaryFolder::Read(file) + "\ndn: uid=" + id + "\nuid: " + id + "\nmail: " +
                              mail + "\ngivenName: Jane\nsn: Doe\n" + "orvaneLanguageID: " + language + "\n");
  }
  static std::string Date(long secondsAgo) { return "'" + DateText(-secondsAgo) + "'"; }
  void AddQuestion(int id, const std::string& originator = "jdoe", const std::string& prospect = "0",
                   const std::string& emailId = "NULL", const std::string& call = "NULL") {
    database_->Execute(
        "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, EMAILID, Q_CALL, CENTER, "
        "D_DIRECT_TO, Q_REPORTED)"
        " VALUES (" +
        std::to_string(id) + ", 150, '" + originator + "', " + prospect + ", " + emailId + ", " + call +
        ", 7, 'jdoe', '')");
  }
  void AddReminder(int id, const std::string& t1, const std::string& t2, int status = 150) {
    database_->Execute("INSERT INTO REMINDER VALUES (" + std::to_string(id) + ", " + t1 + ", " + t2 + ", " +
                       std::to_string(status) + ")");
  }
  Outcome Run() { return RunHost({"run", "--home", suite_.Home().string(), "SolveOnNoResponse"}); }

  Strings Waiting() {
    return database_->Rows("SELECT Q_ID, T2_DATE IS NOT NULL FROM REMINDER ORDER BY Q_ID");
  }
  Strings Concluded() {
    return database_->Rows("SELECT Q_ID FROM QUESTIONS WHERE Q_STATUS = 160 ORDER BY Q_ID");
  }
  // "To: Subject" of each mail, sorted.
  Strings Mails() {
    Strings mails;
    for (const auto& entry : std::filesystem::directory_iterator(suite_.Home() / "mail/pickup")) {
      const std::string text = TemporaryFolder::Read(entry.path());
      mails.push_back(Header(text, "To: ") + ": " + Header(text, "Subject: "));
    }
    std::sort(mails.begin(), mails.end());
    return mails;
  }
  static std::string Header(const std::string& mail, const std::string& name) {
    const std::size_t start = mail.find("\n" + name) + 1 + name.size();
    return mail.substr(start, mail.find('\r', start) - start);
  }

  HandMadeSuite suite_;
  std::unique_ptr<Database> database_;
};

TEST_F(SolveOnNoResponseTest, EachRowMovesOnByItsOwnTimes) {
  for (int id = 1; id <= 8; ++id) AddQuestion(id);
  AddReminder(1, Date(2 * kMinute), "NULL");              // the reminder is due
  AddReminder(2, Date(-kMinute), "NULL");                 // not yet
  AddReminder(3, "NULL", "NULL");                         // no time is never due
  AddReminder(4, Date(9 * kHour), Date(2 * kMinute));     // the conclusion is due
  AddReminder(5, Date(9 * kHour), Date(-kMinute));        // not yet
  AddReminder(6, Date(9 * kHour), Date(9 * kHour), 100);  // not waiting for the customer
  AddReminder(7, Date(30), "NULL");                       // past, but by less than a minute
  AddReminder(8, Date(-kHour), Date(3 * kMinute));        // T2 decides, whatever T1 is

  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(Waiting(), (Strings{"1|1", "2|0", "3|0", "5|1", "6|1", "7|0"}));
  EXPECT_EQ(Concluded(), (Strings{"4", "8"}));
  EXPECT_EQ(database_->Rows(
                "SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_COMMENT, USERCOMMENT, TIMESPENT FROM TRANSACTIONS "
                "ORDER BY Q_ID"),
            (Strings{"4|LBLQX3479|160|7|LBLQX3480||0", "8|LBLQX3479|160|7|LBLQX3480||0"}));
  EXPECT_EQ(Mails(), (Strings{"jane@x.example: Concluded (4) ", "jane@x.example: Concluded (8) ",
                              "jane@x.example: Reminded (1) "}));
  // The conclusion comes 100 - 72 hours after the reminder.
  EXPECT_EQ(database_->Rows("SELECT T2_DATE BETWEEN " + Date(-28 * kHour + kMinute) + " AND " +
                            Date(-28 * kHour) + " FROM REMINDER WHERE Q_ID = 1"),
            Strings{"1"});
}

TEST_F(SolveOnNoResponseTest, TheRunLogHasALineOfAsterisksBeforeItsStopLine) {
  ASSERT_EQ(Run().exitCode, 0);
  const std::string ruler = std::string(53, '*') + "\r\n";
  EXPECT_EQ(orvane_test::WithoutTimes(suite_.RunLog("OrvSolveOnNoResponseSvc_log_")),
            ruler + "Orvane NTService Log \r\n" + ruler +
                "Solve On No Response - NTService Started at : <time>\r\n" + ruler +
                " Solve On No Response -NTService Stopped at : <time>\r\n" + ruler);
}

TEST_F(SolveOnNoResponseTest, EveryRefusedMailIsNamedHoweverManyThereAre) {
  constexpr int kQuestions = 60;
  for (int id = 1; id <= kQuestions; ++id) {
    AddQuestion(id, "jdoe", "1", id % 2 == 0 ? "'no one'" : "'visitor@fair.example'");
    AddReminder(id, Date(9 * kHour), Date(kHour));
  }
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), kQuestions / 2) << outcome.err;
  for (int id = 1; id <= kQuestions; ++id) {
    const bool named = outcome.err.find("a mail was not taken: to \"no one\", subject \"Concluded (" +
                                        std::to_string(id) + ")") != std::string::npos;
    EXPECT_EQ(named, id % 2 == 0) << id;
  }
  EXPECT_EQ(Mails().size(), static_cast<std::size_t>(kQuestions / 2));
  EXPECT_EQ(Concluded().size(), static_cast<std::size_t>(kQuestions));
}

TEST_F(SolveOnNoResponseTest, AProspectIsMailedAtTheAddressOfTheQuestion) {
  AddQuestion(1, "jdoe", "1", "'visitor@fair.example'");
  AddQuestion(2, "jdoe", "1", "NULL");
  AddQuestion(3, "jdoe", "NULL", "'not.used@fair.example'");
  for (int id = 1; id <= 3; ++id) AddReminder(id, Date(9 * kHour), Date(kHour));
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Concluded(), (Strings{"1", "2", "3"}));
  EXPECT_EQ(Waiting(), Strings{});
  // The second has no address: its mail is not sent, and nobody is told of that.
  EXPECT_EQ(Mails(), (Strings{"jane@x.example: Concluded (3) ", "visitor@fair.example: Concluded (1) "}));
  EXPECT_EQ(suite_.ErrorLog(), Strings{});
}

TEST_F(SolveOnNoResponseTest, AMissingQuestionBlocksTheDueRowsBehindIt) {
  AddQuestion(1);
  AddQuestion(3);
  for (int id = 1; id <= 3; ++id) AddReminder(id, Date(9 * kHour), Date(kHour));
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Concluded(), Strings{"1"});
  EXPECT_EQ(Waiting(), (Strings{"2|1", "3|1"}));
  ASSERT_EQ(suite_.ErrorLog().size(), 1U);
  EXPECT_NE(suite_.ErrorLog()[0].find("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "),
            std::string::npos)
      << suite_.ErrorLog()[0];
}

TEST_F(SolveOnNoResponseTest, AnUnknownUserEndsThePassAndIsLogged) {
  AddQuestion(1, "nobody");
  AddQuestion(2);
  AddReminder(1, Date(9 * kHour), Date(kHour));
  AddReminder(2, Date(9 * kHour), Date(kHour));
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Concluded(), Strings{});
  ASSERT_EQ(suite_.ErrorLog().size(), 2U);
  EXPECT_NE(suite_.ErrorLog()[0].find(
                "OrvaneProcess.OrvaneUtilities.getUserFromID caught: The directory knows no user "
                "nobody(1102)."),
            std::string::npos)
      << suite_.ErrorLog()[0];
}

TEST_F(SolveOnNoResponseTest, TheErpIsToldOfLinkedQuestionsOnly) {
  database_->Execute("UPDATE PARAMETERS SET PARAM_VALUE = '8' WHERE PARAM_NAME = 'BackOfficeApplication'");
  AddQuestion(1, "jdoe", "0", "NULL", "'CALL-1'");
  AddQuestion(2, "jdoe", "0", "NULL", "'<NULL>'");
  AddQuestion(3, "jdoe", "0", "NULL", "''");
  for (int id = 1; id <= 3; ++id) AddReminder(id, Date(9 * kHour), Date(kHour));
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(Concluded(), (Strings{"1", "2", "3"}));
  const std::string calls = TemporaryFolder::Read(suite_.Home() / "erp/calls-B.jsonl");
  EXPECT_EQ(std::count(calls.begin(), calls.end(), '\n'), 1) << calls;
  EXPECT_NE(calls.find("\"CALLNUMBER\":\"CALL-1\""), std::string::npos) << calls;
}

TEST_F(SolveOnNoResponseTest, HtmlPagesTravelWithTheMailAndLeaveNoFileBehind) {
  database_->Execute("UPDATE EMAIL SET Mail_HTML_File = 1");
  AddQuestion(1);
  database_->Execute(
      "UPDATE QUESTIONS SET Q_DESC = '<script>alert(1)</script>', Q_PRODUCTCAT = 0, PRODUCTID = 0, "
      "Q_CATEGORY = 0,"
      " Q_TEXT = char(1,2,3,4) || ' 2004-07-26 09:05:03.000' || 'the <b>pump</b>'");
  AddReminder(1, Date(2 * kMinute), "NULL");
  EXPECT_EQ(Run().exitCode, 0);
  EXPECT_EQ(suite_.ErrorLog(), Strings{});
  ASSERT_EQ(Mails().size(), 1U);
  const auto mail = std::filesystem::directory_iterator(suite_.Home() / "mail/pickup")->path();
  EXPECT_NE(TemporaryFolder::Read(mail).find("Content-Type: text/html"), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_empty(suite_.Home() / "Data/HTML"));
}

}  // namespace
