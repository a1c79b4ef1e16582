// Nothing stays open: each procedure is run with every one of its steps on the database failing in turn, and
// undisturbed, when it closes what it opened in the reverse order.
#include <functional>
#include <string>
#include <vector>

#include "tests/solve/solve_test.hpp"
#include "tests/support/database_environment.hpp"

namespace orvane_test {
namespace {

using Procedure = std::function<void(SolveOnNoResponsePeer&, OrvaneProcess::SolveOnNoResponseJob&)>;

struct Case {
  const char* name;
  Procedure run;
  int fewestSteps;
  Closing closing = Closing::Explicit;
};

class OpenObjectsTest : public SolveTest, public testing::WithParamInterface<Case> {
 protected:
  OpenObjectsTest() {
    AddLabel("LBLQX3388", 1033, "Question");
    SetParameter("ERP02_Activity", "CLOSE");
    SetParameter("ERP03_Problem", "P00");
    database_.Run("INSERT INTO SITE VALUES ('1', 'Amsterdam')");
    database_.Run("INSERT INTO PRODUCT VALUES ('1', 'A pump')");
    database_.Run("INSERT INTO OBJECT VALUES ('1', '1', 'The pump in the basement')");
    database_.Run("INSERT INTO PROBLEM VALUES ('1', 'Leaks'), ('5', 'Pumps')");
    database_.Run("INSERT INTO PRIORITY VALUES (1, 'Urgent')");
    database_.Run(
        "UPDATE QUESTIONS SET Q_TEXT = '\x01\x02\x03\x04 2004-07-20 10:00:00.000It leaks', A_TEXT = '', "
        "Q_SITE = '1', Q_OBJECT = '1', Q_OBJECTNR = '1', Q_PRIORITY = 1");
  }
  // Notes whatever is closed while something that was opened after it is still open.
  void WatchTheOrder() {
    adodb_->before = [this](std::string_view step) {
      const std::string object(step.substr(0, step.find('.')));
      if (step.ends_with(".Open")) {
        open_.push_back(object);
      } else if (step.ends_with(".Close")) {
        if (open_.empty() || open_.back() != object) outOfOrder_.push_back(object);
        if (!open_.empty()) open_.pop_back();
      }
    };
  }
  Texts open_;
  Texts outOfOrder_;
  SolveOnNoResponsePeer peer_{job_};
};

TEST_P(OpenObjectsTest, NoConnectionAndNoRecordSetStaysOpenAndNothingIsRaised) {
  const int runs = LetEveryStepFail(
      *adodb_,
      [this] {
        peer_.Begin(26, 8, "anna", 1033);
        EXPECT_NO_THROW(GetParam().run(peer_, job_));
      },
      GetParam().closing);
  EXPECT_GE(runs, GetParam().fewestSteps);
}

TEST_P(OpenObjectsTest, WhatWasOpenedLastIsClosedFirst) {
  if (GetParam().closing == Closing::ByRelease) return;
  peer_.Begin(26, 8, "anna", 1033);
  WatchTheOrder();
  GetParam().run(peer_, job_);
  EXPECT_EQ(open_, Texts{});
  EXPECT_EQ(outOfOrder_, Texts{});
}

TEST_F(OpenObjectsTest, APassClosesItsRecordSetsBeforeItsConnection) {
  UseHtmlMails();
  AddQuestion(27);
  AddReminder(26, "2004-07-20 09:00:00", "");
  AddReminder(27, "", "2004-07-20 09:00:00");
  WatchTheOrder();
  job_.Run();
  EXPECT_EQ(Transactions().size(), 1U);
  EXPECT_EQ(open_, Texts{});
  EXPECT_EQ(outOfOrder_, Texts{});
}

// It fails where the reminders and the question are open: a question without a service centre.
TEST_F(OpenObjectsTest, APassThatFailsClosesItsRecordSetsBeforeItsConnectionToo) {
  database_.Run("UPDATE QUESTIONS SET CENTER = NULL");
  AddReminder(26, "", "2004-07-20 09:00:00");
  WatchTheOrder();
  job_.SolveOnNoResponse(0);
  EXPECT_EQ(Log().size(), 1U);
  EXPECT_EQ(open_, Texts{});
  EXPECT_EQ(outOfOrder_, Texts{});
}

INSTANTIATE_TEST_SUITE_P(
    Procedures, OpenObjectsTest,
    testing::Values(
        Case{"DataLabel", [](auto& peer, auto&) { peer.GetDataLabelDesc("S8", 1033); }, 7},
        Case{"Site", [](auto& peer, auto&) { peer.GetSiteDescription("1"); }, 6},
        Case{"Product", [](auto& peer, auto&) { peer.GetProductDescription("1"); }, 7},
        Case{"Object", [](auto& peer, auto&) { peer.GetObjectDescription("1", "1"); }, 7},
        Case{"Priority", [](auto& peer, auto&) { peer.GetPriorityDescription(1); }, 7},
        Case{"Salutation", [](auto& peer, auto&) { peer.GetSalutation("anna"); }, 7},
        Case{"History",
             [](auto& peer, auto&) {
               std::int32_t count = 0;
               peer.SeparateData(26, count);
             },
             15},
        Case{"QuestionRecord",
             [](auto& peer, auto&) {
               peer.OpenQuestion();
               peer.CloseQuestion();
             },
             5},
        Case{"ErpStatus", [](auto& peer, auto&) { peer.ChangeERPStatus("C-1", 3, "anna", "anna", "x"); }, 12},
        Case{"Document",
             [](auto& peer, auto&) {
               peer.SetGeneration(3);
               peer.OpenQuestion();
               peer.FormServiceRequest();
               peer.FormCustomer();
               peer.FormInstalledBase();
               peer.CloseQuestion();
             },
             60},
        // The set belongs to the component that answered with it.
        Case{"ProductCategory", [](auto& peer, auto&) { peer.GetProductCategory(5); }, 4, Closing::ByRelease},
        Case{"AttachmentFolder", [](auto&, auto& job) { job.GetAttachmentDirectoryName(); }, 7},
        Case{"MailData", [](auto& peer, auto&) { peer.GetMailData(); }, 30}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(OpenObjectsTest, TheProblemLookupRaisesAndLeavesNothingOpen) {
  int raised = 0;
  const int runs = LetEveryStepFail(
      *adodb_,
      [this, &raised] {
        try {
          EXPECT_EQ(peer_.GetReportedDescription("1"), "Leaks");
        } catch (const automation::Error& error) {
          EXPECT_EQ(error.Number(), 70);
          ++raised;
        }
      },
      Closing::ByRelease);
  EXPECT_EQ(raised, runs - 1);
}

}  // namespace
}  // namespace orvane_test
