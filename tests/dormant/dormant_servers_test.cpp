// The expiry on the database servers: exactly the rows that go on SQLite.
#include <gtest/gtest.h>

#include "jobs/dormant/dormant_user_expiry.hpp"
#include "platform/automation/error.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/servers/server_environment.hpp"

namespace orvane_test {
namespace {

using Names = std::vector<std::string>;

class DormantUserExpiryOnServersTest : public testing::TestWithParam<std::string> {
 protected:
  DormantUserExpiryOnServersTest() {
    Scripting::memory::RegisterClasses(environment_.runtime.classes, disk_);
    disk_->AddFolder("/suite/home");
  }
  ~DormantUserExpiryOnServersTest() override {
    EXPECT_EQ(environment_.adodb->openConnections, 0);
    EXPECT_EQ(environment_.adodb->openRecordsets, 0);
  }

  void SetLimit(const std::string& value) {
    environment_.Run("INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('MAXDORMANCYTIME', '" + value +
                     "')");
  }
  void AddProspects(const std::string& rows) {
    environment_.Run("INSERT INTO PROSPECT (LASTNAME, LASTVISITEDTIME, PENDINGQUESTIONS) VALUES " + rows);
  }
  Names Prospects() const { return environment_.Rows("SELECT LASTNAME FROM PROSPECT ORDER BY PROSPECTID"); }

  ServerEnvironment environment_{GetParam()};
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
  OrvaneProcess::DormantUserExpiry job_;
};

TEST_P(DormantUserExpiryOnServersTest, DeletesExactlyTheDormantProspects) {
  SetLimit("30");
  AddProspects(
      "('a second too old', '2004-06-26 09:05:02', 0), ('on the second', '2004-06-26 09:05:03', 0), "
      "('waiting', '1990-01-01 00:00:00', 1), ('owed answers', '1990-01-01 00:00:00', -1), "
      "('never seen', NULL, 0), ('unknown', '1990-01-01 00:00:00', NULL), ('fresh', '2004-07-26 09:00:00', "
      "0)");
  job_.ExpireDormantUsers();
  EXPECT_EQ(Prospects(), (Names{"on the second", "waiting", "never seen", "unknown", "fresh"}));
  EXPECT_TRUE(disk_->Bytes("/suite/OrvLog/OrvDormantUserExpirySvc_log_2004_7_26.txt")
                  .ends_with(" NTService Stopped at : 7-26-2004 09:05:03\r\n"
                             "*****************************************************\r\n"));
}

TEST_P(DormantUserExpiryOnServersTest, DeletesFarMoreProspectsThanAWindowHolds) {
  SetLimit("30");
  std::string rows;
  Names kept;
  for (int i = 0; i < 2500; ++i) {
    const std::string name = "p" + std::to_string(i);
    rows += (i == 0 ? "('" : ", ('") + name +
            (i % 10 < 3 ? "', '2001-01-01 00:00:00', 0)" : "', '2004-07-25 00:00:00', 0)");
    if (i % 10 >= 3) kept.push_back(name);
  }
  AddProspects(rows);
  job_.ExpireDormantUsers();
  EXPECT_EQ(Prospects(), kept);
}

TEST_P(DormantUserExpiryOnServersTest, MissingLimitIsRaised) {
  AddProspects("('old', '1990-01-01 00:00:00', 0)");
  try {
    job_.ExpireDormantUsers();
    FAIL() << "nothing was raised";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), 3021);
  }
  EXPECT_EQ(Prospects(), Names{"old"});
}

INSTANTIATE_TEST_SUITE_P(Servers, DormantUserExpiryOnServersTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& parameter) { return parameter.param; });

}  // namespace
}  // namespace orvane_test
