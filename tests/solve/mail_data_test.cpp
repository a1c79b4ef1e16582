#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class MailDataTest : public SolveTest {
 protected:
  MailDataTest() {
    AddLabel("LBLQX3463", 1033, "We conclude on ");
    AddLabel("LBLQX3478", 1033, "after ");
    AddLabel("LBLQX3470", 1033, "hours");
    AddLabel("LBLQX3996", 1033, "- good day");
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(MailDataTest, FillsTheFieldsOfAReminder) {
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_FALSE(peer_.IsHtmlMail());
  EXPECT_EQ(peer_.From(), "help@suite.example");
  EXPECT_EQ(peer_.Recipient(), "anna@example.org");
  EXPECT_EQ(peer_.Subject(), "text S8 (26) ");
  EXPECT_EQ(peer_.SheetPath(), "answer.xsl");
  EXPECT_EQ(peer_.Greeting(), "Anna Aalto - good day");
  EXPECT_EQ(peer_.Hyperlink(), "http://suite.example/s.asp?Q=1A0\r\n");
  // Midnight of today plus 72 hours, and the present time of day.
  EXPECT_EQ(peer_.Body(),
            "text B8\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n"
            "\r\n\r\nWe conclude on 7/29/2004[1,1033] 9:5:3\t  (after 72 hours)\r\n");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDataTest, AConclusionMailHasNoConclusionNotice) {
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Subject(), "text S10 (26) ");
  EXPECT_EQ(peer_.Body(), "text B10\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n");
}

TEST_F(MailDataTest, HoursThatAreNoWholeDaysCountFromMidnight) {
  SetParameter("Conclusion_Time", "30");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_NE(peer_.Body().find("We conclude on 7/27/2004 06:00:00[1,1033] 9:5:3\t  (after 30 hours)\r\n"),
            std::string::npos)
      << peer_.Body();
}

TEST_F(MailDataTest, TheDayIsTodaysInADayFirstLocaleToo) {
  environment_.locale->dayFirst = true;
  environment_.now = automation::DateTime::FromParts({.year = 2004, .month = 4, .day = 3, .hour = 14});
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_NE(peer_.Body().find("We conclude on 6/4/2004[1,1033] 14:0:0\t"), std::string::npos) << peer_.Body();
}

TEST_F(MailDataTest, TextsAreInTheUsersLanguage) {
  directory_->people["jan"] = {.languageId = 1043, .email = "jan@example.org"};
  AddDataLabel("S8", 1043, "Herinnering");
  AddDataLabel("B8", 1043, "Wij wachten");
  AddLabel("LBLQX3463", 1043, "Wij sluiten op ");
  AddLabel("LBLQX3478", 1043, "na ");
  AddLabel("LBLQX3470", 1043, "uur");
  peer_.Begin(26, 8, "jan", 1043);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Subject(), "Herinnering (26) ");
  EXPECT_EQ(peer_.Body(),
            "Wij wachten\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n"
            "\r\n\r\nWij sluiten op 7/29/2004[1,1043] 9:5:3\t  (na 72 uur)\r\n");
}

TEST_F(MailDataTest, AProspectIsWrittenToInTheDefaultLanguageAtTheAddressOfTheQuestion) {
  environment_.configuration->values[{"COMMONPARAMETERS", "DEFAULTLANGUAGE"}] = "1031";
  AddLabel("LBLQX3463", 1031, "Wir schließen am ");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.SetProspect("visitor@example.org");
  peer_.GetMailData();
  EXPECT_EQ(peer_.Recipient(), "visitor@example.org");
  EXPECT_EQ(peer_.Subject(), "text S8 (26) ");  // subject and body stay in the user's
  EXPECT_NE(peer_.Body().find("Wir schließen am 7/29/2004[1,1031] 9:5:3\t  (LBLQX347872 LBLQX3470)\r\n"),
            std::string::npos)
      << peer_.Body();
}

TEST_F(MailDataTest, AMissingLabelShowsItsId) {
  database_.Run("DELETE FROM I18NTEXT");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_NE(peer_.Body().find("LBLQX34637/29/2004[1,1033] 9:5:3\t  (LBLQX347872 LBLQX3470)\r\n"),
            std::string::npos)
      << peer_.Body();
}

TEST_F(MailDataTest, AMissingSubjectOrBodyTextIsEmpty) {
  database_.Run("DELETE FROM DATALABEL");
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Subject(), " (26) ");
  EXPECT_EQ(peer_.Body(), "\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n");
}

TEST_F(MailDataTest, AFailedLookUpLeavesNoRecipientAndNotTheOneBefore) {
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  directory_->people["bob"] = {.email = "bob@example.org"};
  directory_->before = [](std::string_view member) {
    if (member == "EMailAddress") throw automation::Error(5, "VnMembership.User", "gone");
  };
  peer_.Begin(27, 10, "bob", 1033);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Recipient(), "");
  EXPECT_EQ(peer_.Subject(), "text S10 (27) ");
}

TEST_F(MailDataTest, AFailedReadOfTheTemplateLeavesTheFieldsButNoRecipient) {
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  database_.Run("DROP TABLE EMAIL");
  directory_->people["bob"] = {.email = "bob@example.org"};
  peer_.Begin(27, 10, "bob", 1033);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Recipient(), "");
  EXPECT_EQ(peer_.Subject(), "text S10 (26) ");
  EXPECT_EQ(peer_.From(), "help@suite.example");
}

TEST_F(MailDataTest, AFailureBeforeTheDefaultLanguageLeavesAProspectsRecipient) {
  database_.Run("DROP TABLE EMAIL");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.SetProspect("visitor@example.org");
  peer_.GetMailData();
  EXPECT_EQ(peer_.Recipient(), "visitor@example.org");
}

TEST_F(MailDataTest, WithoutATemplateTheFieldsStayAndTheRestIsDone) {
  UseHtmlMails();
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  database_.Run("DELETE FROM EMAIL");
  directory_->people["bob"] = {.email = "bob@example.org", .firstName = "Bob", .lastName = "Bakker"};
  peer_.Begin(27, 10, "bob", 1033);
  peer_.GetMailData();
  EXPECT_TRUE(peer_.IsHtmlMail());
  EXPECT_EQ(peer_.From(), "help@suite.example");
  EXPECT_EQ(peer_.Subject(), "text S10 (26) ");
  EXPECT_EQ(peer_.Recipient(), "bob@example.org");
  EXPECT_EQ(peer_.Greeting(), "Bob Bakker - good day");
  EXPECT_EQ(peer_.Hyperlink(), "http://suite.example/s.asp?Q=1A0\r\ns.asp?Q=1B0\r\n");
  EXPECT_EQ(peer_.Body(),
            "text B10\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n"
            "\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\ns.asp?Q=1B0\r\n");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDataTest, WithoutAnyTemplateAMailIsPlainAndHasALink) {
  database_.Run("DELETE FROM EMAIL");
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  EXPECT_FALSE(peer_.IsHtmlMail());
  EXPECT_EQ(peer_.From(), "");
  EXPECT_EQ(peer_.Body(), "\r\n\r\ns.asp?Q=1A0\r\n");
}

TEST_F(MailDataTest, IdsAreWrittenInUpperCaseHexadecimal) {
  for (const auto& [id, link] : std::vector<std::pair<int, std::string>>{
           {0, "s.asp?Q=00\r\n"}, {255, "s.asp?Q=FF0\r\n"}, {2147483647, "s.asp?Q=7FFFFFFF0\r\n"}}) {
    peer_.Begin(id, 10, "anna", 1033);
    peer_.GetMailData();
    EXPECT_EQ(peer_.Hyperlink(), "http://suite.example/" + link);
  }
}

TEST_F(MailDataTest, AnUnknownUserLeavesTheFieldsAsFarAsTheyCame) {
  peer_.Begin(26, 8, "ghost", 1033);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Subject(), "text S8 (26) ");
  EXPECT_EQ(peer_.Body(), "text B8");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          "OrvaneProcess.SolveOnNoResponse.getMailData caught: "
                          "Object variable or With block variable not set (91)."}));
}

TEST_F(MailDataTest, WithoutAConclusionTimeTheBodyEndsWithTheLink) {
  database_.Run("DELETE FROM PARAMETERS WHERE PARAM_NAME = 'Conclusion_Time'");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_EQ(peer_.Body(), "text B8\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.getMailData caught: Type mismatch (13)."}));
}

TEST_F(MailDataTest, NullColumnsOfATemplateAreEmptyTexts) {
  database_.Run(
      "UPDATE EMAIL SET Mail_HTML_File = NULL, Mail_From = NULL, Mail_Subject = NULL, MAIL_BODY = NULL, "
      "Mail_Path_XSL = NULL, Mail_Hyperlink = NULL");
  peer_.Begin(26, 10, "anna", 1033);
  peer_.GetMailData();
  EXPECT_FALSE(peer_.IsHtmlMail());
  EXPECT_EQ(peer_.Subject(), " (26) ");
  EXPECT_EQ(peer_.Hyperlink(), "s.asp?Q=1A0\r\n");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDataTest, EveryMailButTheConclusionAnnouncesTheConclusion) {
  for (const int mailId : {0, 8, 9, 11, 100}) {
    database_.Run("DELETE FROM EMAIL");
    database_.Run("INSERT INTO EMAIL (Mail_Id, Mail_HTML_File, Mail_Hyperlink) VALUES (" +
                  std::to_string(mailId) + ", 0, 'http://suite.example/')");
    peer_.Begin(26, mailId, "anna", 1033);
    peer_.GetMailData();
    EXPECT_EQ(peer_.Body(),
              "\r\n\r\nhttp://suite.example/s.asp?Q=1A0\r\n"
              "\r\n\r\nWe conclude on 7/29/2004[1,1033] 9:5:3\t  (after 72 hours)\r\n")
        << mailId;
  }
}

TEST_F(MailDataTest, TheHoursAreShownAsTheyAreStored) {
  SetParameter("Conclusion_Time", " 072");
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_NE(peer_.Body().find("We conclude on 7/29/2004[1,1033] 9:5:3\t  (after  072 hours)\r\n"),
            std::string::npos)
      << peer_.Body();
}

TEST_F(MailDataTest, TheTimeOfDayHasNoLeadingZerosAndMidnightIsAllZero) {
  environment_.now = automation::DateTime::FromParts({.year = 2004, .month = 12, .day = 30});
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_NE(peer_.Body().find("We conclude on 1/2/2005[1,1033] 0:0:0\t"), std::string::npos) << peer_.Body();
}

TEST_F(MailDataTest, AMailThatIsMadeAtMidnightTakesDayAndTimeFromOneMoment) {
  environment_.now = automation::DateTime::FromParts(
      {.year = 2004, .month = 12, .day = 30, .hour = 23, .minute = 59, .second = 59});
  environment_.runtime.clock = [this] {
    const automation::DateTime now = environment_.now;
    environment_.now = automation::AddMinutes(now, 1);
    return now;
  };
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  EXPECT_NE(peer_.Body().find("We conclude on 1/2/2005[1,1033] 23:59:59\t"), std::string::npos)
      << peer_.Body();
}

TEST_F(MailDataTest, AProspectsCustomerIsGreetedAsAUserAllTheSame) {
  peer_.Begin(26, 8, "anna", 1033);
  peer_.SetProspect("visitor@example.org");
  peer_.GetMailData();
  EXPECT_EQ(peer_.Greeting(), "Anna Aalto - good day");
}

TEST_F(MailDataTest, ADefaultLanguageThatIsMissingEndsTheFieldsOfAProspectsMail) {
  environment_.configuration->values.erase({"COMMONPARAMETERS", "DEFAULTLANGUAGE"});
  peer_.Begin(26, 8, "anna", 1033);
  peer_.SetProspect("visitor@example.org");
  peer_.GetMailData();
  EXPECT_EQ(peer_.Body(), "text B8");
  EXPECT_EQ(peer_.Hyperlink(), "http://suite.example/");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.getMailData caught: "
                          "no value for COMMONPARAMETERS/DEFAULTLANGUAGE (1001)."}));
}

// What a template that cannot be read leaves: the fields of the mail before, which the transport refuses
// without a recipient.
TEST_F(MailDataTest, AfterAFailedReadOfTheTemplateTheMailHasTheFieldsBeforeButNoRecipient) {
  directory_->people["bob"] = {.email = "bob@example.org", .firstName = "Bob", .lastName = "Bakker"};
  AddQuestion(27, "bob");
  peer_.Begin(26, 10, "anna", 1033);
  peer_.SendMail(10, 26);
  adodb_->beforeStatement = [](const std::string& sql) {
    if (sql.find("EMAIL") != std::string::npos) throw automation::Error(70, "I", "Permission denied");
  };
  peer_.Begin(27, 10, "bob", 1033);
  peer_.SendMail(10, 27);
  ASSERT_EQ(suite_->mails.size(), 2U);
  EXPECT_EQ(suite_->mails[1].to, "");
  EXPECT_EQ(suite_->mails[1].subject, "text S10 (26) ");
  EXPECT_EQ(suite_->mails[1].textBody, suite_->mails[0].textBody);
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.getMailData caught: Permission denied (70)."}));
}

TEST_F(MailDataTest, TheMomentOfAMailIsNotedWhenItIsBegun) {
  peer_.Begin(26, 10, "anna", 1033);
  suite_->before = [this](const std::string&) {
    environment_.now = automation::AddHours(environment_.now, 1);
  };
  const automation::DateTime begun = environment_.now;
  peer_.SendMail(10, 26);
  EXPECT_EQ(peer_.MailTime(), begun);
}

TEST_F(MailDataTest, EveryConnectionIsClosed) {
  peer_.Begin(26, 8, "anna", 1033);
  peer_.GetMailData();
  ASSERT_FALSE(adodb_->recordsets.empty());
  EXPECT_EQ(adodb_->recordsets[0].sql, "Select * from EMAIL where Mail_Id=8");
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

}  // namespace
}  // namespace orvane_test
