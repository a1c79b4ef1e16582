// What a failure tells about the changes that it interrupted: whether they may be there, and what the session
// and its transaction are still good for.
#include <gmock/gmock.h>

#include <cctype>
#include <functional>
#include <memory>
#include <string>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/servers/tcp_proxy.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using automation::Outcome;
using orvane_test::ErrorOf;
using orvane_test::TcpProxy;
using testing::AnyOf;
using testing::StartsWith;

bool HoldsWord(std::string_view sent, std::string_view word) {
  std::string upper;
  for (const char c : sent) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper.find(word) != std::string::npos;
}

class CommitOutcomeTest : public testing::TestWithParam<std::string> {
 protected:
  CommitOutcomeTest() {
    ADODB::RegisterClasses(runtime_.runtime.classes, {ADODB::odbc::MakeProvider()});
    database_.Execute(
        OnPostgreSql() ? "CREATE TABLE ITEM (ID INTEGER PRIMARY KEY, N INTEGER, CONSTRAINT once UNIQUE (N) "
                         "DEFERRABLE INITIALLY DEFERRED)"
                       : "CREATE TABLE ITEM (ID INTEGER PRIMARY KEY, N INTEGER)");
    database_.Execute("INSERT INTO ITEM VALUES (1, 1), (2, 2), (3, 3)");
  }

  bool OnPostgreSql() const { return GetParam() == "postgresql"; }

  static ADODB::ConnectionPtr Connect(const std::string& text) {
    auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(text, "", "", -1);
    return connection;
  }

  // A connection through a proxy that deals with the first piece that holds `word` in its own way.
  ADODB::ConnectionPtr ConnectThrough(std::string word, TcpProxy::Fate fate) {
    auto text = ADODB::engine::ConnectionString::Parse(database_.ConnectionString());
    proxy_ = std::make_unique<TcpProxy>(
        std::stoi(text.Value("Port").value()), [this, word = std::move(word), fate](std::string_view sent) {
          return armed_ && HoldsWord(sent, word) ? fate : TcpProxy::Fate::PassedOn;
        });
    text.Set("Server", "127.0.0.1");
    text.Set("Port", std::to_string(proxy_->Port()));
    return Connect(text.ToString());
  }

  static void Run(const ADODB::ConnectionPtr& connection, const char* sql) {
    connection->Execute(ADODB::SqlFragment(sql), nullptr, ADODB::kExecuteNoRecords);
  }

  std::int64_t Items() {
    const auto session = database_.Connect();
    const auto rows = session->Query("SELECT COUNT(*) FROM ITEM", {});
    EXPECT_TRUE(rows->Next());
    return automation::ToInt64(rows->Value(0));
  }

  orvane_test::TestRuntime runtime_;
  orvane_test::ServerDatabase database_{GetParam()};
  bool armed_ = false;
  std::unique_ptr<TcpProxy> proxy_;
};

TEST_P(CommitOutcomeTest, ACommitWhoseAnswerNeverComesMayBeDone) {
  const auto connection = ConnectThrough("COMMIT", TcpProxy::Fate::Unanswered);
  connection->BeginTrans();
  Run(connection, "DELETE FROM ITEM WHERE ID = 1");
  armed_ = true;
  const automation::Error error = ErrorOf([&] { connection->CommitTrans(); });
  EXPECT_EQ(error.Outcome(), Outcome::Unknown);
  EXPECT_THAT(error.SqlState(), AnyOf(StartsWith("08"), "HY000"));
  EXPECT_EQ(Items(), 2);
}

TEST_P(CommitOutcomeTest, ACommitThatNeverArrivesMayBeDoneForAllThatTheSenderKnows) {
  const auto connection = ConnectThrough("COMMIT", TcpProxy::Fate::CutOff);
  connection->BeginTrans();
  Run(connection, "DELETE FROM ITEM WHERE ID = 1");
  armed_ = true;
  EXPECT_EQ(ErrorOf([&] { connection->CommitTrans(); }).Outcome(), Outcome::Unknown);
  // Nothing is left to roll back; the next user gets another session.
  EXPECT_EQ(ErrorOf([&] { connection->RollbackTrans(); }).SqlState(), "08003");
  EXPECT_EQ(ErrorOf([&] { connection->RollbackTrans(); }).Number(), 3001);
  connection->Close();
  EXPECT_EQ(Items(), 3);
}

TEST_P(CommitOutcomeTest, AStatementOfItsOwnWhoseAnswerNeverComesMayBeDone) {
  const auto connection = ConnectThrough("DELETE", TcpProxy::Fate::Unanswered);
  armed_ = true;
  EXPECT_EQ(ErrorOf([&] { Run(connection, "DELETE FROM ITEM WHERE ID = 1"); }).Outcome(), Outcome::Unknown);
  EXPECT_EQ(Items(), 2);
}

TEST_P(CommitOutcomeTest, AStatementOfATransactionThatIsLostIsNotDone) {
  const auto connection = ConnectThrough("DELETE", TcpProxy::Fate::Unanswered);
  connection->BeginTrans();
  armed_ = true;
  EXPECT_EQ(ErrorOf([&] { Run(connection, "DELETE FROM ITEM WHERE ID = 1"); }).Outcome(), Outcome::NotDone);
  // A commit is not even sent, by a driver that believes itself outside a transaction.
  const automation::Error commit = ErrorOf([&] { connection->CommitTrans(); });
  EXPECT_EQ(commit.SqlState(), "08003");
  EXPECT_EQ(commit.Outcome(), Outcome::NotDone);
  EXPECT_EQ(Items(), 3);
}

TEST_P(CommitOutcomeTest, AStatementThatTheServerRefusesIsNotDoneAndTheSessionGoesOn) {
  const auto connection = Connect(database_.ConnectionString());
  const automation::Error error = ErrorOf([&] { Run(connection, "INSERT INTO ITEM VALUES (1, 9)"); });
  EXPECT_EQ(error.Outcome(), Outcome::NotDone);
  EXPECT_THAT(error.SqlState(), StartsWith("23"));
  Run(connection, "DELETE FROM ITEM WHERE ID = 1");
  EXPECT_EQ(Items(), 2);
}

// The engine looks at the constraint when the transaction ends.
TEST_P(CommitOutcomeTest, ACommitThatTheServerRefusesIsNotDoneAndIsRolledBack) {
  if (!OnPostgreSql()) GTEST_SKIP() << "has no constraints that wait for the commit";
  const auto connection = Connect(database_.ConnectionString());
  connection->BeginTrans();
  Run(connection, "DELETE FROM ITEM WHERE ID = 1");
  Run(connection, "INSERT INTO ITEM VALUES (4, 2)");
  const automation::Error error = ErrorOf([&] { connection->CommitTrans(); });
  EXPECT_EQ(error.Outcome(), Outcome::NotDone);
  EXPECT_EQ(error.SqlState(), "23505");
  // Nothing is left of the transaction, so a second commit could only pretend.
  EXPECT_EQ(ErrorOf([&] { connection->CommitTrans(); }).Number(), 3001);
  Run(connection, "DELETE FROM ITEM WHERE ID = 3");  // goes with the transaction
  connection->RollbackTrans();
  EXPECT_EQ(Items(), 3);
  Run(connection, "DELETE FROM ITEM WHERE ID = 2");  // and this one is permanent again
  connection->Close();
  EXPECT_EQ(Items(), 2);
}

INSTANTIATE_TEST_SUITE_P(Servers, CommitOutcomeTest, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

}  // namespace
