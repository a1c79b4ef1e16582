#include "components/interfaces/service_request.hpp"

#include <gtest/gtest.h>

#include "suite/service_request/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/sqlite_database.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace OrvServiceRequest {
namespace {

using Rows = std::vector<std::string>;

class ServiceRequestTest : public testing::Test {
 protected:
  ServiceRequestTest() {
    RegisterServiceRequest(runtime_.runtime.classes, home_.Path());
    OrvCommon::RegisterSqlConversion(runtime_.runtime.classes);
  }
  void MakeProspects() {
    databases_.orvane.Run(
        "CREATE TABLE PROSPECT (PROSPECTID INTEGER PRIMARY KEY, EMAILID VARCHAR(255), FIRSTNAME "
        "VARCHAR(255), "
        "LASTNAME VARCHAR(255), COMPANY VARCHAR(255), PENDINGQUESTIONS INTEGER);"
        "INSERT INTO PROSPECT VALUES (1, 'ada@example.org', 'Ada', 'Aalto', 'Harbour Works', 2),"
        "(2, 'bo@example.org', NULL, 'Bo', '', 0), (3, 'o''hara@example.org', 'O', NULL, 'Hara', 1),"
        "(4, 'nobody@example.org', NULL, NULL, NULL, NULL)");
  }
  std::string ContactInfo(std::string_view email) {
    return automation::CreateObject<Prospect>(kProspectProgId)->GetContactInfo(email);
  }

  orvane_test::TestRuntime runtime_;
  orvane_test::TemporaryFolder home_;
  orvane_test::SuiteDatabases databases_{runtime_};
};

TEST_F(ServiceRequestTest, ContractAndWarrantyComeFromColumnsThatASiteHas) {
  databases_.orvane.Run(
      "CREATE TABLE QUESTIONS (Q_ID INTEGER PRIMARY KEY, CONTRACT VARCHAR(50), CONTRACTDESC VARCHAR(50), "
      "WARRANTY VARCHAR(50)); INSERT INTO QUESTIONS VALUES (26, 'CT-1', 'Full service', NULL)");
  const auto question = automation::CreateObject<Question>(kQuestionProgId);
  const CodeAndDescription contract = question->GetContractAndDescription(26);
  EXPECT_EQ(contract.code, "CT-1");
  EXPECT_EQ(contract.description, "Full service");
  EXPECT_TRUE(question->GetWarrantyAndDescription(26).IsEmpty());
  EXPECT_TRUE(question->GetContractAndDescription(27).IsEmpty());
}

TEST_F(ServiceRequestTest, ADatabaseWithoutTheColumnsHasNeither) {
  databases_.orvane.Run(
      "CREATE TABLE QUESTIONS (Q_ID INTEGER PRIMARY KEY); INSERT INTO QUESTIONS VALUES (26)");
  const auto question = automation::CreateObject<Question>(kQuestionProgId);
  EXPECT_TRUE(question->GetContractAndDescription(26).IsEmpty());
  EXPECT_TRUE(question->GetWarrantyAndDescription(26).IsEmpty());
}

TEST_F(ServiceRequestTest, ContactInformationIsNameAndCompany) {
  MakeProspects();
  EXPECT_EQ(ContactInfo("ada@example.org"), "Ada Aalto, Harbour Works");
  EXPECT_EQ(ContactInfo("bo@example.org"), "Bo");
  EXPECT_EQ(ContactInfo("o'hara@example.org"), "O, Hara");
  EXPECT_EQ(ContactInfo("nobody@example.org"), "");
  EXPECT_EQ(ContactInfo("unknown@example.org"), "");
  EXPECT_EQ(ContactInfo("x' OR 'a' = 'a"), "");
}

TEST_F(ServiceRequestTest, AProspectsConcludedQuestionIsAnEventAndChangesNoRow) {
  MakeProspects();
  for (const char* email : {"ada@example.org", "o'hara@example.org", ""}) {
    automation::CreateObject<ProspectState>(kProspectStateClass)->QuestionConcluded(email, "", true);
  }
  const std::string begin = "{\"TIME\":\"2004-07-26 09:05:03\",\"EVENT\":\"question\",\"EMAILID\":\"";
  const std::string end = "\",\"COMMENT\":\"\",\"CONCLUDED\":true}\n";
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(home_.Path() / "outbox" / "prospects.jsonl"),
            begin + "ada@example.org" + end + begin + "o'hara@example.org" + end + begin + end);
  EXPECT_EQ(databases_.orvane.Rows("SELECT PROSPECTID, PENDINGQUESTIONS FROM PROSPECT ORDER BY PROSPECTID"),
            (Rows{"1|2", "2|0", "3|1", "4|NULL"}));
}

TEST_F(ServiceRequestTest, ADatabaseWithoutProspectsOrTheirAddressesIsTakenAsItIs) {
  EXPECT_EQ(ContactInfo("ada@example.org"), "");
  databases_.orvane.Run("CREATE TABLE PROSPECT (NAME TEXT PRIMARY KEY, PENDINGQUESTIONS INTEGER)");
  EXPECT_EQ(ContactInfo("ada@example.org"), "");
}

TEST_F(ServiceRequestTest, AFailedReadOfTheProspectsIsNoSuiteWithoutProspects) {
  databases_.orvane.Run("CREATE VIEW PROSPECT AS SELECT abs(-9223372036854775807 - 1) AS EMAILID");
  const automation::Error error = orvane_test::ErrorOf([this] { ContactInfo("ada@example.org"); });
  EXPECT_EQ(error.Number(), -2147217900);
  EXPECT_EQ(error.Description(), "integer overflow");
}

TEST_F(ServiceRequestTest, AConcludedQuestionIsAnEvent) {
  automation::CreateObject<QuestionState>(kQuestionStateClass)->Concluded(26);
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(home_.Path() / "outbox" / "questions.jsonl"),
            "{\"TIME\":\"2004-07-26 09:05:03\",\"EVENT\":\"concluded\",\"QUESTION\":26}\n");
}

}  // namespace
}  // namespace OrvServiceRequest
