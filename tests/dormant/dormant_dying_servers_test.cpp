// The expiry on a database server that is stopped, killed or restarted in the middle of a run: the run ends
// quietly with what it has deleted so far, and the next run deletes the rest.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jobs/dormant/dormant_user_expiry.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/servers/dying_server.hpp"
#include "tests/servers/server_environment.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

constexpr const char* kStarted =
    "*****************************************************\r\n"
    "Orvane NTService Log \r\n"
    "*****************************************************\r\n"
    "Dormant User Expiry - NTService Started at : 7-26-2004 09:05:03\r\n";
constexpr const char* kStopped =
    " NTService Stopped at : 7-26-2004 09:05:03\r\n"
    "*****************************************************\r\n";

// Two prospects of three are dormant, in more rows than are read at a time.
class DormantUserExpiryOnDyingServersTest : public testing::TestWithParam<Outage> {
 protected:
  static constexpr int kRows = 3000;
  static constexpr int kDormant = 2000;

  DormantUserExpiryOnDyingServersTest() {
    Scripting::memory::RegisterClasses(environment_.runtime.classes, disk_);
    disk_->AddFolder("/suite/home");
    environment_.Run("INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('MAXDORMANCYTIME', '30')");
    std::string rows;
    for (int i = 1; i <= kRows; ++i) {
      rows += std::string(i == 1 ? "" : ", ") + "('" + std::to_string(i) +
              (i % 3 == 0 ? "', '2004-07-25 00:00:00', 0)" : "', '2001-01-01 00:00:00', 0)");
    }
    environment_.Run("INSERT INTO PROSPECT (LASTNAME, LASTVISITEDTIME, PENDINGQUESTIONS) VALUES " + rows);
  }

  // A run in which it happens before `step` is taken for the `n`th time.
  void RunWithOutageBefore(const std::string& step, int n) {
    environment_.adodb->before = [=, this, taken = 0](std::string_view name) mutable {
      if (name == step && ++taken == n) server_.Fail();
    };
    EXPECT_NO_THROW(job_.Run());
    environment_.adodb->before = nullptr;
    EXPECT_TRUE(server_.HasFailed());
    EXPECT_EQ(environment_.adodb->openConnections, 0);
    EXPECT_EQ(environment_.adodb->openRecordsets, 0);
    server_.Recover();
  }

  // The rows as they are when the first `deleted` of the dormant ones are gone.
  void ExpectDeleted(int deleted) const {
    Names left;
    int dormant = 0;
    for (int i = 1; i <= kRows; ++i) {
      if (i % 3 == 0 || ++dormant > deleted) left.push_back(std::to_string(i));
    }
    EXPECT_EQ(environment_.Rows("SELECT LASTNAME FROM PROSPECT ORDER BY PROSPECTID"), left);
  }
  void ExpectTheNextRunDeletesTheRest() {
    EXPECT_NO_THROW(job_.Run());
    ExpectDeleted(kDormant);
    EXPECT_EQ(Log(), std::string(kStarted) + kStarted + kStopped);
  }
  std::string Log() const { return disk_->Bytes("/suite/OrvLog/OrvDormantUserExpirySvc_log_2004_7_26.txt"); }
  Names Errors() const {
    Names messages;
    for (const LogEntry& entry : *environment_.log) messages.push_back(WithoutDriversWords(entry.message));
    return messages;
  }

  DyingServer server_{GetParam()};
  ServerEnvironment environment_{server_.Itself(), GetParam().server};
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
  OrvaneProcess::DormantUserExpiry job_;
};

TEST_P(DormantUserExpiryOnDyingServersTest, KeepsWhatItHasDeletedAndSaysNothing) {
  RunWithOutageBefore("Recordset.Delete", 700);
  EXPECT_EQ(Log(), kStarted);
  EXPECT_THAT(Errors(), IsEmpty());
  ExpectDeleted(699);
  ExpectTheNextRunDeletesTheRest();
}

TEST_P(DormantUserExpiryOnDyingServersTest, DeletesNothingWhenItCannotReadTheProspects) {
  RunWithOutageBefore("Recordset.Open", 2);
  EXPECT_EQ(Log(), kStarted);
  EXPECT_THAT(Errors(), IsEmpty());
  ExpectDeleted(0);
  ExpectTheNextRunDeletesTheRest();
}

TEST_P(DormantUserExpiryOnDyingServersTest, ReportsAConnectionThatCannotBeMade) {
  RunWithOutageBefore("Connection.Open", 1);
  if (GetParam().what == Outage::Restarted) {
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_EQ(Log(), std::string(kStarted) + kStopped);
    ExpectDeleted(kDormant);
    return;
  }
  EXPECT_EQ(Log(), kStarted);
  EXPECT_THAT(Errors(),
              ElementsAre("METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: "
                          "<lost>(-2147467259)."));
  ExpectDeleted(0);
  ExpectTheNextRunDeletesTheRest();
}

INSTANTIATE_TEST_SUITE_P(Servers, DormantUserExpiryOnDyingServersTest, testing::ValuesIn(AllOutages()),
                         [](const auto& outage) { return NameOf(outage.param); });

}  // namespace
}  // namespace orvane_test
