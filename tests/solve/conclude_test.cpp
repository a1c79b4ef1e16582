// Waiting for conclusion -> row deleted.
#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class ConclusionTest : public SolveTest {};

constexpr const char* kDue = "2004-07-26 09:04:03";  // exactly one minute back

TEST_F(ConclusionTest, ClosesTheQuestionRecordsTheStepMailsAndDeletesTheRow) {
  AddReminder(26, "2004-07-20 09:00:00", kDue);

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Transactions(), (Texts{"26|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0"}));
  EXPECT_EQ(Reminders(), Texts{});
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].to, "anna@example.org");
  EXPECT_EQ(suite_->mails[0].subject, "text S10 (26) ");
  EXPECT_EQ(suite_->events, (Texts{"question(26)", "mail to anna@example.org"}));
  EXPECT_EQ(Log(), Texts{});
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

TEST_F(ConclusionTest, ADateIsDueOnceItLiesOneMinuteBack) {
  AddReminder(26, "2004-07-20 09:00:00", "2004-07-26 09:04:04");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-26 09:04:04|150"}));
  EXPECT_TRUE(suite_->mails.empty());
}

TEST_F(ConclusionTest, ARowThatWaitsForItsConclusionIsNotRemindedAgain) {
  AddReminder(26, "2004-07-20 09:00:00", "2004-07-30 09:00:00");
  job_.SolveOnNoResponse(0);
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-30 09:00:00|150"}));
}

TEST_F(ConclusionTest, AReminderDateIsNotNeededForAConclusion) {
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Reminders(), Texts{});
}

TEST_F(ConclusionTest, TheQuestionIsReadAndWrittenAsAlways) {
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(0);
  ASSERT_GE(adodb_->recordsets.size(), 3U);
  EXPECT_EQ(adodb_->recordsets[2],
            (OpenedRecordset{.sql = "Select Q_REPORTED,Q_ORIGINATOR,D_DIRECT_TO,Q_STATUS, "
                                    "PROSPECT,EMAILID,CENTER,Q_CALL,A_TEXT from QUESTIONS where Q_ID = 26",
                             .cursor = ADODB::CursorType::Dynamic,
                             .lock = ADODB::LockType::Optimistic,
                             .options = -1}));
}

TEST_F(ConclusionTest, TheStepsOfAProspectsQuestionComeInOrder) {
  database_.Run(
      "UPDATE QUESTIONS SET PROSPECT = 1, EMAILID = 'visitor@example.org', Q_CALL = 'C-1', D_DIRECT_TO = "
      "'anna', "
      "A_TEXT = 'x' WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(3);
  EXPECT_EQ(suite_->events, (Texts{"OrvaneBackendA.Calls.UpdateCall", "prospect(visitor@example.org,,true)",
                                   "question(26)", "mail to visitor@example.org"}));
  EXPECT_EQ(Reminders(), Texts{});
}

TEST_F(ConclusionTest, AProspectWithoutAnAddressIsConcludedWithAnEmptyOne) {
  database_.Run("UPDATE QUESTIONS SET PROSPECT = 1, EMAILID = NULL WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(suite_->events, (Texts{"prospect(,,true)", "question(26)", "mail to "}));
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Reminders(), Texts{});
}

TEST_F(ConclusionTest, ProspectNullCountsAsFalse) {
  database_.Run("UPDATE QUESTIONS SET PROSPECT = NULL, EMAILID = 'visitor@example.org' WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(suite_->events, (Texts{"question(26)", "mail to anna@example.org"}));
}

class CallOfAQuestionTest : public ConclusionTest, public testing::WithParamInterface<const char*> {};

TEST_P(CallOfAQuestionTest, IsNoCallForTheErp) {
  database_.Run(std::string("UPDATE QUESTIONS SET D_DIRECT_TO = 'anna', A_TEXT = 'x', Q_CALL = ") +
                GetParam() + " WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(3);
  EXPECT_TRUE(suite_->erpCalls.empty());
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Log(), Texts{});
}

INSTANTIATE_TEST_SUITE_P(WithoutOne, CallOfAQuestionTest, testing::Values("NULL", "''", "'<NULL>'"));

class UnusualCallTest : public ConclusionTest, public testing::WithParamInterface<const char*> {};

TEST_P(UnusualCallTest, IsACallForTheErp) {
  database_.Run(std::string("UPDATE QUESTIONS SET D_DIRECT_TO = 'anna', A_TEXT = 'x', Q_CALL = '") +
                GetParam() + "' WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(3);
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  EXPECT_EQ(suite_->erpCalls[0].second.at(1).second, automation::Variant(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Texts, UnusualCallTest,
                         testing::Values("<null>", "<NULL> ", " <NULL>", " ", "NULL", "0"));

TEST_F(ConclusionTest, EveryRecordOfAPassHasItsOneMoment) {
  AddQuestion(27);
  AddReminder(26, "", kDue);
  AddReminder(27, "", kDue);
  suite_->before = [this](const std::string& step) {
    if (step == "send") environment_.now = automation::AddMinutes(environment_.now, 10);
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Transactions(), (Texts{"26|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0",
                                   "27|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0"}));
}

TEST_F(ConclusionTest, TheAnswerGoesToTheErpWithoutItsSeparators) {
  database_.Run(
      "UPDATE QUESTIONS SET Q_CALL = 'C-1', D_DIRECT_TO = 'anna', "
      "A_TEXT = 'a' || char(4,3,2,1) || 'b' || char(4,3,2) || 'c' || char(4,3,2,1) || char(1,2,3,4) "
      "WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(8);
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  EXPECT_EQ(suite_->erpCalls[0].first, "OrvaneBackendB.Calls");
  EXPECT_EQ(suite_->erpCalls[0].second.back().second, automation::Variant("ab\x04\x03\x02"
                                                                          "c\x01\x02\x03\x04"));
}

TEST_F(ConclusionTest, AnErpThatFailsHoldsUpNothing) {
  database_.Run("UPDATE QUESTIONS SET Q_CALL = 'C-1', D_DIRECT_TO = 'anna', A_TEXT = 'x' WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(5);
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: "
                          "Object variable or With block variable not set (91)."}));
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Reminders(), Texts{});
  EXPECT_EQ(suite_->mails.size(), 1U);
}

TEST_F(ConclusionTest, TheRowIsDeletedOnceTheMailIsOnItsWay) {
  AddReminder(26, "", kDue);
  Texts rows;
  suite_->before = [this, &rows](const std::string& step) {
    if (step == "Concluded" || step == "send")
      rows.push_back(step + " " + std::to_string(Reminders().size()));
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(rows, (Texts{"Concluded 1", "send 1"}));
  EXPECT_EQ(Reminders(), Texts{});
}

TEST_F(ConclusionTest, TheQuestionIsWrittenBeforeItsRecordAndClosedBeforeItsComponentsAreAsked) {
  AddReminder(26, "", kDue);
  Texts states;
  const auto note = [this, &states](const std::string& step) {
    states.push_back(step + " " + Status(26) + " " + std::to_string(Transactions().size()) + " " +
                     std::to_string(adodb_->openRecordsets));
  };
  adodb_->beforeStatement = [&note](const std::string& sql) {
    if (sql.find("TRANSACTIONS") != std::string::npos) note("record");
  };
  suite_->before = [&note](const std::string& step) {
    if (step == "Concluded") note(step);
  };
  job_.SolveOnNoResponse(0);
  // While the record is made the reminders and the question are open, afterwards the reminders alone.
  EXPECT_EQ(states, (Texts{"record 160 0 2", "Concluded 160 1 1"}));
}

TEST_F(ConclusionTest, AMailThatCannotBeSentHoldsUpNothing) {
  AddReminder(26, "", kDue);
  suite_->before = [](const std::string& step) {
    if (step == "send")
      throw automation::Error(-2147220973, "CDO.Message", "The transport failed to connect");
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Reminders(), Texts{});
  EXPECT_EQ(Transactions().size(), 1U);
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ConclusionTest, AnUnknownUserEndsThePassBeforeAnythingIsWritten) {
  AddQuestion(25, "ghost");
  AddReminder(25, "", kDue);
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(25), "150");
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(Transactions(), Texts{});
  EXPECT_EQ(Reminders().size(), 2U);
  EXPECT_EQ(Log().back(),
            "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
            "Object variable or With block variable not set (91).");
}

TEST_F(ConclusionTest, AQuestionWithoutAnOriginatorEndsThePass) {
  database_.Run("UPDATE QUESTIONS SET Q_ORIGINATOR = NULL WHERE Q_ID = 26");
  AddReminder(26, "", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(Log(),
            (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Invalid use of Null (94)."}));
}

TEST_F(ConclusionTest, WhatWasWrittenBeforeAFailureStays) {
  // No service centre: the transaction record cannot be made, and the pass ends there.
  database_.Run("UPDATE QUESTIONS SET CENTER = NULL WHERE Q_ID = 26");
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", kDue);
  AddReminder(27, "2004-07-20 09:00:00", kDue);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Status(27), "150");
  EXPECT_EQ(Transactions(), Texts{});
  EXPECT_EQ(Reminders().size(), 2U);
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Log(),
            (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Invalid use of Null (94)."}));
}

TEST_F(ConclusionTest, AFailingStateComponentEndsThePassBeforeTheMail) {
  AddReminder(26, "", kDue);
  suite_->before = [](const std::string& step) {
    if (step == "Concluded") throw automation::Error(70, "OrvServiceRequest", "Permission denied");
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Transactions().size(), 1U);
  EXPECT_EQ(Reminders().size(), 1U);
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(*environment_.log,
            (std::vector<LogEntry>{
                {"OrvServiceRequest",
                 "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Permission denied (70).", 0}}));
}

TEST_F(ConclusionTest, AMissingQuestionIsLeftAloneAndTheNextDueRowEndsThePass) {
  AddReminder(25, "", kDue);  // no such question
  AddReminder(26, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(), (Texts{"25|NULL|2004-07-26 09:04:03|150", "26|2004-07-20 09:00:00|NULL|150"}));
  EXPECT_TRUE(suite_->events.empty());
  EXPECT_EQ(Transactions(), Texts{});
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Operation is not allowed when the object is open. (3705)."}));
}

TEST_F(ConclusionTest, RowsBeforeAMissingQuestionAreDoneOnEveryRun) {
  AddReminder(26, "", kDue);
  AddReminder(27, "", kDue);  // no such question
  job_.SolveOnNoResponse(0);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"27|NULL|2004-07-26 09:04:03|150"}));
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ConclusionTest, ManyRowsAreWalkedToTheEnd) {
  for (int id = 100; id < 130; ++id) {
    AddQuestion(id);
    AddReminder(id, "2004-07-20 09:00:00", id % 2 == 0 ? kDue : "");
  }
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Transactions().size(), 15U);
  EXPECT_EQ(suite_->mails.size(), 30U);
  EXPECT_EQ(Row("SELECT count(*), min(T2_DATE), max(T2_DATE) FROM REMINDER"),
            "15|2004-07-28 09:05:03|2004-07-28 09:05:03");
}

TEST_F(ConclusionTest, WhatChangedWhileAnotherWasConcludedIsSeen) {
  for (const int id : {27, 28, 29, 30}) AddQuestion(id);
  for (const int id : {26, 27, 28, 29, 30}) AddReminder(id, "2004-07-20 09:00:00", "2004-07-22 09:00:00");
  suite_->before = [&](const std::string& step) {
    if (step != "send" || !suite_->mails.empty()) return;
    database_.Run("UPDATE REMINDER SET R_STATUS = 160 WHERE Q_ID = 27");                   // answered
    database_.Run("UPDATE REMINDER SET T2_DATE = '2004-08-20 09:00:00' WHERE Q_ID = 28");  // postponed
    database_.Run("DELETE FROM REMINDER WHERE Q_ID = 29");
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"27|2004-07-20 09:00:00|2004-07-22 09:00:00|160",
                                "28|2004-07-20 09:00:00|2004-08-20 09:00:00|150"}));
  EXPECT_EQ(suite_->mails.size(), 2U);
  for (const int id : {27, 28, 29}) EXPECT_EQ(Status(id), "150") << id;
  EXPECT_EQ(Status(30), "160");
  EXPECT_EQ(Log(), Texts{});
}

}  // namespace
}  // namespace orvane_test
