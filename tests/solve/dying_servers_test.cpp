// A pass of the solve job whose database server is stopped, killed or restarted in its middle: the run ends
// with the entries of the procedures that met it, no row is lost or written by half, and the next run
// finishes the work. What is done again then is what had not been noted as done.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/adodb/odbc/provider.hpp"
#include "tests/doubles/faulty_provider.hpp"
#include "tests/servers/dying_server.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/solve/whole_suite.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = WholeSuite::Texts;

constexpr const char* kLongAgo = "1999-12-31 23:59:59";

// Entries of the error log, with the driver's words as "<lost>".
const std::string kPassFailed =
    "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: <lost> (-2147467259).";
const std::string kMailDataFailed =
    "OrvaneProcess.SolveOnNoResponse.getMailData caught: <lost> (-2147467259).";
const std::string kNoConnection =
    "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: <lost>(-2147467259).";

// 26 is to be reminded, 27 to be concluded, 28 to be reminded.
const Texts kNothingDone = {"26|NULL", "27|1999-12-31 23:59:59", "28|NULL"};
const Texts kFirstReminded = {"26|2004-07-28 09:05:03", "27|1999-12-31 23:59:59", "28|NULL"};

// A statement before which it happens, and what the run and the next one have done then.
struct Point {
  const char* name;
  const char* statement;  // the beginning of its text, or a part
  Texts mails;
  Texts log;
  Texts reminders;  // question and date of conclusion
  const char* status;
  std::size_t records = 0;  // in TRANSACTIONS, and as many calls of the ERP if it came so far
  std::size_t calls = 0;
  Texts nextMails;
};

const std::string kMail26 = "anna@example.org (26) page 26";
const std::string kMail27 = "jan@example.org (27) page 27";
const std::string kMail28 = "anna@example.org (28) page 28";

const std::vector<Point>& Points() {
  static const std::vector<Point> points = {
      {"Walk",
       "SELECT *,REMINDER",
       {},
       {kPassFailed},
       kNothingDone,
       "150",
       0,
       0,
       {kMail26, kMail27, kMail28}},
      {"NotingTheReminder",
       "UPDATE REMINDER",
       {},
       {kPassFailed},
       kNothingDone,
       "150",
       0,
       0,
       {kMail26, kMail27, kMail28}},
      // Noted as reminded before the mail is made: it is not made up for.
      {"MailOfTheReminder",
       "EMAIL where Mail_Id=8",
       {},
       {kMailDataFailed, kPassFailed},
       kFirstReminded,
       "150",
       0,
       0,
       {kMail27, kMail28}},
      {"Conclusion",
       "UPDATE QUESTIONS",
       {kMail26},
       {kPassFailed},
       kFirstReminded,
       "150",
       0,
       0,
       {kMail27, kMail28}},
      {"Record",
       "INSERT INTO TRANSACTIONS",
       {kMail26},
       {"METHOD: \r\nOrvServiceRequestMTS.Question.CreateTransactionLog caught: <lost>(-2147467259).",
        kPassFailed},
       kFirstReminded,
       "160",
       0,
       0,
       {kMail27, kMail28}},
      // The mail went out, but its reminder row is still there: concluded once more.
      {"DeletingTheReminder",
       "DELETE FROM REMINDER",
       {kMail26, kMail27},
       {kPassFailed},
       kFirstReminded,
       "160",
       1,
       1,
       {kMail27, kMail28}},
  };
  return points;
}

const Point& MailOfTheConclusion(Outage::What what) {
  static const Point away = {
      "MailOfTheConclusion",
      "EMAIL where Mail_Id=10",
      {kMail26},
      {kMailDataFailed, kNoConnection,
       "OrvaneProcess.SolveOnNoResponse.OpenQuestionRS caught: <lost> (-2147467259).",
       "OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: Object variable or With block variable "
       "not set "
       "(91).",
       "OrvaneProcess.SolveOnNoResponse.formInstalledBaseNodes caught: Object variable or With block "
       "variable not "
       "set (91).",
       kNoConnection, "METHOD: \r\nOrvaneProcess.Dispatch.GetParamValue caught: <lost>(-2147467259).",
       "OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: <lost> (-2147467259).", kPassFailed},
      kFirstReminded,
      "160",
      1,
      1,
      {kMail27, kMail28}};
  // Back at once: the mail goes out with the text of the mail before, to the customer of its page.
  static const Point back = {"MailOfTheConclusion",
                             "EMAIL where Mail_Id=10",
                             {kMail26, "jan@example.org (26) page 27"},
                             {kMailDataFailed, kPassFailed},
                             kFirstReminded,
                             "160",
                             1,
                             1,
                             {kMail27, kMail28}};
  return what == Outage::Restarted ? back : away;
}

struct Case {
  Point point;
  Outage outage;
  friend void PrintTo(const Case& one, std::ostream* out) { *out << one.point.name << NameOf(one.outage); }
};

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const Outage& outage : AllOutages()) {
    for (const Point& point : Points()) cases.push_back({point, outage});
    cases.push_back({MailOfTheConclusion(outage.what), outage});
  }
  return cases;
}

class OwnServerTables : public SuiteTables {
 public:
  OwnServerTables(const Server& server, const std::string& name, std::shared_ptr<Faults> faults)
      : database_(server, name), faults_(std::move(faults)) {
    database_.RunSchemaFile(name + ".sql");
  }
  std::shared_ptr<ADODB::engine::Provider> Provider() override {
    return std::make_shared<FaultyProvider>(ADODB::odbc::MakeProvider(), faults_);
  }
  std::string ConnectionString() const override { return database_.ConnectionString(); }

 private:
  ServerDatabase database_;
  std::shared_ptr<Faults> faults_;
};

class SolveOnDyingServersTest : public testing::TestWithParam<Case> {
 protected:
  SolveOnDyingServersTest() {
    suite_.Add({{26, kLongAgo, ""},
                {27,
                 "",
                 kLongAgo,
                 {{"Q_CALL", automation::Variant("C-1")}, {"Q_ORIGINATOR", automation::Variant("jan")}}},
                {28, kLongAgo, ""}});
  }

  // Recipient, number in the subject, case of the page.
  Texts Mails() const {
    Texts shown;
    for (const SentMail& mail : suite_.doubles_->mails) {
      std::string line = mail.to + " " + mail.subject.substr(mail.subject.find('('));
      for (const auto& [path, page] : mail.attachments) {
        const std::size_t at = page.find("Case ");
        line += "page " + (at == std::string::npos ? "of none" : page.substr(at + 5, 2));
      }
      shown.push_back(line);
    }
    return shown;
  }
  Texts Log() const {
    Texts entries;
    for (const std::string& entry : suite_.Log()) entries.push_back(WithoutDriversWords(entry));
    return entries;
  }
  Texts Reminders() { return suite_.Rows("SELECT Q_ID, T2_DATE FROM REMINDER ORDER BY Q_ID"); }
  Texts Statuses() { return suite_.Rows("SELECT Q_STATUS FROM QUESTIONS ORDER BY Q_ID"); }
  // Each is whole.
  void ExpectRecords(std::size_t count) {
    EXPECT_EQ(
        suite_.Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, TIMESPENT FROM "
                    "TRANSACTIONS"),
        Texts(count, "27|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0"));
  }
  void ExpectOutside(std::size_t calls, std::size_t escalations) const {
    EXPECT_EQ(suite_.Lines("erp/calls-A.jsonl").size(), calls);
    EXPECT_EQ(suite_.Lines("outbox/questions.jsonl").size(), calls);
    EXPECT_EQ(suite_.Lines("outbox/escalation.jsonl").size(), escalations);
    EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
  }

  const Point& point_ = GetParam().point;
  DyingServer server_{GetParam().outage};
  std::shared_ptr<Faults> faults_ = std::make_shared<Faults>();
  WholeSuite suite_{std::make_unique<OwnServerTables>(server_.Itself(), GetParam().outage.server, faults_)};
};

TEST_P(SolveOnDyingServersTest, NothingIsLostAndTheNextRunFinishes) {
  faults_->before = [this](std::string_view sql) {
    if (sql.find(point_.statement) != std::string_view::npos) server_.Fail();
  };
  EXPECT_NO_THROW(suite_.Run());
  faults_->before = nullptr;
  EXPECT_TRUE(server_.HasFailed());
  EXPECT_EQ(Mails(), point_.mails);
  EXPECT_EQ(Log(), point_.log);

  server_.Recover();
  suite_.Reconnect();
  EXPECT_EQ(Reminders(), point_.reminders);
  EXPECT_THAT(Statuses(), ElementsAre("150", point_.status, "150"));
  ExpectRecords(point_.records);
  ExpectOutside(point_.calls, 1);  // escalations do not wait for a pass that failed

  suite_.doubles_->mails.clear();
  suite_.environment_.log->clear();
  EXPECT_NO_THROW(suite_.Run());
  EXPECT_EQ(Mails(), point_.nextMails);
  EXPECT_THAT(Log(), IsEmpty());
  EXPECT_THAT(Reminders(), ElementsAre("26|2004-07-28 09:05:03", "28|2004-07-28 09:05:03"));
  EXPECT_THAT(Statuses(), ElementsAre("150", "160", "150"));
  ExpectRecords(point_.records + 1);
  ExpectOutside(point_.calls + 1, 2);
}

INSTANTIATE_TEST_SUITE_P(Points, SolveOnDyingServersTest, testing::ValuesIn(AllCases()),
                         [](const auto& one) { return one.param.point.name + NameOf(one.param.outage); });

}  // namespace
}  // namespace orvane_test
