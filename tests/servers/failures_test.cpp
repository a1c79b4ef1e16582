// What happens to the users of the database classes when their server stops, refuses or holds them up.
#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/error.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using automation::Variant;
using testing::AnyOf;
using testing::HasSubstr;

// A server of its own for each test, since it is stopped under the feet of its users.
class ServerFailureTest : public testing::TestWithParam<std::string> {
 protected:
  ServerFailureTest() {
    ADODB::RegisterClasses(runtime_.runtime.classes, {ADODB::odbc::MakeProvider()});
    database_.Execute("CREATE TABLE PROSPECT (ID INTEGER PRIMARY KEY, PENDINGQUESTIONS INTEGER)");
    const auto session = database_.Connect();
    session->Begin();
    for (int id = 1; id <= kRows; ++id) {
      session->Execute("INSERT INTO PROSPECT VALUES (?, 0)", {Variant(std::int32_t{id})});
    }
    session->Commit();
  }

  bool OnPostgreSql() const { return GetParam() == "postgresql"; }

  ADODB::ConnectionPtr Connect(const std::string& options = {}) {
    auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(database_.ConnectionString() + options, "", "", -1);
    connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted);
    return connection;
  }

  // What drivers say when the server is no longer there.
  static testing::Matcher<const std::string&> LostConnection() {
    return AnyOf(HasSubstr("terminating connection"), HasSubstr("server closed the connection"),
                 HasSubstr("could not send"), HasSubstr("could not receive"),
                 HasSubstr("no connection to the server"), HasSubstr("Connection was killed"),
                 HasSubstr("server has gone away"), HasSubstr("Lost connection"), HasSubstr("link failure"));
  }

  static std::string Message(const std::function<void()>& action) {
    const automation::Error error = orvane_test::ErrorOf(action);
    EXPECT_FALSE(error.SqlState().empty());
    return error.Description();
  }

  static void Touch(const ADODB::ConnectionPtr& connection, int id) {
    ADODB::Statement sql = "UPDATE PROSPECT SET PENDINGQUESTIONS = PENDINGQUESTIONS + 1 WHERE ID = ";
    sql += ADODB::SqlValue(std::int32_t{id});
    connection->Execute(sql, nullptr, ADODB::kExecuteNoRecords);
  }

  int Count() {
    const auto session = database_.Connect();
    const auto rows = session->Query("SELECT COUNT(*) FROM PROSPECT", {});
    EXPECT_TRUE(rows->Next());
    return automation::ToInt32(rows->Value(0));
  }

  static constexpr int kRows = 3000;  // more than the cursor engine reads at a time
  orvane_test::TestRuntime runtime_;
  orvane_test::Server server_ = orvane_test::Server::StartOwn(GetParam());
  orvane_test::ServerDatabase database_{server_, GetParam()};
};

TEST_P(ServerFailureTest, AWalkEndsWithTheEnginesMessageAndKeepsWhatItDeleted) {
  const auto connection = Connect();
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic,
             -1);
  int deleted = 0;
  const std::string message = Message([&] {
    for (; !rows->Eof(); rows->MoveNext()) {
      if (deleted == 100) server_.Halt();
      rows->Delete(ADODB::Affect::Current);
      ++deleted;
    }
  });
  EXPECT_EQ(deleted, 100);
  EXPECT_THAT(message, LostConnection());
  rows->Close();
  connection->Close();

  server_.Resume();
  EXPECT_EQ(Count(), kRows - 100);
  Touch(Connect(), 101);  // the next run works
}

TEST_P(ServerFailureTest, APooledConnectionThatDiedIsHandedOutOnceAtMost) {
  {
    const auto first = Connect();
    const auto second = Connect();
    Touch(first, 1);
    Touch(second, 2);
    first->Close();
    second->Close();
  }
  server_.Kill();
  server_.Resume();
  int failures = 0;
  for (int attempt = 0; attempt < 4; ++attempt) {
    const auto connection = Connect();
    try {
      Touch(connection, 3);
    } catch (const automation::Error& error) {
      EXPECT_THAT(error.Description(), LostConnection());
      ++failures;
    }
    connection->Close();
  }
  EXPECT_LE(failures, 1);
}

// As jobs walk: the connection has prepared statements and an open record set when it dies.
TEST_P(ServerFailureTest, AConnectionThatDiedInAWalkIsNotHandedOutAgain) {
  const auto connection = Connect();
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic,
             -1);
  server_.Kill();
  server_.Resume();
  EXPECT_THAT(Message([&] {
                rows->SetValue("PENDINGQUESTIONS", std::int32_t{1});
                rows->Update();
              }),
              LostConnection());
  rows->Close();
  connection->Close();
  EXPECT_NO_THROW(Touch(Connect(), 1));
}

TEST_P(ServerFailureTest, AnIdleConnectionIsAskedBeforeItIsUsed) {
  const auto idle = Connect();
  Touch(idle, 1);
  idle->Close();
  server_.Halt();
  server_.Resume();
  std::this_thread::sleep_for(std::chrono::milliseconds(2200));
  const auto connection = Connect();
  EXPECT_NO_THROW(Touch(connection, 1));
}

TEST_P(ServerFailureTest, OpeningFailsWhileTheServerIsDownAndWorksAgainAfterwards) {
  server_.Halt();
  EXPECT_THAT(Message([&] { Connect(); }),
              AnyOf(HasSubstr("Connection refused"), HasSubstr("Can't connect to server")));
  server_.Resume();
  Touch(Connect(), 1);
}

TEST_P(ServerFailureTest, ATransactionCutOffByTheServerLeavesNothing) {
  const auto connection = Connect();
  connection->BeginTrans();
  connection->Execute("DELETE FROM PROSPECT WHERE ID = 1", nullptr, ADODB::kExecuteNoRecords);
  server_.Kill();
  server_.Resume();
  EXPECT_THAT(Message([&] {
                connection->Execute("DELETE FROM PROSPECT WHERE ID = 2", nullptr, ADODB::kExecuteNoRecords);
              }),
              LostConnection());
  try {
    connection->RollbackTrans();
  } catch (const automation::Error& error) {
    // The server has rolled back already; whether the driver objects is its own affair.
    EXPECT_THAT(
        error.Description(),
        testing::AnyOf(LostConnection(), testing::StrEq("The connection was lost during the transaction.")));
  }
  EXPECT_NO_THROW(connection->Close());
  EXPECT_EQ(Count(), kRows);
}

TEST_P(ServerFailureTest, ACommitThatTheServerDoesNotTakeIsReported) {
  const auto connection = Connect();
  connection->BeginTrans();
  connection->Execute("DELETE FROM PROSPECT WHERE ID = 1", nullptr, ADODB::kExecuteNoRecords);
  server_.Kill();
  server_.Resume();
  const automation::Error error = orvane_test::ErrorOf([&] { connection->CommitTrans(); });
  EXPECT_EQ(error.Outcome(), automation::Outcome::Unknown);
  EXPECT_FALSE(error.SqlState().empty());
  EXPECT_THAT(error.Description(), LostConnection());
  connection->Close();
  EXPECT_EQ(Count(), kRows);
}

TEST_P(ServerFailureTest, AKilledSessionFailsOnceAndIsReplaced) {
  const auto connection = Connect();
  const auto id = connection->Execute(
      ADODB::SqlFragment(OnPostgreSql() ? "SELECT pg_backend_pid()" : "SELECT connection_id()"), nullptr,
      ADODB::kCommandText);
  const std::string number = automation::ToText(id->Value(0u));
  id->Close();
  database_.Execute(OnPostgreSql() ? "SELECT pg_terminate_backend(" + number + ")" : "KILL " + number);
  EXPECT_THAT(Message([&] { Touch(connection, 1); }), LostConnection());
  connection->Close();
  Touch(Connect(), 1);
}

TEST_P(ServerFailureTest, ALockThatIsNotGivenUpInTimeIsReportedAndTheConnectionGoesOn) {
  const auto holder = Connect();
  holder->BeginTrans();
  Touch(holder, 1);
  const auto waiting = Connect(OnPostgreSql() ? ";ConnSettings=SET+lock_timeout%3D'300ms'"
                                              : ";INITSTMT={SET SESSION innodb_lock_wait_timeout=1}");
  EXPECT_THAT(Message([&] { Touch(waiting, 1); }), AnyOf(HasSubstr("canceling statement due to lock timeout"),
                                                         HasSubstr("Lock wait timeout exceeded")));
  Touch(waiting, 2);
  holder->RollbackTrans();
  Touch(waiting, 1);
}

TEST_P(ServerFailureTest, AWriterWaitsForALockThatIsGivenUp) {
  const auto holder = Connect();
  holder->BeginTrans();
  Touch(holder, 1);
  std::thread releases([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    holder->CommitTrans();
  });
  EXPECT_NO_THROW(Touch(Connect(), 1));
  releases.join();
}

TEST_P(ServerFailureTest, OneOfTwoInADeadlockIsRefusedAndTheOtherGoesOn) {
  const auto first = Connect();
  const auto second = Connect();
  first->BeginTrans();
  second->BeginTrans();
  Touch(first, 1);
  Touch(second, 2);
  const auto cross = [](const ADODB::ConnectionPtr& connection, int id) -> std::string {
    try {
      Touch(connection, id);
      connection->CommitTrans();
      return "committed";
    } catch (const automation::Error& error) {
      connection->RollbackTrans();
      return error.SqlState();
    }
  };
  std::string one;
  std::thread other([&] { one = cross(first, 2); });
  const std::string another = cross(second, 1);
  other.join();
  EXPECT_THAT((std::vector{one, another}),
              testing::UnorderedElementsAre("committed", OnPostgreSql() ? "40P01" : "40001"));
  Touch(first, 1);
  Touch(second, 2);
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerFailureTest, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

}  // namespace
