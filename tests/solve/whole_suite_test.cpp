#include "tests/solve/whole_suite_test.hpp"

#include <gmock/gmock.h>

namespace orvane_test {
namespace {

using automation::Variant;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kLongAgo = "1999-12-31 23:59:59";
constexpr const char* kOneMinuteAgo = "2004-07-26 09:04:03";
constexpr const char* kFiftyNineSecondsAgo = "2004-07-26 09:04:04";
constexpr const char* kNow = "2004-07-26 09:05:03";
constexpr const char* kTomorrow = "2004-07-27 09:05:03";
constexpr const char* kPost = "\x01\x02\x03\x04 2004-07-20 10:00:00.000";
constexpr const char* kAnswer = "\x04\x03\x02\x01 2004-07-21 11:30:00.000";

INSTANTIATE_TEST_SUITE_P(Engines, WholeSuiteTest, testing::ValuesIn(SuiteTablesMakers()), NameOfTables);

std::vector<WholeSuite::Case> CasesAroundEveryBoundary() {
  const auto call = [](const Variant& number, std::map<std::string, Variant> more = {}) {
    more["Q_CALL"] = number;
    if (!more.contains("A_TEXT")) more["A_TEXT"] = std::string(kAnswer) + "Tighten it.";
    return more;
  };
  return {
      // Reminders and their minute.
      {1, kOneMinuteAgo, ""},
      {2, kFiftyNineSecondsAgo, ""},
      {3, kNow, ""},
      {4, kTomorrow, ""},
      {5, "", ""},
      {6, kLongAgo, ""},
      // Conclusions and theirs.
      {7, kLongAgo, kOneMinuteAgo},
      {8, kLongAgo, kFiftyNineSecondsAgo},
      {9, kLongAgo, kNow},
      {10, "", kLongAgo},
      {11, kTomorrow, kLongAgo},
      {12, kLongAgo, kTomorrow},
      // Prospects.
      {13, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", "vera@visitors.example"}}},
      {14, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", Variant::Null()}}},
      {15, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", ""}}},
      {16, "", kLongAgo, {{"PROSPECT", true}, {"EMAILID", "vera@visitors.example"}}},
      {17, "", kLongAgo, {{"PROSPECT", true}, {"EMAILID", Variant::Null()}}},
      {18, kLongAgo, "", {{"PROSPECT", Variant::Null()}, {"EMAILID", "ignored@visitors.example"}}},
      {19, "", kLongAgo, {{"PROSPECT", Variant::Null()}, {"EMAILID", "ignored@visitors.example"}}},
      // Languages.
      {20, kLongAgo, "", {{"Q_ORIGINATOR", "jan"}}},
      {21, "", kLongAgo, {{"Q_ORIGINATOR", "helga"}, {"Q_DESC", "Anzeige fällt aus"}}},
      {22, kLongAgo, "", {{"Q_ORIGINATOR", "ken"}, {"Q_DESC", "ポンプの音"}}},
      {23, "", kLongAgo, {{"Q_ORIGINATOR", "flagged"}}},
      // Calls of the ERP.
      {24, "", kLongAgo, call("C-24", {{"Q_REPORTED", "P10"}})},
      {25, "", kLongAgo, call("C-25", {{"Q_REPORTED", Variant::Null()}})},
      {26, "", kLongAgo, call("<NULL>")},
      {27, "", kLongAgo, call("")},
      {28, "", kLongAgo, call(Variant::Null())},
      {29, "", kLongAgo, call("C-29", {{"D_DIRECT_TO", "ghost"}})},
      {30, "", kLongAgo, call("C-30", {{"A_TEXT", Variant::Null()}})},
      // What pages are made of.
      {31,
       kLongAgo,
       "",
       {{"Q_DESC", "<script>alert(1)</script>"},
        {"Q_TEXT", std::string(kPost) + "<img src=x onerror=alert(1)>\r\n& more"},
        {"A_TEXT", std::string(kAnswer) + "Which\tone?"}}},
      {32, kLongAgo, "", {{"PRODUCTID", Variant::Null()}}},
      // A row of another status.
      {33, kLongAgo, "", {}, 151},
  };
}

TEST_P(WholeSuiteTest, EveryBoundaryEndsWithTheRowsMailsAndEntriesThatBelongToIt) {
  suite_.Add(CasesAroundEveryBoundary());
  suite_.AddReminderWithoutQuestion(98, kTomorrow, "");
  suite_.AddReminderWithoutQuestion(99, kLongAgo, "");  // the last one: nothing is behind it
  suite_.AddProspect("vera@visitors.example", 2);

  suite_.Run();

  const std::string in48Hours = "2004-07-28 09:05:03";
  EXPECT_THAT(
      suite_.Rows("SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER ORDER BY Q_ID"),
      ElementsAre(
          "1|2004-07-26 09:04:03|" + in48Hours + "|150", "2|2004-07-26 09:04:04|NULL|150",
          "3|2004-07-26 09:05:03|NULL|150", "4|2004-07-27 09:05:03|NULL|150", "5|NULL|NULL|150",
          "6|1999-12-31 23:59:59|" + in48Hours + "|150", "8|1999-12-31 23:59:59|2004-07-26 09:04:04|150",
          "9|1999-12-31 23:59:59|2004-07-26 09:05:03|150", "12|1999-12-31 23:59:59|2004-07-27 09:05:03|150",
          "13|1999-12-31 23:59:59|" + in48Hours + "|150", "14|1999-12-31 23:59:59|" + in48Hours + "|150",
          "15|1999-12-31 23:59:59|" + in48Hours + "|150", "18|1999-12-31 23:59:59|" + in48Hours + "|150",
          "20|1999-12-31 23:59:59|" + in48Hours + "|150", "22|1999-12-31 23:59:59|" + in48Hours + "|150",
          "31|1999-12-31 23:59:59|" + in48Hours + "|150", "32|1999-12-31 23:59:59|" + in48Hours + "|150",
          "33|1999-12-31 23:59:59|NULL|151", "98|2004-07-27 09:05:03|NULL|150",
          "99|1999-12-31 23:59:59|NULL|150"));

  const std::vector<int> concluded = {7, 10, 11, 16, 17, 19, 21, 23, 24, 25, 26, 27, 28, 29, 30};
  WholeSuite::Texts ids, steps;
  for (const int id : concluded) {
    ids.push_back(std::to_string(id));
    steps.push_back(ids.back() + "|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0");
  }
  EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM QUESTIONS WHERE Q_STATUS = 160 ORDER BY Q_ID"), ids);
  EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM QUESTIONS WHERE Q_STATUS = 150 ORDER BY Q_ID").size(), 18U);
  EXPECT_THAT(suite_.Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, TIMESPENT "
                          "FROM TRANSACTIONS ORDER BY T_ID"),
              steps);
  EXPECT_THAT(suite_.Rows("SELECT EMAILID, PENDINGQUESTIONS FROM PROSPECT"),
              ElementsAre("vera@visitors.example|1"));

  WholeSuite::Texts mails;
  for (const SentMail& mail : suite_.doubles_->mails) mails.push_back(mail.to + ": " + mail.subject);
  const std::string reminder = "Reminder: we are waiting for your reply";
  const std::string conclusion = "Your service request is concluded";
  EXPECT_THAT(
      mails,
      ElementsAre(
          "anna@example.org: " + reminder + " (1) ", "anna@example.org: " + reminder + " (6) ",
          "anna@example.org: " + conclusion + " (7) ", "anna@example.org: " + conclusion + " (10) ",
          "anna@example.org: " + conclusion + " (11) ", "vera@visitors.example: " + reminder + " (13) ",
          "vera@visitors.example: " + conclusion + " (16) ", "anna@example.org: " + reminder + " (18) ",
          "anna@example.org: " + conclusion + " (19) ", HasSubstr("jan@example.org: "),
          HasSubstr("helga@example.org: "), HasSubstr("ken@example.org: "),
          "flagged@example.org: " + conclusion + " (23) ", "anna@example.org: " + conclusion + " (24) ",
          "anna@example.org: " + conclusion + " (25) ", "anna@example.org: " + conclusion + " (26) ",
          "anna@example.org: " + conclusion + " (27) ", "anna@example.org: " + conclusion + " (28) ",
          "anna@example.org: " + conclusion + " (29) ", "anna@example.org: " + conclusion + " (30) ",
          "anna@example.org: " + reminder + " (31) ", "anna@example.org: " + reminder + " (32) "));
  // Every page went with its mail and was deleted; those of mails 14, 15 and 17 gave way to the next.
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());

  const std::string time = "{\"TIME\":\"2004-07-26 09:05:03\",";
  const auto erpCall = [&](const std::string& number, const std::string& problem, const std::string& text) {
    return time + "\"COMPONENT\":4711,\"CALLNUMBER\":\"" + number +
           "\",\"ENGINEER\":\"ENG-7B\",\"ACTIONDONEBY\":\"ORVANE\",\"OPTION\":4,\"PROBLEM\":\"" + problem +
           "\",\"SOLUTION\":\"NORESP\",\"ACTIVITY\":\"CLOSE\",\"SOLUTIONTEXT\":\"" + text + "\"}";
  };
  const std::string answer = " 2004-07-21 11:30:00.000Tighten it.";
  EXPECT_THAT(suite_.Lines("erp/calls-A.jsonl"),
              ElementsAre(erpCall("C-24", "P10", answer), erpCall("C-25", "P00", answer),
                          erpCall("C-30", "P00", "")));
  EXPECT_THAT(suite_.Lines("erp/calls-B.jsonl"), IsEmpty());
  EXPECT_THAT(suite_.Lines("outbox/escalation.jsonl"),
              ElementsAre(time + "\"REQUEST\":\"SendingEscalationMails\"}"));
  EXPECT_THAT(suite_.Lines("outbox/questions.jsonl").size(), concluded.size());

  EXPECT_THAT(
      suite_.Log(),
      ElementsAre("OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                  "OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: "
                  "Object variable or With block variable not set (91).",
                  "OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: Invalid use of Null (94)."));
}

TEST_P(WholeSuiteTest, TextBodiesAreInTheLanguageOfTheirReader) {
  suite_.Add({{26, kLongAgo, "", {}},
              {27, kLongAgo, "", {{"Q_ORIGINATOR", "ken"}}},
              {28, "", kLongAgo, {{"Q_ORIGINATOR", "flagged"}}}});
  suite_.Run();
  ASSERT_EQ(suite_.doubles_->mails.size(), 3U);
  EXPECT_EQ(suite_.doubles_->mails[0].textBody,
            "Anna Aalto - good day,\r\n\r\nWe have answered your service request and have not heard from you "
            "since. "
            "The attached page shows the request with our answer. You can reply on our site:\r\n\r\n"
            "https://suite.example/s.asp?Q=1A0\r\n"
            "\r\n\r\nWithout a reply from you, we will conclude this request on 7/29/2004 9:5:3\t  "
            "(that is, after 72 hours)\r\n");
  EXPECT_THAT(suite_.doubles_->mails[1].textBody, HasSubstr("佐藤 健 "));
  EXPECT_THAT(suite_.doubles_->mails[1].textBody, HasSubstr("2004/07/29 9:5:3\t  ("));
  EXPECT_THAT(suite_.doubles_->mails[2].textBody,
              HasSubstr("Dear customer,\r\n\r\nWe have not received a reply"));
}

TEST_P(WholeSuiteTest, PagesAreInTheLanguageOfTheirReaderAndShowMarkupAsText) {
  suite_.Add({{26,
               kLongAgo,
               "",
               {{"Q_DESC", "<script>alert(1)</script>"},
                {"Q_TEXT", std::string(kPost) + "<img src=x onerror=alert(1)>\r\n& more"},
                {"A_TEXT", std::string(kAnswer) + "Which\tone?"}}},
              {27, "", kLongAgo, {{"Q_ORIGINATOR", "helga"}, {"Q_DESC", "Anzeige fällt aus"}}}});
  suite_.Run();
  ASSERT_EQ(suite_.doubles_->mails.size(), 2U);
  ASSERT_EQ(suite_.doubles_->mails[0].attachments.size(), 1U);
  const std::string& english = suite_.doubles_->mails[0].attachments[0].second;
  EXPECT_THAT(english, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;"));
  EXPECT_THAT(english, HasSubstr("&lt;img src=x onerror=alert(1)&gt;"));
  EXPECT_THAT(english, Not(HasSubstr("<script")));
  EXPECT_THAT(english, Not(HasSubstr("<img")));
  EXPECT_THAT(english, HasSubstr("Questions and answers"));
  EXPECT_THAT(english, HasSubstr("Which    one?"));
  const std::string& german = suite_.doubles_->mails[1].attachments[0].second;
  EXPECT_THAT(german, HasSubstr("Anzeige f&#228;llt aus"));
  EXPECT_TRUE(
      std::all_of(german.begin(), german.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

TEST_P(WholeSuiteTest, ARowWithoutItsQuestionHoldsUpEveryDueRowBehindItOnEveryRun) {
  suite_.Add({{26, "", kLongAgo}});
  suite_.AddReminderWithoutQuestion(27, "", kLongAgo);
  suite_.Add({{28, "", kLongAgo}, {29, kLongAgo, ""}});
  for (int run = 0; run < 2; ++run) {
    suite_.Run();
    EXPECT_THAT(suite_.Rows("SELECT Q_ID, T2_DATE FROM REMINDER ORDER BY Q_ID"),
                ElementsAre("27|1999-12-31 23:59:59", "28|1999-12-31 23:59:59", "29|NULL"));
  }
  EXPECT_EQ(suite_.doubles_->mails.size(), 1U);
  EXPECT_THAT(suite_.Log(), ElementsAre("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                                        "Operation is not allowed when the object is open. (3705).",
                                        "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                                        "Operation is not allowed when the object is open. (3705)."));
  EXPECT_EQ(suite_.Lines("outbox/escalation.jsonl").size(), 2U);
}

TEST_P(WholeSuiteTest, AReminderIsFollowedByItsConclusionInALaterRun) {
  suite_.Add({{26, kLongAgo, ""}});
  suite_.Run();
  suite_.Run();  // nothing is due
  suite_.environment_.now = automation::AddHours(suite_.environment_.now, 48);
  suite_.Run();  // due now, but not for a minute yet
  EXPECT_THAT(suite_.Rows("SELECT Q_ID, T2_DATE FROM REMINDER"), ElementsAre("26|2004-07-28 09:05:03"));
  suite_.environment_.now = automation::AddMinutes(suite_.environment_.now, 1);
  suite_.Run();
  EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM REMINDER"), IsEmpty());
  EXPECT_THAT(suite_.Rows("SELECT Q_STATUS FROM QUESTIONS"), ElementsAre("160"));
  EXPECT_EQ(suite_.doubles_->mails.size(), 2U);
}

}  // namespace
}  // namespace orvane_test
