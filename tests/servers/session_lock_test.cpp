// The lock of a database on real servers: held by one session at a time, gone with it, and watched.
#include "platform/adodb/session/session_lock.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/adodb/odbc/provider.hpp"
#include "run/lock/database_lock.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/server_sessions.hpp"
#include "tests/servers/tcp_proxy.hpp"

namespace {

using ADODB::engine::OpenSessionLock;
using ADODB::engine::SessionLock;
using orvane_lock::DatabaseLock;
using testing::HasSubstr;

class SessionLockTest : public testing::TestWithParam<std::string> {
 protected:
  std::unique_ptr<SessionLock> Open(const std::string& connectionString) const {
    return OpenSessionLock({ADODB::odbc::MakeProvider()}, connectionString, "orvane-host 42 on alpha");
  }
  std::unique_ptr<SessionLock> Open() const { return Open(database_.ConnectionString()); }

  // The server ends a session some time after it was told to.
  static void TakeOnceFree(SessionLock& lock) {
    while (!lock.TryTake()) {
    }
  }

  orvane_test::ServerDatabase database_{GetParam()};
};

TEST_P(SessionLockTest, IsHeldByOneSessionAtATime) {
  auto first = Open();
  const auto second = Open();
  EXPECT_FALSE(first->IsHeld());
  ASSERT_TRUE(first->TryTake());
  EXPECT_TRUE(first->IsHeld());
  EXPECT_FALSE(second->TryTake());
  EXPECT_FALSE(second->IsHeld());
  first.reset();
  TakeOnceFree(*second);
  EXPECT_TRUE(second->IsHeld());
}

TEST_P(SessionLockTest, TellsWhoHoldsIt) {
  const auto first = Open();
  const auto second = Open();
  EXPECT_EQ(second->Holder(), "");
  ASSERT_TRUE(first->TryTake());
  EXPECT_THAT(second->Holder(), testing::StartsWith("database session "));
  EXPECT_THAT(second->Holder(), HasSubstr(" from "));
  if (GetParam() == "postgresql") {
    EXPECT_THAT(second->Holder(), HasSubstr(", orvane-host 42 on alpha, since "));
  }
}

TEST_P(SessionLockTest, AnotherDatabaseIsAnotherMatter) {
  const orvane_test::ServerDatabase other(GetParam());
  const auto first = Open();
  const auto second = Open(other.ConnectionString());
  EXPECT_TRUE(first->TryTake());
  EXPECT_TRUE(second->TryTake());
  EXPECT_TRUE(first->IsHeld());
}

TEST_P(SessionLockTest, TheJobsAccountNeedsNoRightsForIt) {
  database_.RunSchemaFile(GetParam() + ".sql");
  database_.GrantJobs("grants-" + GetParam() + ".sql");
  const auto first = Open(database_.JobsConnectionString());
  const auto second = Open(database_.JobsConnectionString());
  ASSERT_TRUE(first->TryTake());
  EXPECT_FALSE(second->TryTake());
  EXPECT_THAT(second->Holder(), testing::StartsWith("database session "));
}

TEST_P(SessionLockTest, ASessionThatTheServerEndsHasItNoMore) {
  const auto first = Open();
  ASSERT_TRUE(first->TryTake());
  orvane_test::EndOtherSessions(database_, GetParam());
  EXPECT_FALSE(first->IsHeld());
}

TEST_P(SessionLockTest, ALockThatWentWithItsSessionIsTakenAgain) {
  DatabaseLock lock([this] { return Open(); }, std::chrono::hours(1));
  ASSERT_TRUE(lock.TryTake());
  EXPECT_TRUE(lock.IsHeld());
  orvane_test::EndOtherSessions(database_, GetParam());
  EXPECT_TRUE(lock.IsHeld());
  EXPECT_FALSE(Open()->TryTake());
}

TEST_P(SessionLockTest, ALockThatSomebodyElseHasTakenMeanwhileIsLostForGood) {
  DatabaseLock lock([this] { return Open(); }, std::chrono::hours(1));
  ASSERT_TRUE(lock.TryTake());
  orvane_test::EndOtherSessions(database_, GetParam());
  auto other = Open();
  TakeOnceFree(*other);
  EXPECT_FALSE(lock.IsHeld());
  other.reset();
  EXPECT_FALSE(lock.IsHeld());
}

TEST_P(SessionLockTest, TheWatcherNoticesWithoutBeingAsked) {
  int opened = 0;
  std::mutex mutex;
  std::condition_variable again;
  DatabaseLock lock(
      [&] {
        const std::lock_guard counting(mutex);
        ++opened;
        again.notify_all();
        return Open();
      },
      std::chrono::milliseconds(20));
  ASSERT_TRUE(lock.TryTake());
  orvane_test::EndOtherSessions(database_, GetParam());
  std::unique_lock waiting(mutex);
  EXPECT_TRUE(again.wait_for(waiting, std::chrono::minutes(1), [&] { return opened >= 2; }));
}

// What a cut cable looks like: nothing comes back, and nothing says so.
TEST_P(SessionLockTest, ALockWhoseDatabaseOwesAnAnswerForTooLongIsLost) {
  std::atomic<bool> cut = false;
  std::promise<void> ended;
  const std::shared_future<void> end = ended.get_future().share();
  auto text = ADODB::engine::ConnectionString::Parse(database_.ConnectionString());
  orvane_test::TcpProxy proxy(std::stoi(text.Value("Port").value()), [&cut, end](std::string_view) {
    if (cut) end.wait();
    return orvane_test::TcpProxy::Fate::PassedOn;
  });
  text.Set("Server", "127.0.0.1");
  text.Set("Port", std::to_string(proxy.Port()));
  const auto open = [this, through = text.ToString()] { return Open(through); };
  {
    DatabaseLock patient(open, std::chrono::milliseconds(20));
    ASSERT_TRUE(patient.TryTake());
    EXPECT_TRUE(patient.IsHeld());
    EXPECT_FALSE(patient.IsLost());
  }
  {
    // On a busy machine an answer may take as long as this waits for one, so it is not asked before.
    DatabaseLock lock(open, std::chrono::milliseconds(20), std::chrono::milliseconds(300));
    while (!lock.TryTake()) {
    }
    cut = true;
    EXPECT_FALSE(lock.IsHeld());
    EXPECT_TRUE(lock.IsLost());
  }
  ended.set_value();
}

INSTANTIATE_TEST_SUITE_P(Servers, SessionLockTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
