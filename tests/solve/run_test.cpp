// One run: its log lines, its parameter, the escalation, and what a failure does to it.
#include <algorithm>
#include <utility>

#include "platform/automation/safe_point.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class SolveRunTest : public SolveTest {
 protected:
  static constexpr const char* kLogFile = "/suite/OrvLog/OrvSolveOnNoResponseSvc_log_2004_7_26.txt";
  const std::string ruler_ = std::string(53, '*') + "\r\n";
};

TEST_F(SolveRunTest, WritesItsBannerAndItsStopLine) {
  job_.Run();
  EXPECT_EQ(disk_->Bytes(kLogFile),
            ruler_ + "Orvane NTService Log \r\n" + ruler_ +
                "Solve On No Response - NTService Started at : 7-26-2004 09:05:03\r\n" + ruler_ +
                " Solve On No Response -NTService Stopped at : 7-26-2004 09:05:03\r\n" + ruler_);
  EXPECT_EQ(suite_->events, (Texts{"escalation mails"}));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(SolveRunTest, AppendsToTheDaysFileAndTurnsToTheNextAtMidnight) {
  disk_->AddFile(kLogFile, "before\r\n");
  suite_->before = [this](const std::string& step) {
    if (step == "SendingEscalationMails") environment_.now = automation::AddHours(environment_.now, 15);
  };
  job_.Run();
  EXPECT_EQ(disk_->Bytes(kLogFile),
            "before\r\n" + ruler_ + "Orvane NTService Log \r\n" + ruler_ +
                "Solve On No Response - NTService Started at : 7-26-2004 09:05:03\r\n");
  EXPECT_EQ(disk_->Bytes("/suite/OrvLog/OrvSolveOnNoResponseSvc_log_2004_7_27.txt"),
            ruler_ + " Solve On No Response -NTService Stopped at : 7-27-2004 00:05:03\r\n" + ruler_);
}

TEST_F(SolveRunTest, TheStopLineDoesNotMakeTheFolder) {
  suite_->before = [](const std::string& step) {
    if (step != "SendingEscalationMails") return;
    automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject")
        ->DeleteFolder("/suite/OrvLog", true);
  };
  job_.Run();
  EXPECT_FALSE(disk_->Exists("/suite/OrvLog"));
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.Run caught: Path not found (76)."}));
}

TEST_F(SolveRunTest, WithoutItsBannerARunDoesNothing) {
  disk_->AddFile("/suite/OrvLog", "a file where the folder should be");
  AddReminder(26, "", "2004-07-20 09:00:00");
  job_.Run();
  EXPECT_TRUE(suite_->events.empty());
  EXPECT_EQ(Status(26), "150");
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].substr(0, 44), "OrvaneProcess.SolveOnNoResponse.Run caught: ");
}

TEST_F(SolveRunTest, ReportsToTheErpGenerationOfTheParameter) {
  SetParameter("BackOfficeApplication", "8");
  database_.Run("UPDATE QUESTIONS SET Q_CALL = 'C-1', D_DIRECT_TO = 'anna', A_TEXT = 'x' WHERE Q_ID = 26");
  AddReminder(26, "", "2004-07-20 09:00:00");
  job_.Run();
  EXPECT_EQ(suite_->events, (Texts{"OrvaneBackendB.Calls.UpdateCall", "question(26)",
                                   "mail to anna@example.org", "escalation mails"}));
}

TEST_F(SolveRunTest, WithoutTheParameterThereIsNoPassAndNoEscalation) {
  database_.Run("DELETE FROM PARAMETERS WHERE PARAM_NAME = 'BackOfficeApplication'");
  AddReminder(26, "", "2004-07-20 09:00:00");
  job_.Run();
  EXPECT_TRUE(suite_->events.empty());
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(Log(), (Texts{"Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "
                          "Type mismatch (13)."}));
  EXPECT_NE(disk_->Bytes(kLogFile).find("Stopped at"), std::string::npos);
}

class GenerationParameterTest : public SolveRunTest,
                                public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(GenerationParameterTest, ThatIsNo32BitNumberEndsTheRunBeforeThePass) {
  SetParameter("BackOfficeApplication", GetParam().first);
  AddReminder(26, "", "2004-07-20 09:00:00");
  job_.Run();
  EXPECT_TRUE(suite_->events.empty());
  EXPECT_EQ(Status(26), "150");
  EXPECT_EQ(Log(),
            (Texts{std::string("Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: ") +
                   GetParam().second}));
}

INSTANTIATE_TEST_SUITE_P(Values, GenerationParameterTest,
                         testing::Values(std::pair("none", "Type mismatch (13)."),
                                         std::pair("", "Type mismatch (13)."),
                                         std::pair("2147483648", "Overflow (6).")));

TEST_F(SolveRunTest, ADatabaseThatFailsInThePassIsReportedAndTheEscalationFollows) {
  AddReminder(26, "", "2004-07-20 09:00:00");
  adodb_->beforeStatement = [](const std::string& sql) {
    if (sql.find("REMINDER") != std::string::npos) throw automation::Error(70, "I", "Permission denied");
  };
  job_.Run();
  EXPECT_EQ(suite_->events, Texts{"escalation mails"});
  EXPECT_EQ(Log(),
            (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Permission denied (70)."}));
}

TEST_F(SolveRunTest, AFailureOfTheMailAsAWholeIsReportedAndTheRowIsDeleted) {
  AddReminder(26, "", "2004-07-20 09:00:00");
  bool failing = false;
  const auto clock = environment_.runtime.clock;
  environment_.runtime.clock = [&failing, &clock] {
    if (std::exchange(failing, false)) throw automation::Error(5, "Clock", "stopped");
    return clock();
  };
  suite_->before = [&failing](const std::string& step) { failing = step == "Concluded"; };
  job_.Run();
  EXPECT_EQ(suite_->events, (Texts{"question(26)", "escalation mails"}));
  EXPECT_EQ(Reminders(), Texts{});
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SendMail caught: stopped (5)."}));
}

TEST_F(SolveRunTest, APassWithoutARunHasNoRunLogAndNoEscalation) {
  AddReminder(26, "", "2004-07-20 09:00:00");
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(suite_->events, (Texts{"question(26)", "mail to anna@example.org"}));
  EXPECT_FALSE(disk_->Exists("/suite/OrvLog"));
}

TEST_F(SolveRunTest, TheEscalationFollowsAFailedPass) {
  AddReminder(25, "", "2004-07-20 09:00:00");  // no such question
  AddReminder(26, "", "2004-07-20 09:00:00");
  job_.Run();
  EXPECT_EQ(suite_->events, (Texts{"escalation mails"}));
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                          "Operation is not allowed when the object is open. (3705)."}));
}

TEST_F(SolveRunTest, AFailedEscalationIsReportedAndTheRunStops) {
  suite_->before = [](const std::string& step) {
    if (step == "SendingEscalationMails") throw automation::Error(70, "Escalation", "Permission denied");
  };
  job_.Run();
  EXPECT_EQ(
      *environment_.log,
      (std::vector<LogEntry>{{"Escalation",
                              "Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "
                              "Permission denied (70).",
                              0}}));
  EXPECT_NE(disk_->Bytes(kLogFile).find("Stopped at"), std::string::npos);
}

TEST_F(SolveRunTest, AnEscalationComponentWithoutTheMemberIsReported) {
  class WithAnotherEscalation : public FakeObjectContext {
   public:
    using FakeObjectContext::FakeObjectContext;
    automation::ObjectPtr CreateInstance(std::string_view progId) override {
      if (progId == "OrvaneProcessMTS.SolveOnNoResponse") return std::make_shared<automation::Object>();
      return FakeObjectContext::CreateInstance(progId);
    }
  };
  environment_.runtime.context = std::make_shared<WithAnotherEscalation>(environment_.runtime);
  job_.Run();
  EXPECT_EQ(suite_->events, Texts{});
  EXPECT_EQ(Log(), (Texts{"Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "
                          "Object doesn't support this property or method (438)."}));
}

TEST_F(SolveRunTest, ADatabaseThatCannotBeReachedIsReportedByTheReaderAndTheRun) {
  environment_.configuration->connectionStrings.clear();
  job_.Run();
  EXPECT_EQ(Log(), (Texts{"METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: "
                          "no value for Orvane/Orvane(1001).",
                          "METHOD: \r\nOrvaneProcess.Dispatch.GetParamValue caught: "
                          "no value for Orvane/Orvane(1001).",
                          "Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse caught: "
                          "no value for Orvane/Orvane (1001)."}));
}

TEST_F(SolveRunTest, ComponentsOfACallersContextAreCreatedInIt) {
  const auto context = environment_.EnterObjectContext();
  job_.Run();
  EXPECT_EQ(
      std::count(context->created.begin(), context->created.end(), "OrvaneProcessMTS.SolveOnNoResponse"), 1);
}

// A log that cannot be written must not keep customers waiting: every procedure ends as if it had reported.
class WithoutALogTest : public SolveRunTest {
 protected:
  WithoutALogTest() {
    // All but the log, which no longer exists.
    context_ = std::make_shared<WithoutLog>(environment_.runtime);
    environment_.runtime.context = context_;
  }

  class WithoutLog : public FakeObjectContext {
   public:
    using FakeObjectContext::FakeObjectContext;
    automation::ObjectPtr CreateInstance(std::string_view progId) override {
      if (progId == "Vantrel.Log") throw automation::Error(automation::ErrorNumber::CannotCreateObject);
      return FakeObjectContext::CreateInstance(progId);
    }
  };
  std::shared_ptr<WithoutLog> context_;
};

TEST_F(WithoutALogTest, AFailedErpCallStillEndsInAConclusion) {
  database_.Run("UPDATE QUESTIONS SET Q_CALL = 'C-1', D_DIRECT_TO = 'anna', A_TEXT = 'x' WHERE Q_ID = 26");
  AddReminder(26, "", "2004-07-20 09:00:00");
  testing::internal::CaptureStderr();
  job_.Run();
  const std::string standardError = testing::internal::GetCapturedStderr();
  EXPECT_EQ(Status(26), "160");
  EXPECT_EQ(Reminders(), Texts{});
  EXPECT_EQ(suite_->events, (Texts{"question(26)", "mail to anna@example.org", "escalation mails"}));
  EXPECT_NE(standardError.find("OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: "
                               "Object variable or With block variable not set (91)."),
            std::string::npos)
      << standardError;
  EXPECT_NE(disk_->Bytes(kLogFile).find("Stopped at"), std::string::npos);
}

TEST_F(SolveRunTest, ARunMayBeEndedAfterEachReminder) {
  AddQuestion(27);
  AddReminder(26, "", "2004-07-20 09:00:00");
  AddReminder(27, "2004-07-27 09:00:00", "");
  Texts seen;
  const automation::SafePoints listening(
      [&] { seen.push_back(Row("SELECT count(*) FROM REMINDER") + " waiting"); });
  job_.Run();
  EXPECT_EQ(seen, (Texts{"1 waiting", "1 waiting"}));
}

}  // namespace
}  // namespace orvane_test
