// Customers are reminded, requests concluded; what counts as mailed or handed over exists.
#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "tests/e2e/power_cuts/scenario.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

constexpr int kReminded[] = {1, 2, 3};
constexpr int kConcluded[] = {4, 5, 6};

class SolveScenario final : public Scenario {
 public:
  using Scenario::Scenario;

  std::string Job() const override { return "SolveOnNoResponse"; }

  void PutFiles() override {
    suite_.AddPerson("jdoe", "mail: jane@x.example\ngivenName: Jane\n");
    // The next line does not end in the disk sector that it begins in.
    suite_.Installation().suite.Folder().Write("home/outbox/questions.jsonl",
                                               "{\"EARLIER\":\"" + std::string(470, 'x') + "\"}\n");
  }

  std::vector<std::string> RowStatements() const override {
    std::vector<std::string> statements{
        "delete from REMINDER",
        "delete from QUESTIONS",
        "delete from TRANSACTIONS",
        "update DATALABEL set TEXT = 'Reminded' where TEXTID = 'MAIL8SUBJECT'",
        "update DATALABEL set TEXT = 'Concluded' where TEXTID = 'MAIL10SUBJECT'",
        "update PARAMETERS set PARAM_VALUE = '72' where PARAM_NAME = 'Reminder_Time'",
        "update PARAMETERS set PARAM_VALUE = '100' where PARAM_NAME = 'Conclusion_Time'",
        "update PARAMETERS set PARAM_VALUE = '8' where PARAM_NAME = 'BackOfficeApplication'"};
    for (int id = 1; id <= 8; ++id) {
      statements.push_back(
          "insert into QUESTIONS (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, EMAILID, Q_CALL, CENTER, "
          "D_DIRECT_TO, "
          "Q_REPORTED, Q_DESC, Q_PRODUCTCAT, PRODUCTID, Q_CATEGORY) values (" +
          std::to_string(id) + ", 150, 'jdoe', " +
          (id == 5 ? suite_.Rows().TrueLiteral() : suite_.Rows().FalseLiteral()) + ", 'visitor@x.example', " +
          (id == 4 ? "'CALL-4'" : "null") + ", 7, 'jdoe', '', 'pump', 0, 0, 0)");
    }
    for (const int id : kReminded) statements.push_back(Reminder(id, Ago(kHour), "null"));
    for (const int id : kConcluded) statements.push_back(Reminder(id, Ago(9 * kHour), Ago(kHour)));
    statements.push_back(Reminder(7, Ago(-kHour), "null"));
    statements.push_back(Reminder(8, Ago(9 * kHour), Ago(-kHour)));
    return statements;
  }

  void ExpectNothingLost(const std::string& when) override {
    ExpectWholeMails(when);
    const Strings waiting = Column("select Q_ID from REMINDER order by Q_ID");
    const Strings marked = Column("select Q_ID from REMINDER where Q_ID <= 3 and T2_DATE is not null");
    // A reminder counts as sent a moment before it is.
    const auto missing = std::count_if(marked.begin(), marked.end(),
                                       [&](const std::string& id) { return Mails("Reminded", id) == 0; });
    EXPECT_LE(missing, 1) << "reminders that were never sent " << when;
    for (const int number : kConcluded) {
      const std::string id = std::to_string(number);
      if (std::find(waiting.begin(), waiting.end(), id) == waiting.end()) ExpectConcluded(id, when);
    }
    ExpectOthersUntouched(waiting, when);
  }

  void ExpectAllDone(const std::string& when) override {
    ExpectNothingLost(when);
    EXPECT_THAT(Column("select Q_ID from REMINDER order by Q_ID"), ElementsAre("1", "2", "3", "7", "8"))
        << when;
    EXPECT_THAT(Column("select Q_ID from REMINDER where Q_ID <= 3 and T2_DATE is null"), IsEmpty()) << when;
    for (const int number : kConcluded) {
      const std::string id = std::to_string(number);
      ExpectConcluded(id, when);
      EXPECT_LE(Mails("Concluded", id), 2) << id << " " << when;
    }
    for (const int number : kReminded) EXPECT_LE(Mails("Reminded", std::to_string(number)), 2) << when;
  }

 private:
  static std::string Ago(long seconds) { return "'" + DateText(-seconds) + "'"; }
  static std::string Reminder(int id, const std::string& t1, const std::string& t2) {
    return "insert into REMINDER values (" + std::to_string(id) + ", " + t1 + ", " + t2 + ", 150)";
  }

  Strings Column(const std::string& query) const { return suite_.Rows().Column(query); }

  void ExpectConcluded(const std::string& id, const std::string& when) const {
    EXPECT_GE(Mails("Concluded", id), 1) << id << " " << when;
    EXPECT_THAT(Column("select Q_STATUS from QUESTIONS where Q_ID = " + id), ElementsAre("160")) << when;
    EXPECT_THAT(Column("select T_ID from TRANSACTIONS where Q_ID = " + id), testing::Not(IsEmpty()))
        << id << when;
    EXPECT_THAT(Lines("outbox/questions.jsonl"),
                testing::Contains(testing::EndsWith("\"QUESTION\":" + id + "}")))
        << when;
    if (id != "4") return;
    EXPECT_THAT(Lines("erp/calls-B.jsonl"), testing::Contains(testing::HasSubstr("CALL-4"))) << when;
  }

  void ExpectOthersUntouched(const Strings& waiting, const std::string& when) const {
    EXPECT_THAT(waiting, testing::IsSupersetOf({"1", "2", "3", "7", "8"})) << when;
    EXPECT_THAT(Column("select T2_DATE from REMINDER where Q_ID = 7 and T2_DATE is not null"), IsEmpty())
        << when;
    EXPECT_EQ(Mails("Reminded", "7") + Mails("Concluded", "8"), 0) << when;
    EXPECT_THAT(Column("select Q_ID from QUESTIONS where Q_STATUS = 150 and Q_ID in (1, 2, 3, 7, 8)"),
                testing::SizeIs(5))
        << when;
  }

  // The lines that a reader of JSON lines would take.
  Strings Lines(const std::string& name) const {
    Strings lines;
    if (!fs::exists(suite_.Home() / name)) return lines;
    std::istringstream stream(TemporaryFolder::Read(suite_.Home() / name));
    for (std::string line; std::getline(stream, line);) {
      if (line.starts_with("{") && line.find('{', 1) == std::string::npos && line.ends_with("}"))
        lines.push_back(line);
    }
    return lines;
  }

  Strings MailTexts() const {
    Strings texts;
    for (const auto& entry : fs::directory_iterator(suite_.Home() / "mail/pickup")) {
      if (entry.path().extension() == ".eml") texts.push_back(TemporaryFolder::Read(entry.path()));
    }
    return texts;
  }

  long Mails(const std::string& subject, const std::string& id) const {
    const Strings texts = MailTexts();
    const std::string line = "\r\nSubject: " + subject + " (" + id + ")";
    return std::count_if(texts.begin(), texts.end(),
                         [&](const std::string& text) { return text.find(line) != std::string::npos; });
  }

  // From its headers to the end of its page.
  void ExpectWholeMails(const std::string& when) const {
    for (const std::string& text : MailTexts()) {
      const std::string name = "boundary=\"";
      const std::size_t at = text.find(name);
      ASSERT_NE(at, std::string::npos) << "a mail without its parts " << when << "\n" << text.substr(0, 400);
      const std::size_t start = at + name.size();
      EXPECT_TRUE(text.ends_with("--" + text.substr(start, text.find('"', start) - start) + "--\r\n"))
          << when;
      EXPECT_NE(text.find("text/html"), std::string::npos) << when;
    }
  }
};

}  // namespace

std::unique_ptr<Scenario> MakeSolveScenario(PowerCutSuite& suite) {
  return std::make_unique<SolveScenario>(suite);
}

}  // namespace orvane_test
