// Thirty-odd questions around every boundary, with an ERP of each generation and without one: the rows,
// transactions, mails, pages, ERP calls and log entries of one run, compared whole.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "tests/solve/whole_suite_test.hpp"
#include "tests/suite/load_xsls/page.hpp"

namespace orvane_test {
namespace {

using automation::Variant;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = WholeSuite::Texts;

constexpr const char* kOneMinuteAgo = "2004-07-26 09:04:03";
constexpr const char* kFiftyNineSecondsAgo = "2004-07-26 09:04:04";
constexpr const char* kNow = "2004-07-26 09:05:03";
constexpr const char* kIn48Hours = "2004-07-28 09:05:03";
constexpr const char* kTomorrow = "2004-07-27 09:05:03";

enum class Fate { Waits, Reminded, Concluded };

struct Boundary {
  WholeSuite::Case question;
  Fate fate;
  std::string recipient = "anna@example.org";  // empty: the transport refuses the mail
  std::string person = "anna";                 // whose language and name the mail has
  Texts history = {};                          // headings and texts on the page
};

std::vector<Boundary> Boundaries() {
  using enum Fate;
  const auto call = [](const Variant& number, std::map<std::string, Variant> more = {}) {
    more["Q_CALL"] = number;
    if (!more.contains("A_TEXT")) more["A_TEXT"] = std::string(kAnswer) + "Tighten it.";
    return more;
  };
  const Texts answered = {"Answer : 7/21/2004 11:30:00 AM", "Tighten it."};
  const std::string vera = "vera@visitors.example";
  return {
      // Reminders and their minute.
      {{1, kOneMinuteAgo, ""}, Reminded},
      {{2, kFiftyNineSecondsAgo, ""}, Waits},
      {{3, kNow, ""}, Waits},
      {{4, kTomorrow, ""}, Waits},
      {{5, "", ""}, Waits},
      {{6, kLongAgo, ""}, Reminded},
      // Conclusions and theirs.
      {{7, kLongAgo, kOneMinuteAgo}, Concluded},
      {{8, kLongAgo, kFiftyNineSecondsAgo}, Waits},
      {{9, kLongAgo, kNow}, Waits},
      {{10, "", kLongAgo}, Concluded},
      {{11, kTomorrow, kLongAgo}, Concluded},
      {{12, kLongAgo, kTomorrow}, Waits},
      // Prospects.
      {{13, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", vera}}}, Reminded, vera},
      {{14, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", Variant::Null()}}}, Reminded, ""},
      {{15, kLongAgo, "", {{"PROSPECT", true}, {"EMAILID", ""}}}, Reminded, ""},
      {{16, "", kLongAgo, {{"PROSPECT", true}, {"EMAILID", vera}}}, Concluded, vera},
      {{17, "", kLongAgo, {{"PROSPECT", true}, {"EMAILID", Variant::Null()}}}, Concluded, ""},
      {{18, kLongAgo, "", {{"PROSPECT", Variant::Null()}, {"EMAILID", "not.used@example.org"}}}, Reminded},
      {{19, "", kLongAgo, {{"PROSPECT", Variant::Null()}, {"EMAILID", "not.used@example.org"}}}, Concluded},
      // Languages, and a person who is not called by name.
      {{20, kLongAgo, "", {{"Q_ORIGINATOR", "jan"}}}, Reminded, "jan@example.org", "jan"},
      {{21, "", kLongAgo, {{"Q_ORIGINATOR", "helga"}, {"Q_DESC", "Anzeige fällt aus"}}},
       Concluded,
       "helga@example.org",
       "helga"},
      {{22, kLongAgo, "", {{"Q_ORIGINATOR", "ken"}, {"Q_DESC", "ポンプの音"}}},
       Reminded,
       "ken@example.org",
       "ken"},
      {{23, "", kLongAgo, {{"Q_ORIGINATOR", "flagged"}}}, Concluded, "flagged@example.org", "flagged"},
      // Calls of the ERP.
      {{24, "", kLongAgo, call("C-24", {{"Q_REPORTED", "P10"}})},
       Concluded,
       "anna@example.org",
       "anna",
       answered},
      {{25, "", kLongAgo, call("C-25", {{"Q_REPORTED", Variant::Null()}})},
       Concluded,
       "anna@example.org",
       "anna",
       answered},
      {{26, "", kLongAgo, call("<NULL>")}, Concluded, "anna@example.org", "anna", answered},
      {{27, "", kLongAgo, call("")}, Concluded, "anna@example.org", "anna", answered},
      {{28, "", kLongAgo, call(Variant::Null())}, Concluded, "anna@example.org", "anna", answered},
      {{29, "", kLongAgo, call("C-29", {{"D_DIRECT_TO", "ghost"}})},
       Concluded,
       "anna@example.org",
       "anna",
       answered},
      {{30, "", kLongAgo, call("C-30", {{"A_TEXT", Variant::Null()}})}, Concluded},
      // What pages are made of.
      {{31,
        kLongAgo,
        "",
        {{"Q_DESC", "<script>alert(1)</script>"},
         {"Q_TEXT", std::string(kPost) + "<img src=x onerror=alert(1)>\r\n& more"},
         {"A_TEXT", std::string(kAnswer) + "Which\tone?"}}},
       Reminded,
       "anna@example.org",
       "anna",
       {"Question : 7/20/2004 10:00:00 AM", "<img src=x onerror=alert(1)>\n& more",
        "Answer : 7/21/2004 11:30:00 AM", "Which    one?"}},
      {{32, kLongAgo, "", {{"PRODUCTID", Variant::Null()}}}, Reminded},
      {{33,
        kLongAgo,
        "",
        {{"Q_PRODUCTCAT", 10},
         {"PRODUCTID", 101},
         {"Q_CATEGORY", 2},
         {"Q_SITE", "AMS1"},
         {"Q_PRODUCT", "PUMP"},
         {"Q_OBJECT", "OB"},
         {"Q_OBJECTNR", "7"},
         {"Q_REPORTED", "P10"},
         {"BP_NUMBER", 1042}}},
       Reminded},
      // A row of another status.
      {{34, kLongAgo, "", {}, 151}, Waits},
  };
}

class GenerationTest : public testing::TestWithParam<std::tuple<SuiteTablesMaker, int>> {
 protected:
  GenerationTest() {
    std::ifstream file(std::filesystem::path(ORVANE_SOURCE_DIR) / "demo" / "texts.tsv");
    for (std::string line; std::getline(file, line);) {
      if (line.empty() || line[0] == '#') continue;
      const std::size_t first = line.find('\t');
      const std::size_t second = line.find('\t', first + 1);
      texts_[{line.substr(0, first), std::stoi(line.substr(first + 1))}] = line.substr(second + 1);
    }
    suite_.Execute("UPDATE PARAMETERS SET PARAM_VALUE = '" + std::to_string(generation_) +
                   "' WHERE PARAM_NAME = 'BackOfficeApplication'");
    suite_.Execute("INSERT INTO SITE (SITE, DESCRIPTION) VALUES ('AMS1', 'Amsterdam')");
    suite_.Execute("INSERT INTO PRODUCT (PRODUCT, DESCRIPTION) VALUES ('PUMP', 'A pump')");
    suite_.Execute(
        "INSERT INTO OBJECT (OBJECT, OBJECTNR, OBJECTDESC) VALUES ('OB', '7', 'The pump in the basement')");
    suite_.Execute("INSERT INTO PROBLEM (PROBLEM, DESCRIPTION) VALUES ('P10', 'Leaks')");
    suite_.Execute("INSERT INTO PROBLEM (PROBLEM, DESCRIPTION) VALUES ('10', 'Pumps')");
    suite_.Execute("INSERT INTO PRIORITY (PRIORITY, DESCRIPTION) VALUES (2, 'Urgent')");
    suite_.doubles_->products[101] = "Pump 30";
    suite_.doubles_->faqCategories[2] = "Operation";
    suite_.AddProspect("vera@visitors.example", 2);
    for (const Boundary& boundary : boundaries_) suite_.Add({boundary.question});
    suite_.AddReminderWithoutQuestion(98, kTomorrow, "");
    suite_.AddReminderWithoutQuestion(99, kLongAgo, "");  // the last one: nothing is behind it
  }

  static Variant Column(const Boundary& boundary, const std::string& name, const Variant& usual) {
    const auto found = boundary.question.columns.find(name);
    return found == boundary.question.columns.end() ? usual : found->second;
  }
  std::int32_t Language(const Boundary& boundary) const {
    return suite_.directory_->people.at(boundary.person).languageId;
  }
  std::string Text(const std::string& label, std::int32_t language) const {
    return texts_.at({label, language});
  }

  Texts ExpectedReminders() const {
    Texts rows;
    for (const Boundary& one : boundaries_) {
      if (one.fate == Fate::Concluded) continue;
      const auto shown = [](const std::string& date) { return date.empty() ? "NULL" : date; };
      rows.push_back(std::to_string(one.question.id) + "|" + shown(one.question.t1) + "|" +
                     (one.fate == Fate::Reminded ? kIn48Hours : shown(one.question.t2)) + "|" +
                     std::to_string(one.question.reminderStatus));
    }
    rows.push_back("98|2004-07-27 09:05:03|NULL|150");
    rows.push_back("99|1999-12-31 23:59:59|NULL|150");
    return rows;
  }

  // "from > to: subject", and the whole text.
  std::pair<std::string, std::string> ExpectedMail(const Boundary& one) const {
    const std::string id = std::to_string(one.question.id);
    const std::string mail = one.fate == Fate::Reminded ? "MAIL8" : "MAIL10";
    const std::int32_t language = Language(one);
    const Person& person = suite_.directory_->people.at(one.person);
    const std::string name = language == 1041 ? person.lastName + " " + person.firstName
                                              : person.firstName + " " + person.lastName;
    static const std::map<int, std::string> links = {
        {1, "10"},   {6, "60"},   {7, "70"},   {10, "A0"},  {11, "B0"},  {13, "D0"},
        {16, "100"}, {18, "120"}, {19, "130"}, {20, "140"}, {21, "150"}, {22, "160"},
        {23, "170"}, {24, "180"}, {25, "190"}, {26, "1A0"}, {27, "1B0"}, {28, "1C0"},
        {29, "1D0"}, {30, "1E0"}, {31, "1F0"}, {32, "200"}, {33, "210"}};
    static const std::map<int, std::string> days = {
        {1033, "7/29/2004"}, {1043, "29-07-2004"}, {1031, "29.07.2004"}, {1041, "2004/07/29"}};
    std::string text =
        person.salutationFlag ? Text("LBLQX3997", language) : name + " " + Text("LBLQX3996", language);
    text += ",\r\n\r\n" + Text(mail + "BODY", language) +
            "\r\n\r\nhttps://suite.example/s.asp?Q=" + links.at(one.question.id) + "\r\n";
    if (one.fate == Fate::Reminded) {
      text += "\r\n\r\n" + Text("LBLQX3463", language) + days.at(language) + " 9:5:3\t  (" +
              Text("LBLQX3478", language) + "72 " + Text("LBLQX3470", language) + ")\r\n";
    }
    return {
        "help@suite.example > " + one.recipient + ": " + Text(mail + "SUBJECT", language) + " (" + id + ") ",
        text};
  }

  // The texts of the page's headings, captions, values and paragraphs, from its top to its end.
  Texts ExpectedPage(const Boundary& one) const {
    const std::int32_t language = Language(one);
    const std::string id = std::to_string(one.question.id);
    const auto label = [&](const char* number) { return Text(std::string("LBLQX") + number, language); };
    const bool partial = one.question.id == 32;  // its builder ended at the product
    const bool full = one.question.id == 33;
    const bool prospect = Column(one, "PROSPECT", false) == Variant(true);
    const std::string description = partial ? "" : automation::ToText(Column(one, "Q_DESC", "Case " + id));
    Texts page = {label("3120") + " " + id, partial ? label("3120") : description};
    const auto row = [&page, &label](const char* number, const std::string& value) {
      page.insert(page.end(), {label(number), value});
    };
    if (!partial) page.push_back(label("3658"));
    if (!one.history.empty()) {
      page.push_back(label("3690"));
      page.insert(page.end(), one.history.begin(), one.history.end());
    }
    page.push_back(label("3668"));
    row("3659", id);
    if (!partial) row("3045", description), row("3119", label("3658"));
    if (full) row("3542", "Pumps"), row("3093", "Pump 30"), row("3033", "Operation");
    if (generation_ != 0) {
      page.push_back(label("3692"));
      if (full) {
        row("3730", "1042");
        row("3693", "AMS1");  // a description needs a count of rows that a forward-only cursor has not
        if (generation_ != 5) row("3195", "The pump in the basement OB");
      }
      if (Column(one, "Q_REPORTED", "") == Variant("P10")) row("3197", "Leaks P10");
      row("3196", "Urgent 2");
    }
    page.push_back(label("3669"));
    if (prospect) {
      row("3090", one.recipient);
      row("3112", "Vera, Visitors Ltd");
    } else {
      page.push_back(label("3107"));
      const Person& person = suite_.directory_->people.at(one.person);
      if (language == 1041) row("3670", person.lastName);
      row("3067", person.firstName);
      if (language != 1041) row("3670", person.lastName);
      row("3090", person.email);
    }
    return page;
  }

  Texts ExpectedCalls() const {
    const auto erpCall = [](const std::string& number, const std::string& problem, const std::string& text) {
      return "{\"TIME\":\"2004-07-26 09:05:03\",\"COMPONENT\":4711,\"CALLNUMBER\":\"" + number +
             "\",\"ENGINEER\":\"ENG-7B\",\"ACTIONDONEBY\":\"ORVANE\",\"OPTION\":4,\"PROBLEM\":\"" + problem +
             "\",\"SOLUTION\":\"NORESP\",\"ACTIVITY\":\"CLOSE\",\"SOLUTIONTEXT\":\"" + text + "\"}";
    };
    const std::string answer = " 2004-07-21 11:30:00.000Tighten it.";
    return {erpCall("C-24", "P10", answer), erpCall("C-25", "P00", answer), erpCall("C-30", "P00", "")};
  }

  Texts ExpectedLog() const {
    const bool hasErp = generation_ == 3 || generation_ == 8;
    const std::string unset =
        "OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: Object variable or With block variable not "
        "set (91).";
    Texts log;
    if (!hasErp) log.insert(log.end(), {unset, unset});  // 24 and 25 have no component to call
    log.insert(log.end(), {"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).", unset});
    if (!hasErp) log.push_back(unset);  // 30
    log.push_back("OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: Invalid use of Null (94).");
    return log;
  }

  const int generation_ = std::get<1>(GetParam());
  const std::vector<Boundary> boundaries_ = Boundaries();
  std::map<std::pair<std::string, std::int32_t>, std::string> texts_;
  WholeSuite suite_{std::get<0>(GetParam()).make()};
};

INSTANTIATE_TEST_SUITE_P(Engines, GenerationTest,
                         testing::Combine(testing::ValuesIn(SuiteTablesMakers()),
                                          testing::Values(0, 3, 5, 8)),
                         [](const auto& parameter) {
                           return std::get<0>(parameter.param).name + "With" +
                                  std::to_string(std::get<1>(parameter.param));
                         });

TEST_P(GenerationTest, EveryBoundaryEndsWithWhatBelongsToIt) {
  suite_.Run();

  EXPECT_EQ(suite_.Rows("SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER ORDER BY Q_ID"),
            ExpectedReminders());
  Texts questions, steps, events;
  for (const Boundary& one : boundaries_) {
    const std::string id = std::to_string(one.question.id);
    questions.push_back(id + (one.fate == Fate::Concluded ? "|160" : "|150"));
    if (one.fate != Fate::Concluded) continue;
    steps.push_back(id + "|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0");
    events.push_back("{\"TIME\":\"2004-07-26 09:05:03\",\"EVENT\":\"concluded\",\"QUESTION\":" + id + "}");
  }
  EXPECT_EQ(suite_.Rows("SELECT Q_ID, Q_STATUS FROM QUESTIONS ORDER BY Q_ID"), questions);
  EXPECT_EQ(suite_.Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, TIMESPENT "
                        "FROM TRANSACTIONS ORDER BY T_ID"),
            steps);
  EXPECT_EQ(suite_.Rows("SELECT count(*), count(DISTINCT T_ID) FROM TRANSACTIONS").at(0),
            std::to_string(steps.size()) + "|" + std::to_string(steps.size()));
  EXPECT_THAT(suite_.Rows("SELECT EMAILID, PENDINGQUESTIONS FROM PROSPECT"),
              ElementsAre("vera@visitors.example|2"))
      << "who counts pending questions hears of the event and counts alone";
  EXPECT_EQ(suite_.Lines("outbox/questions.jsonl"), events);
  EXPECT_THAT(suite_.Lines("outbox/escalation.jsonl"),
              ElementsAre("{\"TIME\":\"2004-07-26 09:05:03\",\"REQUEST\":\"SendingEscalationMails\"}"));
  EXPECT_EQ(suite_.Lines("erp/calls-A.jsonl"), generation_ == 3 ? ExpectedCalls() : Texts{});
  EXPECT_EQ(suite_.Lines("erp/calls-B.jsonl"), generation_ == 8 ? ExpectedCalls() : Texts{});
  EXPECT_EQ(suite_.Log(), ExpectedLog());

  std::size_t next = 0;
  for (const Boundary& one : boundaries_) {
    if (one.fate == Fate::Waits || one.recipient.empty()) continue;
    SCOPED_TRACE(one.question.id);
    ASSERT_LT(next, suite_.doubles_->mails.size());
    const SentMail& mail = suite_.doubles_->mails[next++];
    const auto [head, text] = ExpectedMail(one);
    EXPECT_EQ(mail.from + " > " + mail.to + ": " + mail.subject, head);
    EXPECT_EQ(mail.textBody, text);
    EXPECT_TRUE(mail.mimeFormatted);
    ASSERT_EQ(mail.attachments.size(), 1U);
    EXPECT_TRUE(mail.attachments[0].first.ends_with("\\home\\Data\\HTML\\26953.htm"));
    const Page page(mail.attachments[0].second);
    EXPECT_EQ(page.Texts("//h1 | //h2 | //h3 | //dt | //dd | //p"), ExpectedPage(one));
    EXPECT_THAT(page.Texts("/html/body/@class"),
                ElementsAre(one.fate == Fate::Reminded ? "reminder" : "conclusion"));
    EXPECT_EQ(page.Count("//script | //img"), 0U);
  }
  EXPECT_EQ(suite_.doubles_->mails.size(), next);
  // Every page went with its mail and was deleted; those of mails 14, 15 and 17 gave way to the next.
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
}

}  // namespace
}  // namespace orvane_test
