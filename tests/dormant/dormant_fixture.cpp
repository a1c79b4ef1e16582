#include "tests/dormant/dormant_fixture.hpp"

#include "platform/automation/error.hpp"

namespace orvane_test {

DormantUserExpiryTest::DormantUserExpiryTest(bool wal) : RunTest(wal) {
  // Made by hand, not by the product: only the columns that the job uses are known to be there.
  database_.Run("CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255) PRIMARY KEY, PARAM_VALUE VARCHAR(255))");
  database_.Run(
      "CREATE TABLE PROSPECT (ID INTEGER PRIMARY KEY, NAME VARCHAR(100), LASTVISITEDTIME DATETIME, "
      "PENDINGQUESTIONS INTEGER)");
}

void DormantUserExpiryTest::SetLimit(std::string_view sqlLiteral) {
  database_.Run("INSERT OR REPLACE INTO PARAMETERS VALUES ('MAXDORMANCYTIME', " + std::string(sqlLiteral) +
                ")");
}

void DormantUserExpiryTest::AddProspect(std::string_view name, std::string_view lastVisit,
                                        std::string_view pendingQuestions) {
  database_.Run("INSERT INTO PROSPECT (NAME, LASTVISITEDTIME, PENDINGQUESTIONS) VALUES ('" +
                std::string(name) + "', " + std::string(lastVisit) + ", " + std::string(pendingQuestions) +
                ")");
}

std::vector<std::string> DormantUserExpiryTest::Prospects() {
  return database_.Rows("SELECT NAME FROM PROSPECT ORDER BY ID");
}

std::int32_t DormantUserExpiryTest::Expire() {
  try {
    job_.ExpireDormantUsers();
    return 0;
  } catch (const automation::Error& error) {
    return error.Number();
  }
}

}  // namespace orvane_test
