// Previews on real servers: one transaction for all connections, and nothing left of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/session/preview_provider.hpp"
#include "tests/adodb/preview_steps.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/server_sessions.hpp"

namespace orvane_test {
namespace {

using ADODB::engine::ConnectionString;
using ADODB::engine::PreviewFailure;
using ADODB::engine::Session;
using testing::ElementsAre;
using testing::IsEmpty;

class PreviewSessionTest : public testing::TestWithParam<std::string> {
 protected:
  PreviewSessionTest() {
    database_.Execute("CREATE TABLE T(ID INTEGER PRIMARY KEY, NAME VARCHAR(50))");
    database_.Execute("INSERT INTO T VALUES(1,'one'),(2,'two')");
    Begin();
  }

  void Begin() {
    provider_ = ADODB::engine::MakePreviewProvider(
        ADODB::odbc::MakeProvider(),
        {.failed = [this](const PreviewFailure& failure) { failures_.push_back(failure); }, .isCopy = false});
  }

  std::unique_ptr<Session> Connect() const {
    return provider_->Connect(ConnectionString::Parse(database_.ConnectionString()));
  }

  std::vector<std::string> NamesForOthers() const { return NamesOf(*database_.Connect()); }

  ServerDatabase database_{GetParam()};
  std::vector<PreviewFailure> failures_;
  std::shared_ptr<ADODB::engine::Provider> provider_;
};

TEST_P(PreviewSessionTest, EveryConnectionSeesWhatOneHasChangedAndNothingIsLeftOfIt) {
  {
    const auto one = Connect();
    const auto other = Connect();
    one->Execute("DELETE FROM T WHERE ID = 1", {});
    other->Execute("INSERT INTO T VALUES(3,'three')", {});
    EXPECT_THAT(NamesOf(*one), ElementsAre("two", "three"));
    EXPECT_THAT(NamesForOthers(), ElementsAre("one", "two"));
  }
  provider_.reset();
  EXPECT_THAT(NamesForOthers(), ElementsAre("one", "two"));
  EXPECT_THAT(failures_, IsEmpty());
}

TEST_P(PreviewSessionTest, RollsBackWhatAConnectionRollsBackOrLeavesOpen) {
  RollBackSomeAndDeleteTheSecond([this] { return Connect(); });
  EXPECT_THAT(NamesOf(*Connect()), ElementsAre("one"));
  EXPECT_THAT(NamesForOthers(), ElementsAre("one", "two"));
}

TEST_P(PreviewSessionTest, AFailedStatementLeavesTheOthersAsTheyAre) {
  const auto session = Connect();
  session->Execute("DELETE FROM T WHERE ID = 2", {});
  EXPECT_THROW(session->Execute("INSERT INTO T VALUES(1,'again')", {}), automation::Error);
  EXPECT_THROW(session->Query("SELECT NONE FROM T", {}), automation::Error);
  session->Begin();
  session->Execute("INSERT INTO T VALUES(4,'four')", {});
  EXPECT_THROW(session->Execute("INSERT INTO T VALUES(1,'again')", {}), automation::Error);
  session->Commit();
  EXPECT_THAT(NamesOf(*session), ElementsAre("one", "four"));
  EXPECT_THAT(failures_, IsEmpty());
  provider_.reset();
  EXPECT_THAT(NamesForOthers(), ElementsAre("one", "two"));
}

TEST_P(PreviewSessionTest, EndsWhenItsSessionIsLost) {
  const auto session = Connect();
  session->Execute("DELETE FROM T WHERE ID = 1", {});
  EndOtherSessions(database_, GetParam());
  EXPECT_THROW(session->Execute("DELETE FROM T WHERE ID = 2", {}), automation::Error);
  ASSERT_EQ(failures_.size(), 1U);
  EXPECT_EQ(failures_.front().kind, PreviewFailure::Kind::Unreachable);
  // Nothing is done on a session of another life.
  EXPECT_THROW(Connect()->Execute("DELETE FROM T", {}), automation::Error);
  EXPECT_THAT(NamesForOthers(), ElementsAre("one", "two"));
}

TEST_P(PreviewSessionTest, EndsWhereSomebodyElsesLockStandsInTheWay) {
  const auto session = Connect();
  session->Execute(
      GetParam() == "postgresql" ? "SET lock_timeout = '1s'" : "SET SESSION innodb_lock_wait_timeout = 1",
      {});
  const auto other = database_.Connect();
  other->Begin();
  other->Execute("UPDATE T SET NAME = 'mine' WHERE ID = 1", {});
  EXPECT_THROW(session->Execute("DELETE FROM T WHERE ID = 1", {}), automation::Error);
  ASSERT_EQ(failures_.size(), 1U);
  EXPECT_EQ(failures_.front().kind, PreviewFailure::Kind::Locked);
  other->Commit();
  EXPECT_THAT(NamesForOthers(), ElementsAre("mine", "two"));
}

TEST_P(PreviewSessionTest, SaysWhenItBeginsToHoldLocksAndLetsNoStatementTakeLonger) {
  int began = 0;
  provider_ = ADODB::engine::MakePreviewProvider(ADODB::odbc::MakeProvider(),
                                                 {.failed = nullptr,
                                                  .isCopy = false,
                                                  .holdsLocks = [&began] { ++began; },
                                                  .longestStatement = std::chrono::seconds(1)});
  EXPECT_EQ(began, 0);
  const auto session = Connect();
  EXPECT_EQ(began, 1);
  const auto start = std::chrono::steady_clock::now();
  try {
    session
        ->Query(
            GetParam() == "postgresql" ? "SELECT pg_sleep(600)" : "SELECT BENCHMARK(100000000000, md5('x'))",
            {})
        ->Next();
  } catch (const automation::Error&) {
    // MariaDB ends this one without an error.
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(5));
}

TEST_P(PreviewSessionTest, RefusesATableThatTakesNoPartInTransactions) {
  if (GetParam() != "mariadb") GTEST_SKIP() << "every table of this engine does";
  database_.Execute("CREATE TABLE LOOSE(ID INTEGER PRIMARY KEY) ENGINE=MyISAM");
  database_.Execute("INSERT INTO LOOSE VALUES(1),(2)");
  const auto session = Connect();
  session->Query("SELECT count(*) FROM LOOSE", {})->Next();
  session->Execute("DELETE FROM T WHERE ID = 1", {});
  EXPECT_THAT(failures_, IsEmpty());
  EXPECT_THROW(session->Execute("DELETE FROM \"loose\" WHERE ID = 1", {}), automation::Error);
  ASSERT_EQ(failures_.size(), 1U);
  EXPECT_EQ(failures_.front().kind, PreviewFailure::Kind::NotTransactional);
  EXPECT_STRCASEEQ(failures_.front().what.c_str(), "LOOSE");
  const auto other = database_.Connect();
  const auto rows = other->Query("SELECT count(*) FROM LOOSE", {});
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(automation::ToInt32(rows->Value(0)), 2);
}

INSTANTIATE_TEST_SUITE_P(Servers, PreviewSessionTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
}  // namespace orvane_test
