// What goes wrong around a run of the solve job, through the real parts: mail servers, style sheets, folders,
// templates, texts and people. After each, the rows, transactions, mails, pages and log entries.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/cdo/scripted_peer.hpp"
#include "tests/solve/whole_suite_test.hpp"

namespace orvane_test {
namespace {

using automation::Variant;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Texts = WholeSuite::Texts;
using Script = std::vector<std::string>;

constexpr const char* kPage = "26953.htm";  // of every mail, since the clock stands still
constexpr const char* kNotSet = "Object variable or With block variable not set (91).";

class JobFailuresTest : public WholeSuiteTest {
 protected:
  // 26 is to be reminded, 27 to be concluded, both of the same customer.
  void AddTwo() { suite_.Add({{26, kLongAgo, ""}, {27, "", kLongAgo}}); }

  // What a run leaves in the database whether its mails were sent or not.
  void ExpectRowsOfTwo() {
    EXPECT_THAT(suite_.Rows("SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER"),
                ElementsAre("26|1999-12-31 23:59:59|2004-07-28 09:05:03|150"));
    EXPECT_THAT(suite_.Rows("SELECT Q_ID, Q_STATUS FROM QUESTIONS ORDER BY Q_ID"),
                ElementsAre("26|150", "27|160"));
    EXPECT_THAT(suite_.Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, "
                            "TIMESPENT FROM TRANSACTIONS"),
                ElementsAre("27|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0"));
    EXPECT_EQ(suite_.Lines("outbox/escalation.jsonl").size(), 1U);
    EXPECT_EQ(suite_.Lines("outbox/questions.jsonl").size(), 1U);
  }
  // What it leaves when the first row has ended it.
  void ExpectNothingWritten() {
    EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM REMINDER WHERE Q_ID IN (26, 27) ORDER BY Q_ID"),
                ElementsAre("26", "27"));
    EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM REMINDER WHERE Q_ID = 26 AND T2_DATE IS NOT NULL"), IsEmpty());
    EXPECT_THAT(suite_.Rows("SELECT DISTINCT Q_STATUS FROM QUESTIONS"), ElementsAre("150"));
    EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM TRANSACTIONS"), IsEmpty());
    EXPECT_EQ(suite_.Lines("outbox/escalation.jsonl").size(), 1U);
    EXPECT_THAT(suite_.Lines("outbox/questions.jsonl"), IsEmpty());
    EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  }

  // Of a question that comes before the two.
  void ExpectAnUnknownCustomerToEndThePass() {
    AddTwo();
    suite_.Run();
    ExpectNothingWritten();
    EXPECT_THAT(Subjects(), IsEmpty());
    EXPECT_THAT(
        suite_.Log(),
        ElementsAre("OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                    std::string("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: ") + kNotSet));
  }

  std::string Page() const { return TemporaryFolder::Read(suite_.Home() / "Data" / "HTML" / kPage); }
  void WriteSheet(const std::string& name, const std::string& content) {
    std::ofstream(suite_.Home() / "Orvane" / "Mail" / "Sheets" / name) << content;
  }
  Texts Subjects() const {
    Texts subjects;
    for (const SentMail& mail : suite_.doubles_->mails) subjects.push_back(mail.to + ": " + mail.subject);
    return subjects;
  }
  static CDO::Settings Smtp(int port, int responseSeconds = 60) {
    return {.sendUsing = CDO::SendUsing::Port,
            .server = "127.0.0.1",
            .port = port,
            .responseSeconds = responseSeconds};
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, JobFailuresTest, testing::ValuesIn(SuiteTablesMakers()), NameOfTables);

// The mail server.

TEST_P(JobFailuresTest, AMailServerThatIsDownLeavesThePageAndSaysNothing) {
  int port = 0;
  {
    const ScriptedPeer peer({});
    port = peer.Port();
  }
  suite_.UseTransport(Smtp(port));
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(suite_.PagesLeft(), ElementsAre(kPage));
  EXPECT_THAT(Page(), AllOf(HasSubstr("Case 27"), Not(HasSubstr("Case 26"))));  // the later of one second
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

// The first mail is taken, the second meets what the test is about.
const Script kTaken = {"220 hello", "250 localhost", "250 sender", "250 recipient", "354 go on", "250 taken"};

class FailingServerTest : public JobFailuresTest {
 protected:
  void ExpectTheSecondUnsent(const Script& second, int responseSeconds = 60) {
    Script whole = kTaken;
    whole.insert(whole.end(), second.begin(), second.end());
    ScriptedPeer peer({whole});
    suite_.UseTransport(Smtp(peer.Port(), responseSeconds));
    AddTwo();
    suite_.Run();
    ExpectRowsOfTwo();
    EXPECT_THAT(suite_.PagesLeft(), ElementsAre(kPage));
    EXPECT_THAT(Page(), HasSubstr("Case 27"));
    EXPECT_THAT(suite_.Log(), IsEmpty());
    const Script lines = peer.Finish();
    ASSERT_GE(lines.size(), 5U);
    EXPECT_EQ(lines[2], "RCPT TO:<anna@example.org>");
    EXPECT_THAT(lines[4], HasSubstr("\r\nSubject: Reminder: we are waiting for your reply (26) \r\n"));
    EXPECT_THAT(lines[4], HasSubstr("filename=\"26953.htm\""));
  }
};

INSTANTIATE_TEST_SUITE_P(Engines, FailingServerTest, testing::ValuesIn(SuiteTablesMakers()), NameOfTables);

TEST_P(FailingServerTest, AnAddressThatIsRefusedLeavesThePageAndSaysNothing) {
  ExpectTheSecondUnsent({"250 sender", "550 5.1.1 no such mailbox", "221 bye"});
}

TEST_P(FailingServerTest, AMailThatIsRefusedLeavesThePageAndSaysNothing) {
  ExpectTheSecondUnsent({"250 sender", "250 recipient", "354 go on", "552 too big", "221 bye"});
}

TEST_P(FailingServerTest, AServerThatClosesInTheMiddleLeavesThePageAndSaysNothing) {
  ExpectTheSecondUnsent({"250 sender", "250 recipient", "CLOSE"});
}

TEST_P(FailingServerTest, AServerThatClosesAfterTheMailLeavesThePageAndSaysNothing) {
  ExpectTheSecondUnsent({"250 sender", "250 recipient", "354 go on", "RESET"});
}

TEST_P(FailingServerTest, AServerThatFallsSilentLeavesThePageAndSaysNothing) {
  ExpectTheSecondUnsent({"250 sender", "SILENCE"}, 1);
}

TEST_P(FailingServerTest, AfterAMailThatWasRefusedTheNextIsSent) {
  ScriptedPeer peer({{"220 hello", "250 localhost", "250 sender", "550 no", "221 bye", "CLOSE"}, kTaken});
  suite_.UseTransport(Smtp(peer.Port()));
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  EXPECT_THAT(suite_.Log(), IsEmpty());
  EXPECT_THAT(peer.Finish().back(), HasSubstr("\r\nSubject: Your service request is concluded (27) \r\n"));
}

TEST_P(JobFailuresTest, AnEmptyRecipientReachesTheTransportWhichRefusesIt) {
  std::filesystem::create_directories(suite_.Home() / "mail");
  suite_.UseTransport({.pickupDirectory = (suite_.Home() / "mail").string()});
  suite_.Add({{26, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", Variant::Null()}}},
              {27, "", kLongAgo, {{"PROSPECT", true}, {"EMAILID", ""}}}});
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_TRUE(std::filesystem::is_empty(suite_.Home() / "mail"));
  EXPECT_THAT(suite_.PagesLeft(), ElementsAre(kPage));
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

// Style sheets.

TEST_P(JobFailuresTest, AMissingSheetKeepsItsMailsBackAndIsReported) {
  std::filesystem::remove(suite_.Home() / "Orvane" / "Mail" / "Sheets" / "reminder.xsl");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(Subjects(), ElementsAre("anna@example.org: Your service request is concluded (27) "));
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  EXPECT_THAT(suite_.Log(),
              ElementsAre(StartsWith("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: ")));
}

TEST_P(JobFailuresTest, AMalformedSheetKeepsItsMailsBackAndIsReported) {
  WriteSheet("reminder.xsl",
             "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(Subjects(), ElementsAre("anna@example.org: Your service request is concluded (27) "));
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  EXPECT_THAT(suite_.Log(),
              ElementsAre(StartsWith("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: ")));
}

// There is no page then, and no mail without its page.
TEST_P(JobFailuresTest, AnEndlessSheetIsStoppedAndItsMailIsNotSent) {
  const std::string head =
      "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
      "<xsl:template match='/'><xsl:call-template name='again'/></xsl:template>";
  WriteSheet(
      "reminder.xsl",
      head + "<xsl:template name='again'><xsl:call-template name='again'/></xsl:template></xsl:stylesheet>");
  WriteSheet(
      "conclusion.xsl",
      head +
          "<xsl:template name='again'><xsl:param name='depth' select='0'/><xsl:if test='$depth &lt; 30'>"
          "<xsl:call-template name='again'><xsl:with-param name='depth' select='$depth + 1'/>"
          "</xsl:call-template><xsl:call-template name='again'><xsl:with-param name='depth' "
          "select='$depth + 1'/></xsl:call-template></xsl:if></xsl:template></xsl:stylesheet>");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(suite_.doubles_->mails, IsEmpty());
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  EXPECT_THAT(suite_.Log(),
              ElementsAre(StartsWith("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: "),
                          StartsWith("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: ")));
}

TEST_P(JobFailuresTest, AMissingPageFolderKeepsTheMailsBackAndIsReported) {
  std::filesystem::remove(suite_.Home() / "Data" / "HTML");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(Subjects(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(suite_.Home() / "Data" / "HTML"));
  EXPECT_THAT(suite_.Log(),
              ElementsAre("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: Path not found (76).",
                          "OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: Path not found (76)."));
}

// Templates and texts.

TEST_P(JobFailuresTest, WithoutAnyTemplateRowMailsHaveNoSenderAndStay) {
  std::filesystem::create_directories(suite_.Home() / "mail");
  suite_.UseTransport({.pickupDirectory = (suite_.Home() / "mail").string()});
  suite_.Execute("DELETE FROM EMAIL");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_TRUE(std::filesystem::is_empty(suite_.Home() / "mail"));
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

TEST_P(JobFailuresTest, AMissingTemplateRowSendsTheFieldsOfTheMailBefore) {
  suite_.Execute("DELETE FROM EMAIL WHERE Mail_Id = 10");
  suite_.Add({{26, kLongAgo, ""}, {27, "", kLongAgo, {{"Q_ORIGINATOR", "jan"}}}});
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(Subjects(), ElementsAre("anna@example.org: Reminder: we are waiting for your reply (26) ",
                                      "jan@example.org: Reminder: we are waiting for your reply (26) "));
  const SentMail& second = suite_.doubles_->mails.at(1);
  EXPECT_EQ(second.from, "help@suite.example");
  // The body before, with its own link and that of this question; a conclusion announces nothing.
  const std::string& first = suite_.doubles_->mails.at(0).textBody;
  EXPECT_EQ(
      second.textBody.substr(second.textBody.find("\r\n\r\n")),
      first.substr(first.find("\r\n\r\n")) + "\r\n\r\nhttps://suite.example/s.asp?Q=1A0\r\ns.asp?Q=1B0\r\n");
  EXPECT_THAT(second.attachments.at(0).second, AllOf(HasSubstr("Case 27"), Not(HasSubstr("Case 26"))));
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

TEST_P(JobFailuresTest, MissingLabelsShowTheirIds) {
  suite_.Execute("DELETE FROM I18NTEXT");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  ASSERT_EQ(suite_.doubles_->mails.size(), 2U);
  const SentMail& reminder = suite_.doubles_->mails[0];
  EXPECT_THAT(reminder.textBody, StartsWith("Anna Aalto LBLQX3996,\r\n\r\n"));
  EXPECT_THAT(reminder.textBody,
              testing::EndsWith("\r\n\r\nLBLQX34637/29/2004 9:5:3\t  (LBLQX347872 LBLQX3470)\r\n"));
  EXPECT_THAT(reminder.attachments.at(0).second, HasSubstr("LBLQX3120"));
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

TEST_P(JobFailuresTest, MissingSubjectsAndBodiesAreEmpty) {
  suite_.Execute("DELETE FROM DATALABEL");
  AddTwo();
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_THAT(Subjects(), ElementsAre("anna@example.org:  (26) ", "anna@example.org:  (27) "));
  EXPECT_EQ(suite_.doubles_->mails.at(1).textBody,
            "Anna Aalto - good day,\r\n\r\n\r\n\r\nhttps://suite.example/s.asp?Q=1B0\r\n");
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

// People.

TEST_P(JobFailuresTest, AnUnknownCustomerEndsThePassAtTheReminder) {
  suite_.Add({{25, kLongAgo, "", {{"Q_ORIGINATOR", "ghost"}}}});
  ExpectAnUnknownCustomerToEndThePass();
}

TEST_P(JobFailuresTest, AnUnknownCustomerEndsThePassAtTheConclusion) {
  suite_.Add(
      {{25, "", kLongAgo, {{"Q_ORIGINATOR", "ghost"}, {"PROSPECT", true}, {"EMAILID", "v@x.example"}}}});
  ExpectAnUnknownCustomerToEndThePass();
}

TEST_P(JobFailuresTest, ADirectoryThatGoesDownInMidPassCostsTheTextsOfTheMail) {
  int bound = 0;
  suite_.directory_->before = [&bound](std::string_view member) {
    if (member == "BindAs" && ++bound > 1) throw automation::Error(1101, "VnMembership.User", "is down");
  };
  suite_.Add({{26, kLongAgo, ""}});
  suite_.Run();
  EXPECT_THAT(suite_.Rows("SELECT Q_ID, T2_DATE FROM REMINDER"), ElementsAre("26|2004-07-28 09:05:03"));
  EXPECT_THAT(suite_.doubles_->events, IsEmpty());  // without its page it is not even handed over
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  const std::string lookup = "OrvaneProcess.OrvaneUtilities.getUserFromID caught: is down(1101).";
  const auto reported = [](const std::string& procedure) {
    return "OrvaneProcess.SolveOnNoResponse." + procedure + " caught: " + kNotSet;
  };
  EXPECT_THAT(suite_.Log(),
              ElementsAre(lookup, reported("getMailData"), lookup, reported("formSRDetailsNodes"), lookup,
                          reported("formCustomerDetailsNodes"), reported("formInstalledBaseNodes"),
                          reported("CreateHTMLFile")));
}

TEST_P(JobFailuresTest, AnEngineerWhoIsUnknownOrNobodyCostsTheErpCallOnly) {
  suite_.Add({{26, kLongAgo, ""},
              {27, "", kLongAgo, {{"Q_CALL", "C-27"}, {"D_DIRECT_TO", Variant::Null()}, {"A_TEXT", ""}}}});
  suite_.Run();
  ExpectRowsOfTwo();
  EXPECT_EQ(Subjects().size(), 2U);
  EXPECT_THAT(suite_.Lines("erp/calls-A.jsonl"), IsEmpty());
  EXPECT_THAT(suite_.Log(),
              ElementsAre("OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          std::string("OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: ") + kNotSet));
}

// Times.

TEST_P(JobFailuresTest, TimesWhoseDifferenceIsBeyond32BitsEndThePass) {
  AddTwo();
  const Texts before = suite_.Rows("SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER ORDER BY Q_ID");
  for (const auto& [conclusion, reminder] :
       {std::pair("2147483647", "-1"), std::pair("-2147483648", "1"), std::pair("-2", "2147483647")}) {
    suite_.Execute(std::string("UPDATE PARAMETERS SET PARAM_VALUE = '") + conclusion +
                   "' WHERE PARAM_NAME = 'Conclusion_Time'");
    suite_.Execute(std::string("UPDATE PARAMETERS SET PARAM_VALUE = '") + reminder +
                   "' WHERE PARAM_NAME = 'Reminder_Time'");
    suite_.environment_.log->clear();
    std::filesystem::remove(suite_.Home() / "outbox" / "escalation.jsonl");
    suite_.Run();
    ExpectNothingWritten();
    EXPECT_EQ(suite_.Rows("SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER ORDER BY Q_ID"), before);
    EXPECT_THAT(Subjects(), IsEmpty());
    EXPECT_THAT(suite_.Log(),
                ElementsAre("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Overflow (6)."))
        << conclusion << " " << reminder;
  }
}

// What fits 32 bits but leads to no date is another error; the greatest difference that leads to one is none.
TEST_P(JobFailuresTest, TimesThatLeadToNoDateEndThePass) {
  suite_.Execute("UPDATE PARAMETERS SET PARAM_VALUE = '2147483647' WHERE PARAM_NAME = 'Conclusion_Time'");
  suite_.Execute("UPDATE PARAMETERS SET PARAM_VALUE = '0' WHERE PARAM_NAME = 'Reminder_Time'");
  AddTwo();
  suite_.Run();
  ExpectNothingWritten();
  EXPECT_THAT(suite_.Log(), ElementsAre("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                                        "Invalid procedure call or argument (5)."));
}

// The log.

TEST_P(JobFailuresTest, AMissingLogComponentChangesNothingAndTheEntriesGoToStandardError) {
  suite_.environment_.logFactory = []() -> automation::ObjectPtr {
    throw automation::Error(automation::ErrorNumber::CannotCreateObject);
  };
  std::filesystem::remove(suite_.Home() / "Orvane" / "Mail" / "Sheets" / "reminder.xsl");
  suite_.Add({{26, kLongAgo, ""}, {27, "", kLongAgo, {{"Q_CALL", "C-27"}, {"D_DIRECT_TO", "ghost"}}}});
  suite_.AddReminderWithoutQuestion(28, "", kLongAgo);
  suite_.AddReminderWithoutQuestion(29, "", kLongAgo);
  testing::internal::CaptureStderr();
  suite_.Run();
  const std::string standardError = testing::internal::GetCapturedStderr();
  suite_.Execute("DELETE FROM REMINDER WHERE Q_ID > 27");
  ExpectRowsOfTwo();
  EXPECT_THAT(Subjects(), ElementsAre("anna@example.org: Your service request is concluded (27) "));
  EXPECT_THAT(suite_.Log(), IsEmpty());
  for (const std::string source :
       {"OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: ",
        "OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
        "OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: ",
        "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Operation is not allowed when the object "
        "is open. (3705).",
        "(not written to Vantrel.Log: ActiveX component can't create object)"}) {
    EXPECT_THAT(standardError, HasSubstr(source));
  }
}

TEST_P(JobFailuresTest, AMissingEscalationComponentIsReportedByItsMakerAndTheRun) {
  const automation::ClassTable all = suite_.environment_.runtime.classes;
  automation::ClassTable& classes = suite_.environment_.runtime.classes;
  classes = automation::ClassTable();
  for (const std::string& progId : all.ProgIds()) {
    if (progId == "OrvaneProcessMTS.SolveOnNoResponse") continue;
    classes.Register(progId, [&all, progId] { return all.Create(progId); });
  }
  suite_.Run();
  EXPECT_THAT(suite_.Log(),
              ElementsAre("METHOD: \r\nOrvaneUtilies.GetComponent caught: ActiveX component can't create "
                          "object(429). Additional information: "
                          "CreateObject(OrvaneProcessMTS.SolveOnNoResponse) failed",
                          "Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "
                          "ActiveX component can't create object (429)."));
}

}  // namespace
}  // namespace orvane_test
