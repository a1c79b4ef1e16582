#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class QuestionRecordTest : public SolveTest {
 protected:
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(QuestionRecordTest, OpensTheQuestionAsWrittenAndClosesIt) {
  peer_.Begin(26, 8, "anna", 1033);
  peer_.OpenQuestion();
  EXPECT_TRUE(peer_.QuestionIsOpen());
  EXPECT_EQ(adodb_->recordsets.back(),
            (OpenedRecordset{.sql = "Select Q_PRODUCTCAT,PRODUCTID,Q_CATEGORY,Q_DESC,Q_STATUS,Q_SITE, "
                                    "Q_Product,Q_OBJECT,Q_OBJECTNR,Q_REPORTED,Q_PRIORITY,BP_NUMBER "
                                    " from QUESTIONS where Q_ID = 26",
                             .cursor = ADODB::CursorType::Static,
                             .lock = ADODB::LockType::ReadOnly,
                             .options = -1}));
  EXPECT_EQ(adodb_->openConnections, 1);
  peer_.CloseQuestion();
  EXPECT_FALSE(peer_.QuestionIsOpen());
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

TEST_F(QuestionRecordTest, AFailureToOpenIsReportedAndLeavesNothingOpen) {
  database_.Run("DROP TABLE QUESTIONS");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.OpenQuestion();
  EXPECT_FALSE(peer_.QuestionIsOpen());
  EXPECT_EQ(adodb_->openConnections, 0);
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.OpenQuestionRS caught: "), 0U) << Log()[0];
  peer_.CloseQuestion();  // nothing to close, nothing to say
  EXPECT_EQ(Log().size(), 1U);
}

TEST_F(QuestionRecordTest, AFailureToCloseIsReported) {
  peer_.Begin(26, 8, "anna", 1033);
  peer_.OpenQuestion();
  adodb_->before = [](std::string_view step) {
    if (step == "Recordset.Close") throw automation::Error(-2147467259, "ADODB.Recordset", "gone");
  };
  peer_.CloseQuestion();
  adodb_->before = nullptr;
  EXPECT_FALSE(peer_.QuestionIsOpen());
  EXPECT_EQ(Log(), (Texts{"METHOD: \r\nOrvaneUtilities.CloseRecordset caught: gone(-2147467259).",
                          "OrvaneProcess.SolveOnNoResponse.CloseQuestionRS caught: gone (-2147467259)."}));
}

TEST_F(QuestionRecordTest, AQuestionIdThatIsNoNumberIsRefused) {
  peer_.Begin(26, 8, "anna", 1033);
  peer_.SetCaseId("26 or 1=1");
  peer_.OpenQuestion();
  EXPECT_FALSE(peer_.QuestionIsOpen());
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.OpenQuestionRS caught: "), 0U) << Log()[0];
}

TEST_F(QuestionRecordTest, AttachmentsLieBelowTheDataFolder) {
  EXPECT_EQ(job_.GetAttachmentDirectoryName(), "\\suite\\home\\Data");
  SetParameter("DataFileRelativePath", "Data/Files/");
  EXPECT_EQ(job_.GetAttachmentDirectoryName(), "\\suite\\home\\Data\\Files");
}

TEST_F(QuestionRecordTest, WithoutADatabaseTheAttachmentFolderIsEmpty) {
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(job_.GetAttachmentDirectoryName(), "");
  EXPECT_EQ(Log().back(),
            "OrvaneProcess.SolveOnNoResponse.GetAttachmentDirectoryName caught: "
            "no value for Orvane/Orvane (1001).");
}

}  // namespace
}  // namespace orvane_test
