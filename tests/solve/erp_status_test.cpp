#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

using Call = std::vector<std::pair<std::string, automation::Variant>>;

class ErpStatusTest : public SolveTest {
 protected:
  ErpStatusTest() {
    SetParameter("ERP02_Activity", "CLOSE");
    SetParameter("ERP03_Problem", "P00");
    SetParameter("ERP04_Solution", "NORESP");
    SetParameter("CallCreator", "ORVANE");
    directory_->people["lberg"] = {.engineerCode = "eng-7b"};
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(ErpStatusTest, HandsTheCallOverInItsOrder) {
  peer_.SetReportedBy("P10");
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "the answer");
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  EXPECT_EQ(suite_->erpCalls[0].first, "OrvaneBackendA.Calls");
  EXPECT_EQ(suite_->erpCalls[0].second, (Call{{"COMPONENT", 4711},
                                              {"CALLNUMBER", "C-1"},
                                              {"ENGINEER", "ENG-7B"},
                                              {"ACTIONDONEBY", "ORVANE"},
                                              {"OPTION", std::int16_t{4}},
                                              {"PROBLEM", "P10"},
                                              {"SOLUTION", "NORESP"},
                                              {"ACTIVITY", "CLOSE"},
                                              {"SOLUTIONTEXT", "the answer"}}));
  EXPECT_EQ(peer_.ErpMessage(), "updated");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(ErpStatusTest, TheOtherGenerationHasItsOwnComponent) {
  peer_.ChangeERPStatus("C-1", 8, "anna", "lberg", "");
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  EXPECT_EQ(suite_->erpCalls[0].first, "OrvaneBackendB.Calls");
}

TEST_F(ErpStatusTest, AnEmptyProblemTakesTheDefault) {
  peer_.SetReportedBy("");
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  EXPECT_EQ(suite_->erpCalls[0].second.at(5).second, automation::Variant("P00"));
}

TEST_F(ErpStatusTest, MissingParametersAreEmptyTexts) {
  database_.Run("DELETE FROM PARAMETERS WHERE PARAM_NAME LIKE 'ERP0%' OR PARAM_NAME = 'CallCreator'");
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  for (const int i : {3, 5, 6, 7}) {
    EXPECT_EQ(suite_->erpCalls[0].second.at(static_cast<std::size_t>(i)).second, automation::Variant(""))
        << i;
  }
}

TEST_F(ErpStatusTest, AProblemOfBlanksIsAProblem) {
  peer_.SetReportedBy("  ");
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  EXPECT_EQ(suite_->erpCalls[0].second.at(5).second, automation::Variant("  "));
}

TEST_F(ErpStatusTest, ParametersWithoutAValueAreEmptyTexts) {
  database_.Run("UPDATE PARAMETERS SET PARAM_VALUE = NULL WHERE PARAM_NAME LIKE 'ERP0%'");
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  ASSERT_EQ(suite_->erpCalls.size(), 1U);
  for (const std::size_t i : {5U, 6U, 7U}) {
    EXPECT_EQ(suite_->erpCalls[0].second.at(i).second, automation::Variant("")) << i;
  }
  EXPECT_EQ(Log(), Texts{});
}

class OtherGenerationTest : public ErpStatusTest, public testing::WithParamInterface<int> {};

TEST_P(OtherGenerationTest, HasNoComponentToCall) {
  peer_.ChangeERPStatus("C-1", GetParam(), "anna", "lberg", "");
  EXPECT_TRUE(suite_->erpCalls.empty());
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: "
                          "Object variable or With block variable not set (91)."}));
}

INSTANTIATE_TEST_SUITE_P(Generations, OtherGenerationTest, testing::Values(0, 1, 5, -1));

TEST_F(ErpStatusTest, TheCallIsPutTogetherBeforeItsComponentIsMissed) {
  peer_.ChangeERPStatus("C-1", 0, "anna", "lberg", "");
  Texts bound;
  for (const std::string& call : directory_->calls) {
    if (call.starts_with("BindAs(")) bound.push_back(call.substr(7, call.find('|') - 7));
  }
  EXPECT_EQ(bound, (Texts{"lberg", "anna"}));
}

TEST_F(ErpStatusTest, ACustomerWhoIsUnknownIsReported) {
  peer_.ChangeERPStatus("C-1", 3, "ghost", "lberg", "");
  EXPECT_TRUE(suite_->erpCalls.empty());
  EXPECT_EQ(Log().size(), 2U);
}

TEST_F(ErpStatusTest, WithoutADatabaseNothingIsCalled) {
  environment_.configuration->connectionStrings.clear();
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  EXPECT_TRUE(suite_->erpCalls.empty());
  EXPECT_EQ(Log().back(),
            "OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: no value for Orvane/Orvane (1001).");
}

TEST_F(ErpStatusTest, AnEngineerWhoIsUnknownIsReported) {
  peer_.ChangeERPStatus("C-1", 3, "anna", "ghost", "");
  EXPECT_TRUE(suite_->erpCalls.empty());
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          "OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: "
                          "Object variable or With block variable not set (91)."}));
}

TEST_F(ErpStatusTest, AnErpThatRefusesIsReported) {
  suite_->before = [](const std::string& step) {
    if (step == "UpdateCall") throw automation::Error(1234, "OrvaneBackendA", "call is closed");
  };
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  EXPECT_EQ(*environment_.log,
            (std::vector<LogEntry>{
                {"OrvaneBackendA",
                 "OrvaneProcess.SolveOnNoResponse.ChangeERPStatus caught: call is closed (1234).", 0}}));
  EXPECT_EQ(adodb_->openConnections, 0);
}

TEST_F(ErpStatusTest, ReadsItsParametersInOneStatement) {
  peer_.ChangeERPStatus("C-1", 3, "anna", "lberg", "");
  ASSERT_FALSE(adodb_->recordsets.empty());
  EXPECT_EQ(adodb_->recordsets[0].sql,
            "Select PARAM_NAME,PARAM_VALUE from PARAMETERS Where PARAM_NAME IN "
            "('ERP02_Activity','ERP03_Problem','ERP04_Solution','CallCreator') order By PARAM_NAME");
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

}  // namespace
}  // namespace orvane_test
