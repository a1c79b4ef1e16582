// Waiting for reminder -> waiting for conclusion.
#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class ReminderTest : public SolveTest {};

TEST_F(ReminderTest, MailsTheCustomerAndSchedulesTheConclusionFromTheMomentOfTheReminder) {
  AddReminder(26, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);

  // 72 - 24 hours after 26 July 2004, 09:05:03; the row stays.
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150"}));
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].to, "anna@example.org");
  EXPECT_EQ(suite_->mails[0].subject, "text S8 (26) ");
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(Transactions(), Texts{});
  EXPECT_EQ(suite_->events, (Texts{"mail to anna@example.org"}));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ReminderTest, ADateIsDueOnceItLiesOneMinuteBack) {
  AddQuestion(27);
  AddQuestion(28);
  AddReminder(26, "2004-07-26 09:04:03", "");
  AddReminder(27, "2004-07-26 09:04:04", "");
  AddReminder(28, "2004-07-26 09:05:03", "");

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-26 09:04:03|2004-07-28 09:05:03|150",
                                "27|2004-07-26 09:04:04|NULL|150", "28|2004-07-26 09:05:03|NULL|150"}));
  EXPECT_EQ(suite_->mails.size(), 1U);
}

TEST_F(ReminderTest, NowIsTakenOnceForTheWholePass) {
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "2004-07-26 09:04:04", "");
  // Sending takes its time: what was not due when the pass began is not due in it.
  suite_->before = [this](const std::string& step) {
    if (step == "send") environment_.now = automation::AddMinutes(environment_.now, 10);
  };

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(),
            (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150", "27|2004-07-26 09:04:04|NULL|150"}));
}

TEST_F(ReminderTest, EveryConclusionOfAPassIsScheduledFromItsOneMoment) {
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "2004-07-20 09:00:00", "");
  suite_->before = [this](const std::string& step) {
    if (step == "send") environment_.now = automation::AddMinutes(environment_.now, 10);
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150",
                                "27|2004-07-20 09:00:00|2004-07-28 09:05:03|150"}));
}

TEST_F(ReminderTest, TheMomentOfThePassComesAfterItsTimesWereRead) {
  AddReminder(26, "2004-07-26 09:05:03", "");
  adodb_->beforeStatement = [this](const std::string& sql) {
    if (sql.find("Reminder_Time") != std::string::npos) {
      environment_.now = automation::AddMinutes(environment_.now, 1);
    }
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-26 09:05:03|2004-07-28 09:06:03|150"}));
}

TEST_F(ReminderTest, TheMomentOfThePassHasNoFractionOfASecond) {
  automation::DateTimeParts parts = environment_.now.Parts();
  parts.microsecond = 987654;
  environment_.now = automation::DateTime::FromParts(parts);
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "", "2004-07-20 09:00:00");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150"}));
  EXPECT_EQ(Transactions(), (Texts{"27|LBLQX3479|160|7|2004-07-26 09:05:03|LBLQX3480||0"}));
}

TEST_F(ReminderTest, APassAsksAnewWhereTheInstallationLies) {
  UseHtmlMails();
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  environment_.configuration->installDir = "/other/home";
  disk_->AddFolder("/other/home/Data/HTML");
  AddReminder(27, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  ASSERT_EQ(suite_->mails.size(), 2U);
  EXPECT_EQ(suite_->mails[0].attachments.at(0).first, "\\suite\\home\\Data\\HTML\\26953.htm");
  EXPECT_EQ(suite_->mails[1].attachments.at(0).first, "\\other\\home\\Data\\HTML\\26953.htm");
  EXPECT_EQ(suite_->sheets.at(1).path, "\\other\\home\\Orvane\\Mail\\Sheets\\answer.xsl");
}

TEST_F(ReminderTest, ANullReminderDateIsNeverDue) {
  AddReminder(26, "", "");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"26|NULL|NULL|150"}));
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ReminderTest, OnlyRowsOfStatus150AreTaken) {
  database_.Run("INSERT INTO REMINDER (Q_ID, T1_DATE, R_STATUS) VALUES (26, '2004-07-20 09:00:00', 151)");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|NULL|151"}));
  EXPECT_TRUE(suite_->mails.empty());
}

TEST_F(ReminderTest, EqualTimesScheduleTheConclusionAtTheReminderAndTheNextPassConcludes) {
  SetParameter("Reminder_Time", "72");
  AddReminder(26, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-26 09:05:03|150"}));
  EXPECT_EQ(Status(26), "150");

  environment_.now = automation::AddMinutes(environment_.now, 1);
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), Texts{});
  EXPECT_EQ(Status(26), "160");
}

TEST_F(ReminderTest, ARowIsOnlyRemindedEvenWhenItsNewConclusionDateIsDueAlready) {
  SetParameter("Conclusion_Time", "24");
  SetParameter("Reminder_Time", "72");
  AddReminder(26, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-24 09:05:03|150"}));
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(suite_->mails.size(), 1U);
}

TEST_F(ReminderTest, MissingTimesCountAsZeroHours) {
  database_.Run("DELETE FROM PARAMETERS WHERE PARAM_NAME IN ('Conclusion_Time', 'Reminder_Time')");
  database_.Run("UPDATE EMAIL SET Mail_Id = 9 WHERE Mail_Id = 8");
  AddReminder(26, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-26 09:05:03|150"}));
}

TEST_F(ReminderTest, AnOverflowOfTheTwoTimesEndsThePassBeforeTheRowIsWritten) {
  SetParameter("Conclusion_Time", "2147483647");
  SetParameter("Reminder_Time", "-1");
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|NULL|150", "27|2004-07-20 09:00:00|NULL|150"}));
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Overflow (6)."}));
}

TEST_F(ReminderTest, TheLowestDifferenceDoesNotOverflow) {
  SetParameter("Conclusion_Time", "-2147483648");
  SetParameter("Reminder_Time", "0");
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  // 245,000 years back is no date: another error, of another number.
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Invalid procedure call or argument (5)."}));
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|NULL|150"}));
}

TEST_F(ReminderTest, ATimeThatIsNoNumberEndsThePass) {
  SetParameter("Conclusion_Time", "three days");
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Type mismatch (13)."}));
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|NULL|150"}));
}

TEST_F(ReminderTest, AProspectIsMailedAtItsOwnAddress) {
  database_.Run("UPDATE QUESTIONS SET PROSPECT = 1, EMAILID = 'visitor@example.org' WHERE Q_ID = 26");
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].to, "visitor@example.org");
}

TEST_F(ReminderTest, AProspectWithoutAnAddressGetsAnEmptyRecipientAndTheRowGoesOn) {
  database_.Run("UPDATE QUESTIONS SET PROSPECT = 1, EMAILID = NULL WHERE Q_ID = 26");
  AddReminder(26, "2004-07-20 09:00:00", "");
  suite_->before = [](const std::string& step) {
    if (step == "send") throw automation::Error(-2147220960, "CDO.Message", "no recipient");
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(suite_->events, (Texts{"mail to "}));
  EXPECT_EQ(Reminders(), (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150"}));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ReminderTest, ProspectNullCountsAsFalse) {
  database_.Run("UPDATE QUESTIONS SET PROSPECT = NULL, EMAILID = 'visitor@example.org' WHERE Q_ID = 26");
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].to, "anna@example.org");
}

TEST_F(ReminderTest, TheProspectOfOneRowIsForgottenAtTheNext) {
  AddQuestion(27);
  database_.Run("UPDATE QUESTIONS SET PROSPECT = 1, EMAILID = 'visitor@example.org' WHERE Q_ID = 26");
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(suite_->events, (Texts{"mail to visitor@example.org", "mail to anna@example.org"}));
}

TEST_F(ReminderTest, AnUnknownUserEndsThePassBeforeAnythingIsWritten) {
  AddQuestion(25, "ghost");
  AddReminder(25, "2004-07-20 09:00:00", "");
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(), (Texts{"25|2004-07-20 09:00:00|NULL|150", "26|2004-07-20 09:00:00|NULL|150"}));
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Object variable or With block variable not set (91)."}));
}

TEST_F(ReminderTest, AMissingQuestionIsLeftAloneAndTheNextDueRowEndsThePass) {
  AddQuestion(27);
  AddQuestion(28);
  AddReminder(24, "2004-07-20 09:00:00", "");  // no such question
  AddReminder(25, "2004-07-26 09:05:03", "");  // not due: not asked for
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "2004-07-20 09:00:00", "");

  job_.SolveOnNoResponse(0);

  EXPECT_EQ(Reminders(), (Texts{"24|2004-07-20 09:00:00|NULL|150", "25|2004-07-26 09:05:03|NULL|150",
                                "26|2004-07-20 09:00:00|NULL|150", "27|2004-07-20 09:00:00|NULL|150"}));
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Operation is not allowed when the object is open. (3705)."}));
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

TEST_F(ReminderTest, AMissingQuestionAtTheEndOfTheWalkEndsNothing) {
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "2004-07-20 09:00:00", "");  // no such question
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(),
            (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150", "27|2004-07-20 09:00:00|NULL|150"}));
  EXPECT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ReminderTest, ASetOfRowsIsOpenedAsWrittenAndClosed) {
  AddReminder(26, "2004-07-20 09:00:00", "");
  job_.SolveOnNoResponse(0);
  ASSERT_GE(adodb_->recordsets.size(), 3U);
  EXPECT_EQ(adodb_->recordsets[0],
            (OpenedRecordset{.sql = "Select PARAM_NAME, PARAM_VALUE from PARAMETERS where "
                                    "PARAM_NAME = 'Conclusion_Time' or PARAM_NAME = 'Reminder_Time'",
                             .cursor = ADODB::CursorType::ForwardOnly,
                             .lock = ADODB::LockType::ReadOnly,
                             .options = -1}));
  EXPECT_EQ(adodb_->recordsets[1], (OpenedRecordset{.sql = "SELECT * FROM REMINDER WHERE R_STATUS= 150",
                                                    .cursor = ADODB::CursorType::Dynamic,
                                                    .lock = ADODB::LockType::Optimistic,
                                                    .options = -1}));
  EXPECT_EQ(adodb_->recordsets[2],
            (OpenedRecordset{.sql = "Select Q_ORIGINATOR,PROSPECT,EMAILID from QUESTIONS where Q_ID = 26",
                             .cursor = ADODB::CursorType::Static,
                             .lock = ADODB::LockType::ReadOnly,
                             .options = -1}));
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

// What happens to other reminders while one is mailed counts for them.
TEST_F(ReminderTest, WhatChangedWhileAnotherWasMailedIsSeen) {
  for (const int id : {27, 28, 29, 30}) AddQuestion(id);
  for (const int id : {26, 27, 28, 29, 30}) AddReminder(id, "2004-07-20 09:00:00", "");
  suite_->before = [&](const std::string& step) {
    if (step != "send" || !suite_->mails.empty()) return;
    database_.Run("UPDATE REMINDER SET R_STATUS = 160 WHERE Q_ID = 27");                   // answered
    database_.Run("UPDATE REMINDER SET T1_DATE = '2004-08-20 09:00:00' WHERE Q_ID = 28");  // postponed
    database_.Run("DELETE FROM REMINDER WHERE Q_ID = 29");
  };
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Reminders(),
            (Texts{"26|2004-07-20 09:00:00|2004-07-28 09:05:03|150", "27|2004-07-20 09:00:00|NULL|160",
                   "28|2004-08-20 09:00:00|NULL|150", "30|2004-07-20 09:00:00|2004-07-28 09:05:03|150"}));
  EXPECT_EQ(suite_->mails.size(), 2U);
  EXPECT_EQ(Log(), Texts{});
}

}  // namespace
}  // namespace orvane_test
