// A run whose lock of the database is lost to another program stops at the next safe point.
#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/engine/session_lock.hpp"
#include "platform/adodb/providers/odbc/provider.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

using ADODB::engine::OpenSessionLock;
using ADODB::engine::SessionLock;
using testing::HasSubstr;

class LockLostTest : public testing::TestWithParam<std::string> {
 protected:
  bool IsPostgreSql() const { return GetParam() == "postgresql"; }

  long Prospects() const {
    const auto rows = session_->Query("SELECT count(*) FROM PROSPECT", {});
    return rows->Next() ? static_cast<long>(automation::ToInt64(rows->Value(0))) : -1;
  }

  // Each deletion takes a while from now on.
  void SlowDown() const {
    if (IsPostgreSql()) {
      session_->Execute(
          "CREATE FUNCTION slow() RETURNS trigger LANGUAGE plpgsql AS "
          "'BEGIN PERFORM pg_sleep(0.05); RETURN OLD; END'",
          {});
      session_->Execute("CREATE TRIGGER slow BEFORE DELETE ON PROSPECT FOR EACH ROW EXECUTE FUNCTION slow()",
                        {});
    } else {
      session_->Execute("CREATE TRIGGER slow BEFORE DELETE ON PROSPECT FOR EACH ROW SET @slept = sleep(0.05)",
                        {});
    }
  }
  void SpeedUp() const {
    session_->Execute(IsPostgreSql() ? "DROP TRIGGER slow ON PROSPECT" : "DROP TRIGGER slow", {});
  }

  // Ends the session that holds the lock, whose description the lock itself gives.
  void EndHolder(SessionLock& lock) const {
    const std::string holder = lock.Holder();  // "database session N ..."
    const std::string id = holder.substr(sizeof "database session " - 1);
    const std::string number = id.substr(0, id.find_first_not_of("0123456789"));
    ASSERT_FALSE(number.empty()) << holder;
    if (IsPostgreSql()) {
      session_->Query("SELECT pg_terminate_backend(" + number + ")", {});
    } else {
      session_->Execute("KILL " + number, {});
    }
  }

  // The server ends a session some time after it was told to; the run may be faster.
  static bool IsTakenWithinASecond(SessionLock& lock) {
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < std::chrono::seconds(1)) {
      if (lock.TryTake()) return true;
    }
    return false;
  }

  TemporaryFolder folder_;
  const std::filesystem::path home_ = folder_.Path() / "home";
  ServerDatabase suite_{GetParam()};
  ServerDatabase catalogue_{GetParam()};
  std::unique_ptr<ADODB::engine::Session> session_;
};

TEST_P(LockLostTest, TheRunStopsAtTheNextSafePointAndTheNextRunGoesOn) {
  const Outcome made = RunHost({"init", home_.string(), "--demo", "--database", suite_.ConnectionString(),
                                "--catalog", catalogue_.ConnectionString()});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  session_ = suite_.Connect();
  const long before = Prospects();
  SlowDown();

  RunningHost run({"run", "--home", home_.string(), "DormantUserExpiry"});
  auto other = OpenSessionLock({ADODB::odbc::MakeProvider()}, suite_.ConnectionString(), "another program");
  const auto start = std::chrono::steady_clock::now();
  while (Prospects() == before) {
    ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(2)) << "nothing is deleted";
  }
  ASSERT_FALSE(other->TryTake());
  do {
    EndHolder(*other);
  } while (!IsTakenWithinASecond(*other));
  const Outcome stopped = run.Wait();

  EXPECT_EQ(stopped.exitCode, 75) << stopped.out << stopped.err;
  EXPECT_EQ(stopped.out, "OrvaneProcess.DormantUserExpiry: stopped\n");
  EXPECT_THAT(stopped.err, HasSubstr("orvane-host: OrvaneProcess.DormantUserExpiry: the lock of the suite's "
                                     "database was lost, and somebody else has it"));
  EXPECT_THAT(stopped.err, HasSubstr("stopped at a safe point\n"));
  const long left = Prospects();
  EXPECT_LT(left, before);
  EXPECT_GT(left, 7014);

  SpeedUp();
  EXPECT_EQ(RunHost({"run", "--home", home_.string(), "--no-wait", "DormantUserExpiry"}).exitCode, 75);
  EXPECT_EQ(Prospects(), left);
  other.reset();
  const Outcome next = RunHost({"run", "--home", home_.string(), "DormantUserExpiry"});
  EXPECT_EQ(next.exitCode, 0) << next.err;
  EXPECT_EQ(Prospects(), 7014);
}

INSTANTIATE_TEST_SUITE_P(Servers, LockLostTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& engine) { return engine.param; });

}  // namespace
}  // namespace orvane_test
