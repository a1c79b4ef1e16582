#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class QuestionFlowTest : public SolveTest {
 protected:
  QuestionFlowTest() {
    AddLabel("LBLQX3388", 1033, "Question");
    AddLabel("LBLQX3429", 1033, "Answer");
    peer_.Begin(26, 8, "anna", 1033);
  }
  std::string Flow() {
    peer_.OpenQuestion();
    peer_.FormServiceRequest();
    peer_.CloseQuestion();
    const std::string xml = peer_.Document();
    const std::size_t begin = xml.find("<QAHEADER");
    std::string flow = begin == std::string::npos ? "none" : xml.substr(begin, xml.find("</MAIL>") - begin);
    std::erase_if(flow, [](char c) { return c == '\r' || c == '\n'; });
    return flow;
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(QuestionFlowTest, EntriesComeByDateWithTheirMarkupAsText) {
  database_.Run(
      "UPDATE QUESTIONS SET "
      "Q_TEXT = char(1,2,3,4) || ' 2004-07-20 10:00:00.000It leaks.' || char(13,10) || char(9) || 'Badly "
      "<b>.', "
      "A_TEXT = char(4,3,2,1) || ' 2004-07-21 11:30:00.000Where?' WHERE Q_ID = 26");
  EXPECT_EQ(
      Flow(),
      "<QAHEADER>"
      "<QALINE><QADATE>&lt;b&gt;&lt;font color=red&gt;Question : 7/20/2004 10:00:00[3,1033]"
      "&lt;/font&gt;&lt;/b&gt;</QADATE><QATEXT>It leaks.&lt;br&gt;    Badly &lt;b&gt;.</QATEXT></QALINE>"
      "<QALINE><QADATE>&lt;b&gt;&lt;font color=green&gt;Answer : 7/21/2004 11:30:00[3,1033]"
      "&lt;/font&gt;&lt;/b&gt;</QADATE><QATEXT>Where?</QATEXT></QALINE>"
      "</QAHEADER><ATTACHMENTS/>");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(QuestionFlowTest, AnEmptyHistoryIsAnEmptyHeader) {
  EXPECT_EQ(Flow(), "<QAHEADER/><ATTACHMENTS/>");
}

TEST_F(QuestionFlowTest, FilesOfTheQuestionComeBeforeFilesOfTheAnswerByName) {
  disk_->AddFile("/suite/home/Data/SRATTACHMENTS/26A/b.txt");
  disk_->AddFile("/suite/home/Data/SRATTACHMENTS/26A/a & b.txt");
  disk_->AddFile("/suite/home/Data/SRATTACHMENTS/26Q/photo.jpg");
  disk_->AddFolder("/suite/home/Data/SRATTACHMENTS/26Q/folder");
  disk_->AddFile("/suite/home/Data/SRATTACHMENTS/27Q/other.jpg");
  EXPECT_EQ(Flow(),
            "<QAHEADER/><ATTACHMENTS><QATT>photo.jpg</QATT><AATT>a &amp; b.txt</AATT><AATT>b.txt</AATT>"
            "</ATTACHMENTS>");
}

TEST_F(QuestionFlowTest, AFolderThatCannotBeReadIsReportedUnderItsOwnSource) {
  disk_->AddFile("/suite/home/Data/SRATTACHMENTS/26Q/photo.jpg");
  disk_->SetBarred("/suite/home/Data/SRATTACHMENTS/26Q");
  EXPECT_EQ(Flow(), "<QAHEADER/><ATTACHMENTS/>");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.DisplayAttachmentsofCase_ID caught: "
                          "Permission denied (70)."}));
}

TEST_F(QuestionFlowTest, CharactersThatXmlCannotHoldEndTheFlow) {
  database_.Run(
      "UPDATE QUESTIONS SET Q_TEXT = char(1,2,3,4) || ' 2004-07-20 10:00:00.000a' || char(5) WHERE Q_ID = "
      "26");
  const std::string flow = Flow();
  EXPECT_EQ(flow.find("<QATEXT"), std::string::npos) << flow;
  EXPECT_EQ(flow.find("<ATTACHMENTS"), std::string::npos) << flow;
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.formQAFlow caught: "), 0U) << Log()[0];
}

TEST_F(QuestionFlowTest, ALongHistoryKeepsEveryEntryInItsPlace) {
  std::string posts;
  for (int i = 0; i < 300; ++i) {
    posts += "\x01\x02\x03\x04 2004-07-20 10:00:00.000entry " + std::to_string(i) + ";";
  }
  database_.Run("UPDATE QUESTIONS SET Q_TEXT = '" + posts + "' WHERE Q_ID = 26");
  const std::string flow = Flow();
  std::size_t at = 0;
  for (int i = 0; i < 300; ++i) {
    at = flow.find("<QATEXT>entry " + std::to_string(i) + ";</QATEXT></QALINE>", at);
    ASSERT_NE(at, std::string::npos) << i;
  }
}

}  // namespace
}  // namespace orvane_test
