#include "platform/adodb/session/pool.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "platform/adodb/engines/sqlite/dialect.hpp"
#include "platform/automation/error.hpp"

namespace {

using ADODB::engine::Pool;
using namespace std::chrono_literals;

struct Counters {
  std::atomic<int> connects{0};
  std::atomic<int> open{0};
  std::atomic<int> pings{0};
  std::atomic<bool> answers{true};  // to pings
};

class CountingSession : public ADODB::engine::Session {
 public:
  explicit CountingSession(Counters& counters) : counters_(counters) { ++counters_.open; }
  ~CountingSession() override { --counters_.open; }
  std::unique_ptr<ADODB::engine::Rows> Query(const ADODB::engine::Sql&,
                                             const ADODB::engine::Parameters&) override {
    return nullptr;
  }
  std::int64_t Execute(const ADODB::engine::Sql&, const ADODB::engine::Parameters&) override { return 0; }
  void Begin() override {}
  void Commit() override {}
  void Rollback() override {}
  void SetIsolationLevel(ADODB::IsolationLevel) override {}
  ADODB::engine::TableShape Describe(const std::string&) override { return {}; }
  bool Reset() override { return !dead; }
  bool Ping() override {
    ++counters_.pings;
    return counters_.answers;
  }
  const ADODB::engine::Dialect& GetDialect() const override { return ADODB::engine::SqliteDialect(); }

  bool dead = false;
  std::atomic<int> users{0};

 private:
  Counters& counters_;
};

class CountingProvider : public ADODB::engine::Provider {
 public:
  explicit CountingProvider(Counters& counters) : counters_(counters) {}
  std::string_view Name() const override { return "Counting"; }
  std::unique_ptr<ADODB::engine::Session> Connect(const ADODB::engine::ConnectionString& text) override {
    ++counters_.connects;
    EXPECT_EQ(text.Value("Provider"), std::nullopt);
    return std::make_unique<CountingSession>(counters_);
  }

 private:
  Counters& counters_;
};

class PoolTest : public testing::Test {
 protected:
  Pool::Lease Acquire(std::string_view text = "Provider=counting;A=1") { return pool->Acquire(text, "", ""); }

  Counters counters;
  std::chrono::steady_clock::time_point now{};
  std::unique_ptr<Pool> pool = std::make_unique<Pool>(
      std::vector<std::shared_ptr<ADODB::engine::Provider>>{std::make_shared<CountingProvider>(counters)},
      [this] { return now; });
};

TEST_F(PoolTest, HandsOutTheSessionThatCameBackLast) {
  auto first = Acquire();
  auto second = Acquire();
  const auto* last = second->session.get();
  pool->GiveBack(std::move(first));
  pool->GiveBack(std::move(second));
  EXPECT_EQ(Acquire()->session.get(), last);
  EXPECT_EQ(counters.connects, 2);
  EXPECT_EQ(counters.pings, 0);
}

TEST_F(PoolTest, KeepsConnectionStringsAndUsersApart) {
  pool->GiveBack(Acquire());
  pool->GiveBack(Acquire("Provider=counting;A=2"));
  pool->GiveBack(pool->Acquire("Provider=counting;A=1", "user", "secret"));
  EXPECT_EQ(counters.connects, 3);
  EXPECT_EQ(counters.open, 3);
}

// Whoever has lost a password must not go on with what its owner opened.
TEST_F(PoolTest, GivesNoSessionToAnotherPasswordOrUser) {
  const std::string text = "Provider=counting;A=1";
  auto owners = pool->Acquire(text, "user", "secret");
  const auto* const session = owners->session.get();
  pool->GiveBack(std::move(owners));
  struct Case {
    std::string user;
    std::string password;
  };
  std::vector<Pool::Lease> others;
  for (const auto& [user, password] :
       {Case{"user", "other"}, Case{"user", ""}, Case{"", "secret"}, Case{"usersecret", ""}, Case{"", ""}}) {
    others.push_back(pool->Acquire(text, user, password));
    EXPECT_NE(others.back()->session.get(), session) << user << ' ' << password;
  }
  EXPECT_EQ(counters.connects, 6);
  EXPECT_EQ(pool->Acquire(text, "user", "secret")->session.get(), session);
}

TEST_F(PoolTest, ThrowsADeadSessionAwayAndAsksItsCompanions) {
  auto first = Acquire();
  auto second = Acquire();
  auto third = Acquire();
  static_cast<CountingSession&>(*third->session).dead = true;
  pool->GiveBack(std::move(first));
  pool->GiveBack(std::move(second));
  pool->GiveBack(std::move(third));
  EXPECT_EQ(counters.open, 2);
  counters.answers = false;
  auto fresh = Acquire();
  EXPECT_EQ(counters.pings, 2);
  EXPECT_EQ(counters.connects, 4);
  EXPECT_EQ(counters.open, 1);
}

// What killed one, say a restart of the server, may have killed those that were in use at the time.
TEST_F(PoolTest, AsksASessionThatWasInUseWhenAnotherDied) {
  auto first = Acquire();
  auto second = Acquire();
  static_cast<CountingSession&>(*second->session).dead = true;
  pool->GiveBack(std::move(second));
  pool->GiveBack(std::move(first));
  auto answering = Acquire();
  EXPECT_EQ(counters.pings, 1);
  EXPECT_EQ(counters.connects, 2);
  pool->GiveBack(std::move(answering));
  auto asked = Acquire();
  EXPECT_EQ(counters.pings, 1) << "it has answered since";
}

TEST_F(PoolTest, AsksASessionThatHasBeenIdleForAWhile) {
  pool->GiveBack(Acquire());
  now += 3s;
  pool->GiveBack(Acquire());
  EXPECT_EQ(counters.pings, 1);
  counters.answers = false;
  now += 3s;
  pool->GiveBack(Acquire());
  EXPECT_EQ(counters.connects, 2);
  EXPECT_EQ(counters.open, 1);
}

TEST_F(PoolTest, ClosesSessionsThatNobodyUses) {
  auto first = Acquire();
  auto second = Acquire();
  pool->GiveBack(std::move(first));
  pool->GiveBack(std::move(second));
  now += 121s;
  const auto fresh = Acquire();
  EXPECT_EQ(counters.open, 1);
  EXPECT_EQ(counters.pings, 0);
}

TEST_F(PoolTest, KeepsABoundedNumber) {
  std::vector<Pool::Lease> leases;
  for (int i = 0; i < 20; ++i) leases.push_back(Acquire());
  for (Pool::Lease& lease : leases) pool->GiveBack(std::move(lease));
  EXPECT_EQ(counters.open, Pool::kMostIdle);
  EXPECT_EQ(counters.open, 8);
  pool.reset();
  EXPECT_EQ(counters.open, 0);
}

TEST_F(PoolTest, SaysThatNoProviderServesAString) {
  for (const char* text : {"Provider=Other", "Driver={PostgreSQL Unicode}"}) {
    try {
      Acquire(text);
      FAIL();
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), 3706);
    }
  }
}

TEST_F(PoolTest, NeverGivesOneSessionToTwoThreads) {
  std::atomic<int> clashes{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        auto lease = Acquire();
        auto& session = static_cast<CountingSession&>(*lease->session);
        if (++session.users != 1) ++clashes;
        session.dead = i % 50 == 49;
        --session.users;
        pool->GiveBack(std::move(lease));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(clashes, 0);
}

}  // namespace
