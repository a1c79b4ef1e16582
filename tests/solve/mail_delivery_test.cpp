#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class MailDeliveryTest : public SolveTest {
 protected:
  void Prepare() {
    AddLabel("LBLQX3996", 1033, "- good day");
    peer_.Begin(26, 10, "anna", 1033);
    peer_.GetMailData();
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(MailDeliveryTest, SendsAPlainMailWithoutAttachment) {
  Prepare();
  peer_.SendActualMail();
  ASSERT_EQ(suite_->mails.size(), 1U);
  const SentMail& mail = suite_->mails[0];
  EXPECT_EQ(mail.from, "help@suite.example");
  EXPECT_EQ(mail.to, "anna@example.org");
  EXPECT_EQ(mail.subject, "text S10 (26) ");
  EXPECT_TRUE(mail.mimeFormatted);
  EXPECT_EQ(mail.textBody,
            "Anna Aalto - good day,\r\n\r\ntext B10\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n");
  EXPECT_TRUE(mail.attachments.empty());
}

TEST_F(MailDeliveryTest, SendsThePageAlongAndDeletesIt) {
  UseHtmlMails();
  Prepare();
  peer_.OpenQuestion();
  peer_.FormServiceRequest();
  peer_.CloseQuestion();
  suite_->render = [](const SheetUse&) { return "<html>26</html>"; };
  peer_.CreateHTMLFile();
  disk_->SetReadOnly(peer_.PagePath());
  peer_.SendActualMail();
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].attachments, (std::vector<std::pair<std::string, std::string>>{
                                              {"\\suite\\home\\Data\\HTML\\26953.htm", "<html>26</html>"}}));
  EXPECT_FALSE(disk_->Exists(peer_.PagePath()));
}

TEST_F(MailDeliveryTest, TheMailIsPutTogetherInItsOrder) {
  UseHtmlMails();
  Prepare();
  peer_.SendMail(10, 26);
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].members,
            (Texts{"From", "To", "Subject", "MimeFormatted", "AddAttachment", "TextBody", "send"}));
}

TEST_F(MailDeliveryTest, ARecipientIsTakenAsItIs) {
  directory_->people["anna"].email = "Anna <anna@example.org>; bob@example.org";
  Prepare();
  peer_.SendActualMail();
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].to, "Anna <anna@example.org>; bob@example.org");
}

TEST_F(MailDeliveryTest, AFailedSendLeavesThePageAndSaysNothing) {
  UseHtmlMails();
  Prepare();
  suite_->render = [](const SheetUse&) { return "<html>26</html>"; };
  suite_->before = [](const std::string& step) {
    if (step == "send")
      throw automation::Error(-2147220973, "CDO.Message", "The transport failed to connect");
  };
  peer_.SendMail(10, 26);
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(disk_->Bytes("/suite/home/Data/HTML/26953.htm"), "<html>26</html>");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDeliveryTest, APlainMailLeavesThePageOfAnUnsentOneAlone) {
  database_.Run("UPDATE EMAIL SET Mail_HTML_File = 1 WHERE Mail_Id = 8");
  Prepare();
  suite_->before = [](const std::string& step) {
    if (step == "send")
      throw automation::Error(-2147220973, "CDO.Message", "The transport failed to connect");
  };
  peer_.SendMail(8, 26);
  suite_->before = nullptr;
  peer_.SendMail(10, 26);
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_EQ(suite_->mails[0].members, (Texts{"From", "To", "Subject", "MimeFormatted", "TextBody", "send"}));
  EXPECT_TRUE(disk_->Exists("/suite/home/Data/HTML/26953.htm"));
}

TEST_F(MailDeliveryTest, APageThatWasNeverWrittenKeepsTheMailBackInSilence) {
  UseHtmlMails();
  Prepare();
  peer_.SendActualMail();
  EXPECT_TRUE(suite_->events.empty());
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDeliveryTest, AMailComponentThatIsMissingIsNotReported) {
  Prepare();
  automation::Runtime bare;  // a machine on which nothing is registered
  {
    const automation::RuntimeScope scope(bare);
    peer_.SendActualMail();
  }
  EXPECT_TRUE(suite_->mails.empty());
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDeliveryTest, APageThatCannotBeDeletedIsNotReported) {
  UseHtmlMails();
  Prepare();
  peer_.OpenQuestion();
  peer_.FormServiceRequest();
  peer_.CloseQuestion();
  peer_.CreateHTMLFile();
  suite_->before = [this](const std::string& step) {
    if (step == "send") disk_->SetHeld(peer_.PagePath());
  };
  peer_.SendActualMail();
  EXPECT_EQ(suite_->mails.size(), 1U);
  EXPECT_TRUE(disk_->Exists(peer_.PagePath()));
  EXPECT_EQ(Log(), Texts{});
}

}  // namespace
}  // namespace orvane_test
