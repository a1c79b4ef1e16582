#include "tests/solve/solve_test.hpp"
#include "tests/support/error_number.hpp"

namespace orvane_test {
namespace {

using automation::Variant;

class LookupsTest : public SolveTest {
 protected:
  LookupsTest() {
    database_.Run("INSERT INTO SITE VALUES ('AMS1', 'Amsterdam')");
    database_.Run("INSERT INTO PRODUCT VALUES ('PUMP', 'A pump')");
    database_.Run(
        "INSERT INTO OBJECT VALUES ('OB', '7', 'The pump in the basement'), ('OB', '', 'Some pump')");
    database_.Run("INSERT INTO PROBLEM VALUES ('P10', 'Leaks'), ('5', 'Pumps')");
    database_.Run("INSERT INTO PRIORITY VALUES (2, 'Urgent'), (3, NULL)");
  }
  // The last statement that was opened.
  OpenedRecordset Opened() const {
    return adodb_->recordsets.empty() ? OpenedRecordset{} : adodb_->recordsets.back();
  }
  static OpenedRecordset ForwardOnly(const std::string& sql) {
    return {.sql = sql,
            .cursor = ADODB::CursorType::ForwardOnly,
            .lock = ADODB::LockType::ReadOnly,
            .options = -1};
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(LookupsTest, ADataLabelHasATextForItsLanguage) {
  EXPECT_EQ(peer_.GetDataLabelDesc("S8", 1033), "text S8");
  EXPECT_EQ(Opened(),
            (OpenedRecordset{.sql = "Select TEXT From DATALABEL where LOCALEID = 1033 and TEXTID = 'S8'",
                             .cursor = ADODB::CursorType::Static,
                             .lock = ADODB::LockType::ReadOnly,
                             .options = -1}));
  EXPECT_EQ(peer_.GetDataLabelDesc("S8", 1043), "");
  EXPECT_EQ(peer_.GetDataLabelDesc("none", 1033), "");
}

TEST_F(LookupsTest, ASiteHasNoDescriptionWhereTheCountIsUnknown) {
  EXPECT_EQ(peer_.GetSiteDescription("AMS1"), "");
  EXPECT_EQ(Opened(), ForwardOnly("Select DESCRIPTION from SITE where SITE='AMS1'"));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(LookupsTest, ASiteHasItsDescriptionWhereTheProviderCounts) {
  adodb_->recordCount = [](std::int64_t) { return 1; };
  EXPECT_EQ(peer_.GetSiteDescription("AMS1"), "Amsterdam");
  adodb_->recordCount = [](std::int64_t) { return 0; };
  EXPECT_EQ(peer_.GetSiteDescription("AMS1"), "");
}

TEST_F(LookupsTest, AProductHasADescription) {
  EXPECT_EQ(peer_.GetProductDescription("PUMP"), "A pump");
  EXPECT_EQ(Opened(), ForwardOnly("Select DESCRIPTION from PRODUCT where PRODUCT='PUMP'"));
  EXPECT_EQ(peer_.GetProductDescription("none"), "");
}

TEST_F(LookupsTest, AnObjectHasADescriptionByKeyAndNumber) {
  EXPECT_EQ(peer_.GetObjectDescription("OB", "7"), "The pump in the basement");
  EXPECT_EQ(Opened(), ForwardOnly("Select OBJECTDESC from OBJECT where OBJECT = 'OB' AND OBJECTNR='7'"));
  EXPECT_EQ(peer_.GetObjectDescription("OB", Variant::Null()), "Some pump");
  EXPECT_EQ(peer_.GetObjectDescription("OB", "8"), "");
}

TEST_F(LookupsTest, AProblemHasADescription) {
  EXPECT_EQ(peer_.GetReportedDescription("P10"), "Leaks");
  EXPECT_EQ(Opened(), ForwardOnly("Select DESCRIPTION from PROBLEM where PROBLEM='P10'"));
  EXPECT_EQ(peer_.GetReportedDescription("none"), "");
}

TEST_F(LookupsTest, APriorityHasADescription) {
  EXPECT_EQ(peer_.GetPriorityDescription(2), "Urgent");
  EXPECT_EQ(Opened(), ForwardOnly("Select DESCRIPTION from PRIORITY where PRIORITY=2"));
  EXPECT_EQ(peer_.GetPriorityDescription(9), "");
  EXPECT_EQ(peer_.GetPriorityDescription(3), "");  // a description that is null
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(LookupsTest, BlankAndNullKeysOpenNoConnection) {
  for (const Variant& key : {Variant::Null(), Variant(""), Variant("   ")}) {
    EXPECT_EQ(peer_.GetSiteDescription(key), "");
    EXPECT_EQ(peer_.GetProductDescription(key), "");
    EXPECT_EQ(peer_.GetReportedDescription(key), "");
  }
  EXPECT_EQ(peer_.GetObjectDescription(Variant::Null(), "7"), "");
  EXPECT_TRUE(adodb_->connectionStrings.empty());
}

TEST_F(LookupsTest, AnEmptyObjectIsAskedForAllTheSame) {
  EXPECT_EQ(peer_.GetObjectDescription("", "7"), "");
  EXPECT_EQ(adodb_->connectionStrings.size(), 1U);
}

TEST_F(LookupsTest, AQuoteInAKeyBreaksTheStatementAndIsLogged) {
  EXPECT_EQ(peer_.GetSiteDescription("O'Hara"), "");
  EXPECT_EQ(peer_.GetProductDescription("O'Hara"), "");
  EXPECT_EQ(peer_.GetObjectDescription("O'Hara", "7"), "");
  EXPECT_EQ(peer_.GetDataLabelDesc("O'Hara", 1033), "");
  ASSERT_EQ(Log().size(), 4U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.getSiteDescription caught: "), 0U) << Log()[0];
  EXPECT_EQ(Log()[1].find("OrvaneProcess.SolveOnNoResponse.getProductDescription caught: "), 0U) << Log()[1];
  EXPECT_EQ(Log()[2].find("OrvaneProcess.SolveOnNoResponse.getObjectDescription caught: "), 0U) << Log()[2];
  EXPECT_EQ(Log()[3].find("OrvaneProcess.SolveOnNoResponse.GetDataLabelDesc caught: "), 0U) << Log()[3];
  EXPECT_EQ(adodb_->openConnections, 0);
}

TEST_F(LookupsTest, AMissingTableIsLoggedAndEmpty) {
  database_.Run("DROP TABLE PRIORITY");
  EXPECT_EQ(peer_.GetPriorityDescription(2), "");
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.getPriorityDescription caught: "), 0U) << Log()[0];
}

TEST_F(LookupsTest, TheProblemLookupAloneRaises) {
  EXPECT_EQ(ErrorNumberOf([&] { peer_.GetReportedDescription("O'Hara"); }), -2147217900);
  EXPECT_EQ(Log(), Texts{});
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(ErrorNumberOf([&] { peer_.GetReportedDescription("P10"); }), 1001);
}

TEST_F(LookupsTest, ContractAndWarrantyComeFromTheQuestionComponent) {
  suite_->contracts[26] = {"CT-1", "Full service"};
  suite_->warranties[26] = {"W-2", "Two years"};
  EXPECT_EQ(peer_.GetContract(26), "CT-1/Full service");
  EXPECT_EQ(peer_.GetWarranty(26), "W-2/Two years");
  EXPECT_EQ(peer_.GetContract(27), "/");
}

TEST_F(LookupsTest, AFailingQuestionComponentIsLogged) {
  suite_->before = [](const std::string&) { throw automation::Error(70, "Q", "Permission denied"); };
  EXPECT_EQ(peer_.GetContract(26), "/");
  EXPECT_EQ(peer_.GetWarranty(26), "/");
  EXPECT_EQ(
      Log(),
      (Texts{"OrvaneProcess.SolveOnNoResponse.GetContractAndDescription caught: Permission denied(70).",
             "OrvaneProcess.SolveOnNoResponse.GetWarrantyAndDescription caught: Permission denied(70)."}));
}

TEST_F(LookupsTest, TheCatalogueIsAskedByOneId) {
  suite_->products[101] = "Pump 30";
  suite_->faqCategories[2] = "Operation";
  EXPECT_EQ(peer_.GetProductCategory(5), "Pumps");
  EXPECT_EQ(job_.GetECProductDesc(101), "Pump 30");
  EXPECT_EQ(peer_.GetQuestionCategory(2), "Operation");
  EXPECT_EQ(suite_->events, (Texts{"categories(1:5)", "product(101)", "faq categories"}));
  EXPECT_EQ(job_.GetECProductDesc(102), "");
  EXPECT_EQ(peer_.GetQuestionCategory(3), "");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(LookupsTest, Id0AsksNobody) {
  EXPECT_EQ(peer_.GetProductCategory(0), "");
  EXPECT_EQ(job_.GetECProductDesc(0), "");
  EXPECT_EQ(peer_.GetQuestionCategory(0), "");
  EXPECT_TRUE(suite_->events.empty());
}

TEST_F(LookupsTest, OtherIdsThanZeroAreAskedForWhateverTheirSign) {
  suite_->products[-7] = "Pump of old";
  suite_->faqCategories[-7] = "Old";
  database_.Run("INSERT INTO PROBLEM VALUES ('-7', 'Old pumps')");
  EXPECT_EQ(peer_.GetProductCategory(-7), "Old pumps");
  EXPECT_EQ(job_.GetECProductDesc(-7), "Pump of old");
  EXPECT_EQ(peer_.GetQuestionCategory(-7), "Old");
}

TEST_F(LookupsTest, ACategoryWithoutANameIsEmpty) {
  database_.Run("INSERT INTO PROBLEM VALUES ('6', NULL)");
  suite_->faqCategories[6] = Variant::Null();
  EXPECT_EQ(peer_.GetProductCategory(6), "");
  EXPECT_EQ(peer_.GetQuestionCategory(6), "");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(LookupsTest, KeysOfOtherWhiteSpaceThanBlanksAreAskedFor) {
  for (const char* key : {"\t", " \r\n"}) {
    EXPECT_EQ(peer_.GetSiteDescription(key), "");
    EXPECT_EQ(peer_.GetProductDescription(key), "");
    EXPECT_EQ(peer_.GetReportedDescription(key), "");
  }
  EXPECT_EQ(adodb_->connectionStrings.size(), 6U);
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(LookupsTest, AFailingCatalogueIsLoggedUnderEachSource) {
  suite_->before = [](const std::string&) { throw automation::Error(70, "C", "Permission denied"); };
  EXPECT_EQ(peer_.GetProductCategory(5), "");
  EXPECT_EQ(job_.GetECProductDesc(101), "");
  EXPECT_EQ(peer_.GetQuestionCategory(2), "");
  EXPECT_EQ(Log(),
            (Texts{"OrvaneProcess.SolveOnNoResponse.GetProductCategory caught: Permission denied(70).",
                   "OrvaneProcess.SolveOnNoResponse.GetECProductDesc caught: Permission denied(70).",
                   "OrvaneProcess.SolveOnNoResponse.GetQuestionCategory caught: Permission denied(70)."}));
}

TEST_F(LookupsTest, ACategoryThatTheCatalogueLacksIsLogged) {
  EXPECT_EQ(peer_.GetProductCategory(6), "");
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.GetProductCategory caught: "), 0U) << Log()[0];
  EXPECT_NE(Log()[0].find("(3021)."), std::string::npos);
}

TEST_F(LookupsTest, EveryConnectionIsClosed) {
  peer_.GetDataLabelDesc("S8", 1033);
  peer_.GetSiteDescription("AMS1");
  peer_.GetProductDescription("PUMP");
  peer_.GetObjectDescription("OB", "7");
  peer_.GetReportedDescription("P10");
  peer_.GetPriorityDescription(2);
  EXPECT_EQ(adodb_->connectionStrings.size(), 6U);
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

class SalutationTest : public SolveTest {
 protected:
  SalutationTest() {
    AddLabel("LBLQX3996", 1033, "- good day");
    AddLabel("LBLQX3997", 1033, "Dear customer");
    AddLabel("LBLQX3996", 1041, "様");
  }
  void Fail(const std::string& failing) {
    directory_->before = [failing](std::string_view member) {
      if (member == failing) throw automation::Error(70, "U", "Permission denied");
    };
  }
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(SalutationTest, GreetsByName) {
  EXPECT_EQ(peer_.GetSalutation("anna"), "Anna Aalto - good day");
}

TEST_F(SalutationTest, GreetsWithoutANameWhereThePersonIsFlagged) {
  directory_->people["anna"].salutationFlag = true;
  EXPECT_EQ(peer_.GetSalutation("anna"), "Dear customer");
}

TEST_F(SalutationTest, JapaneseNamesBeginWithTheFamily) {
  directory_->people["sato"] = {.languageId = 1041, .firstName = "健", .lastName = "佐藤"};
  EXPECT_EQ(peer_.GetSalutation("sato"), "佐藤 健 様");
}

TEST_F(SalutationTest, NobodyIsGreetedWithNothing) {
  EXPECT_EQ(peer_.GetSalutation(Variant::Null()), "");
  EXPECT_EQ(peer_.GetSalutation(""), "");
  EXPECT_EQ(peer_.GetSalutation("  "), "");
  EXPECT_TRUE(directory_->calls.empty());
}

TEST_F(SalutationTest, AnUnknownUserIsGreetedWithNothing) {
  EXPECT_EQ(peer_.GetSalutation("ghost"), "");
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010)."}));
}

// Steps that fail are passed over; the greeting stays as it stands.
TEST_F(SalutationTest, WithoutAnAnswerAboutTheFlagThePersonIsGreetedByName) {
  directory_->people["anna"].salutationFlag = true;
  Fail("SalutationFlag");
  EXPECT_EQ(peer_.GetSalutation("anna"), "Anna Aalto - good day");
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(SalutationTest, WithoutANameOrALanguageThereIsNoGreeting) {
  for (const char* member : {"FirstName", "LastName", "LanguageID"}) {
    Fail(member);
    EXPECT_EQ(peer_.GetSalutation("anna"), "") << member;
  }
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(SalutationTest, WithoutALanguageAFlaggedPersonIsNotGreeted) {
  directory_->people["anna"].salutationFlag = true;
  Fail("LanguageID");
  EXPECT_EQ(peer_.GetSalutation("anna"), "");
}

TEST_F(SalutationTest, AFlaggedPersonsNamesAreNotAskedFor) {
  directory_->people["anna"].salutationFlag = true;
  Fail("FirstName");
  EXPECT_EQ(peer_.GetSalutation("anna"), "Dear customer");
}

TEST_F(SalutationTest, WithoutATextTheGreetingShowsTheLabel) {
  database_.Run("DELETE FROM I18NTEXT");
  EXPECT_EQ(peer_.GetSalutation("anna"), "Anna Aalto LBLQX3996");
  directory_->people["anna"].salutationFlag = true;
  EXPECT_EQ(peer_.GetSalutation("anna"), "LBLQX3997");
}

TEST_F(SalutationTest, WithoutADatabaseTheGreetingIsTheNameAndABlank) {
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(peer_.GetSalutation("anna"), "Anna Aalto ");
}

}  // namespace
}  // namespace orvane_test
