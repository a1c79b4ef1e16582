// The lock of a suite's database: two hosts of a farm take turns, and a run that loses the lock to another
// program stops at the next safe point.
#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/session/session_lock.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/server_sessions.hpp"
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

  // Ends the session that holds the lock, and takes it when the server has let go of it; once more where the
  // run was faster.
  void TakeFromTheRun(SessionLock& lock) const {
    std::string ended;
    while (!lock.TryTake()) {
      const std::string holder = lock.Holder();  // "database session N ...", or nobody any more
      const std::size_t begin = holder.find_first_of("0123456789");
      if (begin == std::string::npos) continue;
      const std::string number = holder.substr(begin, holder.find_first_not_of("0123456789", begin) - begin);
      if (number == ended) continue;
      ended = number;
      EndSession(*session_, GetParam(), number);
    }
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
  TakeFromTheRun(*other);
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

// Two servers of a farm have a home each, and one database.
TEST_P(LockLostTest, ARunOfAnotherHomeWaitsForTheOneThatHoldsTheDatabase) {
  const Outcome made = RunHost({"init", home_.string(), "--demo", "--database", suite_.ConnectionString(),
                                "--catalog", catalogue_.ConnectionString()});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  const std::filesystem::path second = folder_.Path() / "second" / "home";
  std::filesystem::create_directories(second.parent_path());
  std::filesystem::copy(home_, second, std::filesystem::copy_options::recursive);
  session_ = suite_.Connect();
  const long before = Prospects();
  SlowDown();

  RunningHost run({"run", "--home", home_.string(), "DormantUserExpiry"});
  const auto start = std::chrono::steady_clock::now();
  while (Prospects() == before) {
    ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(2)) << "nothing is deleted";
  }
  const Outcome refused = RunHost({"run", "--home", second.string(), "--no-wait", "DormantUserExpiry"});
  EXPECT_EQ(refused.exitCode, 75);
  EXPECT_THAT(refused.err, HasSubstr("orvane-host: the suite is held by database session "));
  EXPECT_THAT(refused.err, HasSubstr("; nothing was begun\n"));
  RunningHost waiting({"run", "--home", second.string(), "DormantUserExpiry"});
  waiting.AwaitError("; waiting\n");

  SpeedUp();
  const Outcome first = run.Wait();
  EXPECT_EQ(first.exitCode, 0) << first.err;
  const Outcome next = waiting.Wait();
  EXPECT_EQ(next.exitCode, 0) << next.err;
  EXPECT_EQ(Prospects(), 7014);
}

TEST_P(LockLostTest, NothingIsBegunWhereTheDatabaseDoesNotAnswer) {
  const Outcome made = RunHost({"init", home_.string(), "--demo", "--database", suite_.ConnectionString(),
                                "--catalog", catalogue_.ConnectionString()});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  const std::filesystem::path site = home_ / "config/siteConfiguration.xml";
  const std::string reachable = TemporaryFolder::Read(site);
  std::ofstream(site) << std::regex_replace(
      reachable, std::regex("Server=[^;]*;(Port=[^;]*;)?(Socket=[^;]*;)?"), "Server=127.0.0.1;Port=1;");
  ASSERT_NE(TemporaryFolder::Read(site), reachable);
  const Outcome outcome = RunHost({"run", "--home", home_.string(), "DormantUserExpiry"});
  EXPECT_EQ(outcome.exitCode, 69) << outcome.err;
  EXPECT_THAT(outcome.err,
              HasSubstr("orvane-host: the suite's database does not answer, nothing was begun: "));
  EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "OrvLog"));
}

INSTANTIATE_TEST_SUITE_P(Servers, LockLostTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& engine) { return engine.param; });

}  // namespace
}  // namespace orvane_test
