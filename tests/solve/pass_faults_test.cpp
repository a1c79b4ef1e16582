// A pass in which one step fails: nothing stays open, nothing is raised, and the rows are those of the steps
// before it.
#include <algorithm>
#include <string>
#include <utility>

#include "tests/solve/solve_test.hpp"
#include "tests/support/database_environment.hpp"

namespace orvane_test {
namespace {

constexpr const char* kDue = "2004-07-20 09:00:00";

// One question to conclude, a prospect's with a call of the ERP, and one to remind.
class PassFaultsTest : public SolveTest {
 protected:
  PassFaultsTest() {
    SetParameter("BackOfficeApplication", "3");
    directory_->people["lberg"] = {.engineerCode = "eng-7b"};
    AddQuestion(27);
    database_.Run(
        "UPDATE QUESTIONS SET PROSPECT = 1, EMAILID = 'visitor@example.org', Q_CALL = 'C-1', "
        "D_DIRECT_TO = 'lberg', A_TEXT = 'x' WHERE Q_ID = 26");
  }

  void RunAnew() {
    database_.Run(
        "DELETE FROM REMINDER; DELETE FROM TRANSACTIONS; UPDATE QUESTIONS SET Q_STATUS = 150;"
        "INSERT INTO REMINDER (Q_ID, T1_DATE, T2_DATE, R_STATUS) VALUES "
        "(26, NULL, '2004-07-20 09:00:00', 150), (27, '2004-07-20 09:00:00', NULL, 150)");
    suite_->mails.clear();
    suite_->events.clear();
    environment_.log->clear();
    job_.Run();
  }

  bool Happened(const std::string& event) const {
    return std::find(suite_->events.begin(), suite_->events.end(), event) != suite_->events.end();
  }
  bool Logged(const std::string& message) const {
    for (const std::string& entry : Log()) {
      if (entry.find(message) != std::string::npos) return true;
    }
    return false;
  }

  // What holds of the rows whatever failed, since the steps come in their order.
  void CheckRows(const std::string& failing) {
    SCOPED_TRACE("after the failure of " + failing);
    const bool concluded = Status(26) == "160";
    const bool recorded = Transactions() == Texts{"26|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0"};
    const bool deleted = Row("SELECT count(*) FROM REMINDER WHERE Q_ID = 26") == "0";
    const bool scheduled = Row("SELECT T2_DATE FROM REMINDER WHERE Q_ID = 27") == "2004-07-28 09:05:03";
    EXPECT_TRUE(recorded || Transactions().empty());
    EXPECT_TRUE(scheduled || Row("SELECT T2_DATE FROM REMINDER WHERE Q_ID = 27") == "NULL");
    EXPECT_EQ(Status(27), "150");
    EXPECT_TRUE(concluded || !recorded);
    EXPECT_TRUE(recorded || !Happened("OrvaneBackendA.Calls.UpdateCall"));
    EXPECT_TRUE(recorded || !Happened("prospect(visitor@example.org,,true)"));
    EXPECT_TRUE(Happened("prospect(visitor@example.org,,true)") || !Happened("question(26)"));
    EXPECT_TRUE(Happened("question(26)") || !Happened("mail to visitor@example.org"));
    EXPECT_TRUE(Happened("question(26)") || !deleted);
    EXPECT_TRUE(deleted || !scheduled);  // an error before the row was deleted has ended the pass
    EXPECT_TRUE(scheduled || !Happened("mail to anna@example.org"));
    EXPECT_TRUE(Happened("escalation mails") ||
                Logged("Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "));
    if (!deleted || !scheduled) {
      EXPECT_TRUE(Logged("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: ") ||
                  Logged("Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "));
    }
  }
};

TEST_F(PassFaultsTest, NothingStaysOpenWhicheverStepOnTheDatabaseFails) {
  const int runs = LetEveryStepFail(*adodb_, [this] {
    EXPECT_NO_THROW(RunAnew());
    const auto failing = std::exchange(adodb_->before, nullptr);
    CheckRows("a step on the database");
    adodb_->before = failing;
  });
  EXPECT_GE(runs, 150);
  EXPECT_EQ(suite_->events,
            (Texts{"OrvaneBackendA.Calls.UpdateCall", "prospect(visitor@example.org,,true)", "question(26)",
                   "mail to visitor@example.org", "mail to anna@example.org", "escalation mails"}));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(PassFaultsTest, NothingStaysOpenWhicheverComponentFails) {
  UseHtmlMails();
  suite_->contracts[26] = {"CT-1", "Full service"};
  int runs = 0;
  bool failed = true;
  while (failed) {
    ++runs;
    failed = false;
    int step = 0;
    std::string failing = "nothing";
    const auto fail = [&](std::string_view name) {
      if (name == "SelectProduct" || name == "GetConnectionString") return;  // as a connection that fails
      if (++step != runs) return;
      failed = true;
      failing = name;
      throw automation::Error(70, "Injected", "Permission denied");
    };
    suite_->before = fail;
    directory_->before = fail;
    environment_.configuration->before = fail;
    adodb_->connectionsLeftOpen = 0;
    EXPECT_NO_THROW(RunAnew());
    EXPECT_EQ(adodb_->connectionsLeftOpen, 0) << failing;
    EXPECT_EQ(adodb_->openConnections, 0) << failing;
    EXPECT_EQ(adodb_->openRecordsets, 0) << failing;
    // The first step is the one on which the run log depends.
    if (runs > 1) CheckRows(failing);
  }
  EXPECT_GE(runs, 100);
  EXPECT_EQ(suite_->mails.size(), 2U);
}

// Where a question is missing, its row set stays open: the next query with the same object ends the pass.
class MissingQuestionTest : public PassFaultsTest, public testing::WithParamInterface<std::pair<bool, bool>> {
 protected:
  void AddDue(int id, bool conclusion) { AddReminder(id, conclusion ? "" : kDue, conclusion ? kDue : ""); }
};

TEST_P(MissingQuestionTest, LeavesItsRowSetOpenAndTheNextDueRowEndsThePass) {
  const auto [missingIsConclusion, nextIsConclusion] = GetParam();
  AddDue(10, missingIsConclusion);             // no such question
  AddReminder(11, "", "");                     // never due
  AddReminder(12, "2004-07-26 09:04:04", "");  // not due for another second
  AddDue(26, nextIsConclusion);
  AddDue(27, false);
  const Texts before = Reminders();
  std::vector<int> open;
  adodb_->before = [&](std::string_view step) {
    if (step == "Recordset.MoveNext" || step == "Recordset.Open") open.push_back(adodb_->openRecordsets);
  };

  job_.SolveOnNoResponse(3);

  adodb_->before = nullptr;
  // The parameters (opened, two rows); the walk; the question that is not there, and from then on two sets.
  EXPECT_EQ(open, (std::vector<int>{0, 1, 1, 0, 1, 2, 2, 2, 2}));
  EXPECT_EQ(Reminders(), before);
  EXPECT_EQ(Transactions(), Texts{});
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(suite_->events, Texts{});
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Operation is not allowed when the object is open. (3705)."}));
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, MissingQuestionTest,
                         testing::Values(std::pair(false, false), std::pair(false, true),
                                         std::pair(true, false), std::pair(true, true)),
                         [](const auto& parameter) {
                           return std::string(parameter.param.first ? "Conclusion" : "Reminder") + "Then" +
                                  (parameter.param.second ? "Conclusion" : "Reminder");
                         });

TEST_F(PassFaultsTest, TwoMissingQuestionsEndThePassAtTheSecond) {
  AddReminder(10, "", kDue);
  AddReminder(11, "", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Operation is not allowed when the object is open. (3705)."}));
  EXPECT_EQ(Reminders().size(), 2U);
}

TEST_F(PassFaultsTest, RowsThatAreNotDueBehindAMissingQuestionAreWalkedToTheEnd) {
  AddReminder(10, "", kDue);  // no such question
  AddReminder(26, "2004-07-26 09:04:04", "");
  AddReminder(27, "", "2004-07-26 09:05:03");
  job_.Run();
  EXPECT_EQ(Log(), Texts{});
  EXPECT_EQ(suite_->events, Texts{"escalation mails"});
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

TEST_F(PassFaultsTest, AQuestionThatIsBackIsTakenInTheNextPass) {
  AddReminder(10, "", kDue);
  AddReminder(27, kDue, "");
  job_.SolveOnNoResponse(0);
  AddQuestion(10);
  environment_.log->clear();
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Log(), Texts{});
  EXPECT_EQ(Status(10), "160");
  EXPECT_EQ(Reminders(), (Texts{"27|2004-07-20 09:00:00|2004-07-28 09:05:03|150"}));
}

}  // namespace
}  // namespace orvane_test
