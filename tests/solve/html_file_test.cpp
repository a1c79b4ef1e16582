#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class HtmlFileTest : public SolveTest {
 protected:
  HtmlFileTest() {
    UseHtmlMails();
    peer_.Begin(26, 8, "anna", 1033);
    peer_.GetMailData();
    peer_.OpenQuestion();
    peer_.FormServiceRequest();
    peer_.CloseQuestion();
    environment_.log->clear();
  }
  static constexpr const char* kPage = "/suite/home/Data/HTML/26953.htm";
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(HtmlFileTest, WritesThePageUnderDayHourMinuteAndSecond) {
  suite_->render = [](const SheetUse& use) { return "<html>" + use.document + "</html>"; };
  peer_.CreateHTMLFile();
  EXPECT_EQ(peer_.PagePath(), "\\suite\\home\\Data\\HTML\\26953.htm");
  EXPECT_EQ(disk_->Bytes(kPage), "<html>" + peer_.Document() + "</html>");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(HtmlFileTest, HandsTheCaptionsOverInTheirOrder) {
  AddLabel("LBLQX3120", 1033, "Service request");
  AddLabel("LBLQX3867", 1033, "Warranty");
  peer_.CreateHTMLFile();
  ASSERT_EQ(suite_->sheets.size(), 1U);
  EXPECT_EQ(suite_->sheets[0].path, "\\suite\\home\\Orvane\\Mail\\Sheets\\answer.xsl");
  EXPECT_EQ(suite_->sheets[0].purpose, "answer");
  Texts names;
  for (const auto& [name, value] : suite_->sheets[0].parameters) names.push_back(name);
  EXPECT_EQ(names,
            (Texts{"LBLQX3120", "LBLQX3668", "LBLQX3659", "LBLQX3542", "LBLQX3093", "LBLQX3033", "LBLQX3669",
                   "LBLQX3659", "LBLQX3107", "LBLQX3090", "LBLQX3067", "LBLQX3670", "LBLQX3113", "LBLQX3194",
                   "LBLQX3119", "LBLQX3045", "LBLQX3690", "LBLQX3429", "LBLQX3149", "LBLQX3692", "LBLQX3693",
                   "LBLQX3118", "LBLQX3011", "LBLQX3084", "LBLQX3199", "LBLQX3197", "LBLQX3112", "LBLQX3730",
                   "LBLQX3196", "LBLQX3195", "LBLQX3201", "LBLQX3867"}));
  EXPECT_EQ(suite_->sheets[0].parameters.front().second, "Service request");
  EXPECT_EQ(suite_->sheets[0].parameters[1].second, "LBLQX3668");  // has no text
  EXPECT_EQ(suite_->sheets[0].parameters.back().second, "Warranty");
}

TEST_F(HtmlFileTest, TwoMailsOfOneSecondShareAFileAndTheLaterWins) {
  disk_->AddFile(kPage, "an earlier page that was longer than the new one");
  suite_->render = [](const SheetUse&) { return "later"; };
  peer_.CreateHTMLFile();
  EXPECT_EQ(disk_->Bytes(kPage), "later");
}

TEST_F(HtmlFileTest, ThePageIsWrittenInTheCodePage) {
  suite_->render = [](const SheetUse&) { return "a\u00e9\u65e5b"; };
  peer_.CreateHTMLFile();
  EXPECT_EQ(disk_->Bytes(kPage), "a??b");
}

TEST_F(HtmlFileTest, NamesHaveNoLeadingZeros) {
  environment_.now = automation::DateTime::FromParts({.year = 2004, .month = 7, .day = 1});
  peer_.CreateHTMLFile();
  EXPECT_EQ(peer_.PagePath(), "\\suite\\home\\Data\\HTML\\1000.htm");
  environment_.now = automation::DateTime::FromParts(
      {.year = 2004, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59});
  peer_.CreateHTMLFile();
  EXPECT_EQ(peer_.PagePath(), "\\suite\\home\\Data\\HTML\\31235959.htm");
}

TEST_F(HtmlFileTest, CaptionsAreInTheLanguageOfTheMail) {
  AddLabel("LBLQX3120", 1043, "Serviceaanvraag");
  peer_.Begin(26, 8, "anna", 1043);
  peer_.CreateHTMLFile();
  ASSERT_EQ(suite_->sheets.size(), 1U);
  EXPECT_EQ(suite_->sheets[0].parameters.front().second, "Serviceaanvraag");
}

TEST_F(HtmlFileTest, TheDataFolderIsNormalised) {
  SetParameter("DataFileRelativePath", "Data/");
  peer_.CreateHTMLFile();
  EXPECT_EQ(peer_.PagePath(), "\\suite\\home\\Data\\HTML\\26953.htm");
}

TEST_F(HtmlFileTest, WithoutItsFolderNoPageIsWrittenAndThePathIsSet) {
  SetParameter("DataFileRelativePath", "Nowhere");
  peer_.CreateHTMLFile();
  EXPECT_EQ(peer_.PagePath(), "\\suite\\home\\Nowhere\\HTML\\26953.htm");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: Path not found (76)."}));
}

TEST_F(HtmlFileTest, AMissingSheetIsReportedAndNoPageIsWritten) {
  suite_->before = [](const std::string& step) {
    if (step == "LoadOrvaneTemplate")
      throw automation::Error(53, "OrvCommon.LoadXSLs", "answer.xsl: no such file");
  };
  peer_.CreateHTMLFile();
  EXPECT_EQ(peer_.PagePath(), "\\suite\\home\\Data\\HTML\\26953.htm");
  EXPECT_FALSE(disk_->Exists(kPage));
  EXPECT_EQ(
      *environment_.log,
      (std::vector<LogEntry>{
          {"OrvCommon.LoadXSLs",
           "OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: answer.xsl: no such file (53).", 0}}));
}

TEST_F(HtmlFileTest, APageThatAnUnsentMailOfTheSameSecondLeftIsNotTakenForThisOne) {
  peer_.CreateHTMLFile();
  ASSERT_TRUE(disk_->Exists(kPage));
  suite_->before = [](const std::string& step) {
    if (step == "LoadOrvaneTemplate") throw automation::Error(53, "OrvCommon.LoadXSLs", "no such file");
  };
  peer_.CreateHTMLFile();
  EXPECT_FALSE(disk_->Exists(kPage));
}

TEST_F(HtmlFileTest, APageThatCannotBeDeletedIsNotSentToAnotherCustomer) {
  disk_->AddFile(kPage, "of another customer");
  disk_->SetHeld(kPage);
  // Whoever held it has let go of it by the time the mail is put together.
  environment_.logFactory = [this]() -> automation::ObjectPtr {
    disk_->SetHeld(kPage, false);
    throw automation::Error(automation::ErrorNumber::CannotCreateObject);
  };
  testing::internal::CaptureStderr();
  peer_.SendMail(8, 26);
  const std::string report = testing::internal::GetCapturedStderr();
  EXPECT_NE(report.find("OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: Permission denied (70)."),
            std::string::npos)
      << report;
  EXPECT_EQ(suite_->events, Texts{});
  EXPECT_EQ(disk_->Bytes(kPage), "of another customer");
}

TEST_F(HtmlFileTest, AMailWhosePagePathCannotBeToldDoesNotTakeThePageOfTheMailBefore) {
  suite_->before = [](const std::string& step) {
    if (step == "send")
      throw automation::Error(-2147220973, "CDO.Message", "The transport failed to connect");
  };
  peer_.SendMail(8, 26);
  ASSERT_TRUE(disk_->Exists(kPage));
  suite_->before = nullptr;
  suite_->events.clear();
  adodb_->beforeStatement = [](const std::string& sql) {
    if (sql.find("DataFileRelativePath") != std::string::npos) {
      throw automation::Error(70, "I", "Permission denied");
    }
  };
  AddQuestion(27);
  peer_.SendMail(8, 27);
  EXPECT_EQ(suite_->events, Texts{});
  EXPECT_EQ(peer_.PagePath(), "");
  EXPECT_EQ(Log().back(), "OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: Permission denied (70).");
}

TEST_F(HtmlFileTest, AReadOnlyPageOfTheSameSecondIsReplaced) {
  disk_->AddFile(kPage, "of another customer");
  disk_->SetReadOnly(kPage);
  suite_->render = [](const SheetUse&) { return "later"; };
  peer_.CreateHTMLFile();
  EXPECT_EQ(disk_->Bytes(kPage), "later");
}

TEST_F(HtmlFileTest, ASheetThatFailsIsReportedAndLeavesNoPage) {
  suite_->before = [](const std::string& step) {
    if (step == "transform") throw automation::Error(-2147467259, "MSXML2", "endless recursion");
  };
  peer_.CreateHTMLFile();
  EXPECT_FALSE(disk_->Exists(kPage));
  EXPECT_EQ(
      Log(),
      (Texts{"OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: endless recursion (-2147467259)."}));
}

TEST_F(HtmlFileTest, AFullDiskIsReported) {
  disk_->FailWrites(automation::ErrorNumber::DiskFull);
  peer_.CreateHTMLFile();
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: Disk full (61)."}));
}

TEST_F(HtmlFileTest, NoPageIsMadeFromTheDocumentOfTheMailBefore) {
  peer_.SendMail(10, 26);
  ASSERT_EQ(suite_->mails.size(), 1U);
  EXPECT_NE(suite_->mails[0].attachments.at(0).second.find("<CASEID>26</CASEID>"), std::string::npos);

  // The directory goes down behind the mail's fields: there is nothing to make a document from.
  AddQuestion(27);
  int users = 0;
  directory_->before = [&users](std::string_view member) {
    if (member == "LanguageID" && ++users > 2) throw automation::Error(5, "VnMembership.User", "gone");
  };
  peer_.SendMail(10, 27);
  EXPECT_EQ(suite_->mails.size(), 1U) << "no page, no mail";
  EXPECT_FALSE(disk_->Exists(kPage));
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: gone (5).",
                          "OrvaneProcess.SolveOnNoResponse.formCustomerDetailsNodes caught: gone (5).",
                          "OrvaneProcess.SolveOnNoResponse.CreateHTMLFile caught: "
                          "Object variable or With block variable not set (91)."}));
}

TEST(HtmlCharactersTest, LineBreaksBecomeTagsAndTabsFourBlanks) {
  EXPECT_EQ(SolveOnNoResponsePeer::HandleCharsInHTML("a\r\nb\tc\r\n\r\n"), "a<br>b    c<br><br>");
}

TEST(HtmlCharactersTest, ALoneCarriageReturnOrLineFeedStays) {
  EXPECT_EQ(SolveOnNoResponsePeer::HandleCharsInHTML("a\rb\nc\n\r\r\r\nd"), "a\rb\nc\n\r\r<br>d");
}

TEST(HtmlCharactersTest, EverythingElseStays) {
  EXPECT_EQ(SolveOnNoResponsePeer::HandleCharsInHTML("<b>&amp; é"), "<b>&amp; é");
  EXPECT_EQ(SolveOnNoResponsePeer::HandleCharsInHTML(""), "");
}

}  // namespace
}  // namespace orvane_test
