#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class MailDocumentTest : public SolveTest {
 protected:
  MailDocumentTest() {
    AddLabel("LBLQX3658", 1033, "Answered");
    peer_.Begin(26, 8, "anna", 1033);
  }
  // The document without its declaration and line breaks.
  std::string Document() const {
    std::string xml = peer_.Document();
    if (xml.starts_with("<?xml")) xml.erase(0, xml.find("?>") + 2);
    std::erase_if(xml, [](char c) { return c == '\r' || c == '\n'; });
    return xml;
  }
  void Build() {
    peer_.OpenQuestion();
    peer_.FormServiceRequest();
    peer_.FormCustomer();
    peer_.CloseQuestion();
  }
  void BuildInstalledBase(int generation) {
    peer_.SetGeneration(generation);
    peer_.OpenQuestion();
    peer_.FormServiceRequest();
    environment_.log->clear();
    peer_.FormInstalledBase();
    peer_.CloseQuestion();
  }
  std::string InstalledBase() const {
    const std::string xml = Document();
    const std::size_t begin = xml.find("<INSTALLEDBASE");
    return begin == std::string::npos ? "none" : xml.substr(begin, xml.find("</MAIL>") - begin);
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(MailDocumentTest, ARegisteredCustomersDocument) {
  database_.Run("UPDATE QUESTIONS SET Q_PRODUCTCAT = 10, PRODUCTID = 101, Q_CATEGORY = 2 WHERE Q_ID = 26");
  database_.Run("INSERT INTO PROBLEM (PROBLEM, DESCRIPTION) VALUES ('10', 'Pumps')");
  suite_->products[101] = "Pump 30";
  suite_->faqCategories[2] = "Operation & maintenance";
  Build();
  EXPECT_EQ(Document(),
            "<MAIL><CASEID>26</CASEID><PRODUCTCATEGORY>Pumps</PRODUCTCATEGORY><ECPRODUCT>Pump 30</ECPRODUCT>"
            "<FAQCATEGORIES>Operation &amp; maintenance</FAQCATEGORIES><DESCRIPTION>It leaks</DESCRIPTION>"
            "<QSTATUS>Answered</QSTATUS><QSTATUS>150</QSTATUS><QAHEADER/><ATTACHMENTS/>"
            "<CUSTOMER><REGISTERED/><EMAIL>anna@example.org</EMAIL><FIRSTNAME>Anna</FIRSTNAME>"
            "<LASTNAME>Aalto</LASTNAME><COMPANY>Harbour Works</COMPANY><PHONE>+31 20 1234567</PHONE>"
            "<MODEM>M1</MODEM><COUNTRY>NL</COUNTRY><POSITION>Operator</POSITION><FAX>+31 20 7654321</FAX>"
            "</CUSTOMER></MAIL>");
  EXPECT_EQ(peer_.Recipient(), "anna@example.org");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(MailDocumentTest, AProspectsCustomerHasContactInformationOnly) {
  peer_.SetProspect("visitor@example.org");
  Build();
  const std::string xml = Document();
  EXPECT_NE(xml.find("<CUSTOMER><PROSPECT/><EMAIL>visitor@example.org</EMAIL>"
                     "<CONTACTINFO>call visitor@example.org</CONTACTINFO></CUSTOMER></MAIL>"),
            std::string::npos)
      << xml;
}

TEST_F(MailDocumentTest, BothStatusElementsAreWrittenWithoutALabelText) {
  database_.Run("DELETE FROM I18NTEXT");
  Build();
  EXPECT_NE(Document().find("<QSTATUS>LBLQX3658</QSTATUS><QSTATUS>150</QSTATUS>"), std::string::npos);
}

TEST_F(MailDocumentTest, NullValuesAreEmptyElements) {
  database_.Run("UPDATE QUESTIONS SET Q_DESC = NULL, Q_STATUS = NULL WHERE Q_ID = 26");
  Build();
  EXPECT_NE(Document().find("<DESCRIPTION/><QSTATUS>Answered</QSTATUS><QSTATUS/><QAHEADER/>"),
            std::string::npos)
      << Document();
}

TEST_F(MailDocumentTest, TheDocumentsLanguageIsTheOriginators) {
  directory_->people["jan"] = {.languageId = 1043, .email = "jan@example.org"};
  AddLabel("LBLQX3658", 1043, "Beantwoord");
  peer_.Begin(26, 8, "jan", 1033);
  Build();
  EXPECT_NE(Document().find("<QSTATUS>Beantwoord</QSTATUS>"), std::string::npos);
  EXPECT_EQ(peer_.LanguageId(), 1043);  // the captions of the page follow
}

TEST_F(MailDocumentTest, CharactersThatXmlCannotHoldEndTheBuilderAndTheRestGoesOn) {
  database_.Run("UPDATE QUESTIONS SET Q_DESC = 'a' || char(1) || 'b' WHERE Q_ID = 26");
  Build();
  const std::string xml = Document();
  EXPECT_EQ(xml.find("<DESCRIPTION"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<CUSTOMER><REGISTERED/>"), std::string::npos) << xml;
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: "), 0U) << Log()[0];
}

TEST_F(MailDocumentTest, ANullCatalogueIdEndsTheBuilder) {
  database_.Run("UPDATE QUESTIONS SET PRODUCTID = NULL WHERE Q_ID = 26");
  Build();
  EXPECT_EQ(Log(),
            (Texts{"OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: Invalid use of Null (94)."}));
  EXPECT_NE(Document().find("<MAIL><CASEID>26</CASEID><PRODUCTCATEGORY/><CUSTOMER>"), std::string::npos)
      << Document();
}

TEST_F(MailDocumentTest, AnUnknownUserLeavesNoDocument) {
  peer_.Begin(26, 8, "ghost", 1033);
  Build();
  EXPECT_EQ(peer_.Document(), "no document");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          "OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: "
                          "Object variable or With block variable not set (91).",
                          "OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          "OrvaneProcess.SolveOnNoResponse.formCustomerDetailsNodes caught: "
                          "Object variable or With block variable not set (91)."}));
}

TEST_F(MailDocumentTest, AProspectComponentThatFailsLeavesTheCustomerAsFarAsItCame) {
  peer_.SetProspect("visitor@example.org");
  suite_->before = [](const std::string& step) {
    if (step == "GetContactInfo") throw automation::Error(70, "P", "Permission denied");
  };
  Build();
  EXPECT_NE(Document().find("<CUSTOMER><PROSPECT/><EMAIL>visitor@example.org</EMAIL></CUSTOMER></MAIL>"),
            std::string::npos)
      << Document();
  EXPECT_EQ(
      Log(),
      (Texts{"OrvaneProcess.SolveOnNoResponse.formCustomerDetailsNodes caught: Permission denied (70)."}));
}

TEST_F(MailDocumentTest, AUserWhoStopsAnsweringLeavesTheCustomerAsFarAsItCame) {
  directory_->before = [](std::string_view member) {
    if (member == "CompanyName") throw automation::Error(70, "U", "Permission denied");
  };
  Build();
  EXPECT_NE(
      Document().find("<CUSTOMER><REGISTERED/><EMAIL>anna@example.org</EMAIL><FIRSTNAME>Anna</FIRSTNAME>"
                      "<LASTNAME>Aalto</LASTNAME></CUSTOMER></MAIL>"),
      std::string::npos)
      << Document();
  EXPECT_EQ(
      Log(),
      (Texts{"OrvaneProcess.SolveOnNoResponse.formCustomerDetailsNodes caught: Permission denied (70)."}));
}

TEST_F(MailDocumentTest, ACatalogueThatFailsLeavesItsElementEmptyAndTheRestGoesOn) {
  database_.Run("UPDATE QUESTIONS SET Q_PRODUCTCAT = 10, PRODUCTID = 101, Q_CATEGORY = 2 WHERE Q_ID = 26");
  suite_->before = [](const std::string&) { throw automation::Error(70, "C", "Permission denied"); };
  Build();
  EXPECT_NE(
      Document().find("<PRODUCTCATEGORY/><ECPRODUCT/><FAQCATEGORIES/><DESCRIPTION>It leaks</DESCRIPTION>"),
      std::string::npos)
      << Document();
  EXPECT_EQ(Log().size(), 3U);
}

TEST_F(MailDocumentTest, AContractWithoutAWarrantyAndTheOtherWayRound) {
  suite_->contracts[26] = {"CT-1", ""};
  BuildInstalledBase(8);
  EXPECT_NE(InstalledBase().find("<BPNO>1042</BPNO><CONTRACT>CT-1</CONTRACT><CONTRACT/></INSTALLEDBASE>"),
            std::string::npos)
      << InstalledBase();
  suite_->contracts.clear();
  suite_->warranties[26] = {"", "Two years"};
  BuildInstalledBase(8);
  EXPECT_NE(
      InstalledBase().find("<BPNO>1042</BPNO><WARRANTY/><WARRANTY>Two years</WARRANTY></INSTALLEDBASE>"),
      std::string::npos)
      << InstalledBase();
}

TEST_F(MailDocumentTest, AFailingContractIsLoggedAndTheWarrantyFollows) {
  suite_->warranties[26] = {"W-2", "Two years"};
  suite_->before = [](const std::string& step) {
    if (step == "GetContractAndDescription") throw automation::Error(70, "Q", "Permission denied");
  };
  BuildInstalledBase(3);
  EXPECT_NE(InstalledBase().find("<BPNO>1042</BPNO><WARRANTY>W-2</WARRANTY>"), std::string::npos)
      << InstalledBase();
  EXPECT_EQ(
      Log(),
      (Texts{"OrvaneProcess.SolveOnNoResponse.GetContractAndDescription caught: Permission denied(70)."}));
}

TEST_F(MailDocumentTest, ANullPriorityEndsTheInstalledBase) {
  database_.Run("UPDATE QUESTIONS SET Q_PRIORITY = NULL WHERE Q_ID = 26");
  BuildInstalledBase(3);
  EXPECT_NE(InstalledBase().find("<PROBLEMCODE/><PROBLEMCODE/></INSTALLEDBASE>"), std::string::npos)
      << InstalledBase();
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.SolveOnNoResponse.formInstalledBaseNodes caught: "
                          "Invalid use of Null (94)."}));
}

TEST_F(MailDocumentTest, AQuestionThatIsGoneLeavesAPartialDocument) {
  peer_.Begin(99, 8, "anna", 1033);
  Build();
  EXPECT_NE(Document().find("<MAIL><CASEID>99</CASEID><CUSTOMER>"), std::string::npos) << Document();
  EXPECT_EQ(Log(),
            (Texts{"OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes caught: "
                   "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                   "requires a current record. (3021)."}));
}

TEST_F(MailDocumentTest, TheInstalledBaseOfAnObjectGeneration) {
  database_.Run(
      "UPDATE QUESTIONS SET Q_SITE = 'AMS1', Q_PRODUCT = 'PUMP', Q_OBJECT = 'OB', Q_OBJECTNR = '7', "
      "Q_REPORTED = "
      "'P10' WHERE Q_ID = 26");
  database_.Run("INSERT INTO SITE VALUES ('AMS1', 'Amsterdam')");
  database_.Run("INSERT INTO PRODUCT VALUES ('PUMP', 'A pump')");
  database_.Run("INSERT INTO OBJECT VALUES ('OB', '7', 'The pump in the basement')");
  database_.Run("INSERT INTO PROBLEM VALUES ('P10', 'Leaks')");
  database_.Run("INSERT INTO PRIORITY VALUES (2, 'Urgent')");
  suite_->contracts[26] = {"CT-1", "Full service"};
  suite_->warranties[26] = {"W-2", "Two years"};
  for (const int generation : {3, 8}) {
    BuildInstalledBase(generation);
    // A forward-only cursor does not know its count, so a site never has its description here.
    EXPECT_EQ(InstalledBase(),
              "<INSTALLEDBASE><SITE/><SITE>AMS1</SITE><PRODUCT>The pump in the basement</PRODUCT>"
              "<PRODUCT>OB</PRODUCT><PROBLEMCODE>Leaks</PROBLEMCODE><PROBLEMCODE>P10</PROBLEMCODE>"
              "<PROBLEMPRIORITY>Urgent</PROBLEMPRIORITY><PROBLEMPRIORITY>2</PROBLEMPRIORITY><BPNO>1042</BPNO>"
              "<CONTRACT>CT-1</CONTRACT><CONTRACT>Full service</CONTRACT><WARRANTY>W-2</WARRANTY>"
              "<WARRANTY>Two years</WARRANTY></INSTALLEDBASE>")
        << generation;
    EXPECT_EQ(Log(), Texts{});
  }
}

TEST_F(MailDocumentTest, TheFirstGenerationShowsItsProductAndOthersNone) {
  database_.Run("UPDATE QUESTIONS SET Q_PRODUCT = 'PUMP', Q_OBJECT = 'OB' WHERE Q_ID = 26");
  database_.Run("INSERT INTO PRODUCT VALUES ('PUMP', 'A pump')");
  BuildInstalledBase(1);
  EXPECT_NE(
      InstalledBase().find("<SITE/><SITE/><PRODUCT>A pump</PRODUCT><PRODUCT>PUMP</PRODUCT><PROBLEMCODE/>"),
      std::string::npos)
      << InstalledBase();
  BuildInstalledBase(2);
  EXPECT_EQ(InstalledBase().find("<PRODUCT>"), std::string::npos) << InstalledBase();
}

TEST_F(MailDocumentTest, NoContractAndNoWarrantyAreNoElements) {
  BuildInstalledBase(3);
  EXPECT_NE(InstalledBase().find("<BPNO>1042</BPNO></INSTALLEDBASE>"), std::string::npos) << InstalledBase();
}

TEST_F(MailDocumentTest, AFailureOfTheProblemLookupEndsTheInstalledBase) {
  database_.Run("UPDATE QUESTIONS SET Q_REPORTED = 'P10' WHERE Q_ID = 26");
  database_.Run("DROP TABLE PROBLEM");
  BuildInstalledBase(3);
  EXPECT_EQ(InstalledBase(), "<INSTALLEDBASE><SITE/><SITE/><PRODUCT/><PRODUCT/></INSTALLEDBASE>");
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.formInstalledBaseNodes caught: "), 0U) << Log()[0];
}

TEST_F(MailDocumentTest, WithoutABackEndThereIsNoInstalledBase) {
  UseHtmlMails();
  peer_.SendMail(8, 26);
  ASSERT_EQ(suite_->sheets.size(), 1U);
  EXPECT_EQ(suite_->sheets[0].document.find("INSTALLEDBASE"), std::string::npos);
}

TEST_F(MailDocumentTest, ContractAndWarrantyAreNotAskedForWithoutABackEnd) {
  suite_->contracts[26] = {"CT-1", "Full service"};
  suite_->warranties[26] = {"W-2", "Two years"};
  BuildInstalledBase(0);
  EXPECT_NE(InstalledBase().find("<BPNO>1042</BPNO></INSTALLEDBASE>"), std::string::npos) << InstalledBase();
}

TEST_F(MailDocumentTest, AnyGenerationButZeroIsABackEnd) {
  UseHtmlMails();
  suite_->contracts[26] = {"CT-1", "Full service"};
  for (const int generation : {-1, 1, 2, 5}) {
    suite_->sheets.clear();
    peer_.SetGeneration(generation);
    peer_.SendMail(8, 26);
    ASSERT_EQ(suite_->sheets.size(), 1U);
    EXPECT_NE(suite_->sheets[0].document.find("<CONTRACT>CT-1</CONTRACT>"), std::string::npos) << generation;
  }
}

TEST_F(MailDocumentTest, TheQuestionIsClosedBeforeThePageIsMade) {
  UseHtmlMails();
  Texts open;
  suite_->before = [this, &open](const std::string& step) {
    if (step == "LoadOrvaneTemplate" || step == "transform") {
      open.push_back(step + " " + std::to_string(adodb_->openConnections));
    }
  };
  peer_.SendMail(8, 26);
  EXPECT_EQ(open, (Texts{"LoadOrvaneTemplate 0", "transform 0"}));
}

TEST_F(MailDocumentTest, WithABackEndAMailShowsTheInstalledBase) {
  UseHtmlMails();
  peer_.SetGeneration(3);
  peer_.SendMail(8, 26);
  ASSERT_EQ(suite_->sheets.size(), 1U);
  EXPECT_NE(suite_->sheets[0].document.find("<INSTALLEDBASE>"), std::string::npos);
}

}  // namespace
}  // namespace orvane_test
