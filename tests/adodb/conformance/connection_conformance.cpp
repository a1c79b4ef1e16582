// Opening, closing, states, and what a connection does for statements without rows.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::CursorType;
using ADODB::LockType;
using ADODB::ObjectState;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_P(Conformance, OpensAndClosesAConnection) {
  const auto connection = Connect();
  EXPECT_EQ(connection->State(), ObjectState::Open);
  connection->Close();
  EXPECT_EQ(connection->State(), ObjectState::Closed);
}

TEST_P(Conformance, RefusesToOpenAnOpenConnection) {
  const auto connection = Connect();
  EXPECT_EQ(NumberOf([&] { connection->Open(engine->ConnectionString(), "", "", -1); }), 3705);
}

TEST_P(Conformance, RefusesEverythingOnAClosedConnection) {
  const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  EXPECT_EQ(NumberOf([&] { connection->Close(); }), 3704);
  EXPECT_EQ(NumberOf([&] { connection->Execute("SELECT 1", nullptr, -1); }), 3704);
  EXPECT_EQ(NumberOf([&] { connection->BeginTrans(); }), 3704);
  EXPECT_EQ(NumberOf([&] { connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted); }), 3704);
  EXPECT_EQ(NumberOf([&] { Open("SELECT 1", connection, CursorType::ForwardOnly, LockType::ReadOnly); }),
            3704);
}

TEST_P(Conformance, SaysThatNoProviderServesAString) {
  const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  const auto error = ErrorOf([&] { connection->Open("Provider=NoSuch;Data Source=x", "", "", -1); });
  EXPECT_EQ(error.Number(), 3706);
  EXPECT_EQ(error.Description(), "Provider cannot be found. It may not be properly installed.");
}

TEST_P(Conformance, TellsTheEnginesOwnMessageWhenADatabaseCannotBeReached) {
  const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  const auto error = ErrorOf([&] { connection->Open(engine->UnreachableConnectionString(), "", "", -1); });
  EXPECT_FALSE(error.Description().empty());
  EXPECT_FALSE(error.SqlState().empty());
  EXPECT_EQ(connection->State(), ObjectState::Closed);
}

TEST_P(Conformance, UsesAPhysicalConnectionAgain) {
  for (int i = 0; i < 5; ++i) Connect()->Close();
  EXPECT_EQ(faults->connects, 1);
}

TEST_P(Conformance, DoesNotUseADeadConnectionAgain) {
  MakeNumbers(1);
  faults->sessionsDie = true;
  faults->failMatching = "NUMBERS";
  const auto connection = Connect();
  EXPECT_EQ(NumberOf([&] { connection->Execute("DELETE FROM NUMBERS", nullptr, -1); }),
            faults->error.Number());
  connection->Close();
  faults->failMatching.clear();
  faults->sessionsDie = false;
  Connect()->Execute("DELETE FROM NUMBERS", nullptr, -1);
  EXPECT_EQ(faults->connects, 2);
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS"), IsEmpty());
}

TEST_P(Conformance, TellsHowManyRowsAStatementAffected) {
  MakeNumbers(10);
  const auto connection = Connect();
  std::int64_t affected = -7;
  EXPECT_EQ(connection->Execute("DELETE FROM NUMBERS WHERE VALUE = 0", &affected, ADODB::kExecuteNoRecords),
            nullptr);
  EXPECT_EQ(affected, 3);
  connection->Execute("DELETE FROM NUMBERS WHERE VALUE = 0", &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 0);
  connection->Execute("UPDATE NUMBERS SET NAME = NAME", &affected, -1);
  EXPECT_EQ(affected, 7);
}

TEST_P(Conformance, GivesTheRowsOfAnExecutedSelect) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto rows = connection->Execute("SELECT NAME FROM NUMBERS ORDER BY ID", nullptr, -1);
  ASSERT_NE(rows, nullptr);
  EXPECT_EQ(rows->RecordCount(), -1);
  EXPECT_THAT(Walk(*rows, "NAME"), ElementsAre("n1", "n2", "n3"));
  EXPECT_EQ(connection->Execute("SELECT NAME FROM NUMBERS", nullptr, ADODB::kExecuteNoRecords), nullptr);
}

TEST_P(Conformance, ClosingAConnectionClosesItsRecordSets) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  connection->Close();
  EXPECT_EQ(rows->State(), ObjectState::Closed);
  EXPECT_EQ(NumberOf([&] { rows->MoveNext(); }), 3704);
}

TEST_P(Conformance, ARecordSetKeepsItsConnectionAlive) {
  MakeNumbers(2000);
  auto connection = Connect();
  auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  connection.reset();
  EXPECT_EQ(Walk(*rows, "ID").size(), 2000u);
  rows.reset();
  Connect();
  EXPECT_EQ(faults->connects, 1);
}

TEST_P(Conformance, RunsACommandOnItsConnection) {
  MakeNumbers(4);
  const auto command = automation::CreateObject<ADODB::Command>("ADODB.Command");
  command->SetCommandText("DELETE FROM NUMBERS WHERE ID > 1");
  EXPECT_EQ(NumberOf([&] { command->Execute(nullptr, -1); }), 3001);
  command->SetActiveConnection(Connect());
  std::int64_t affected = 0;
  command->Execute(&affected, -1);
  EXPECT_EQ(affected, 3);
}

// --- Transactions ---

TEST_P(Conformance, CommitsATransaction) {
  MakeNumbers(3);
  const auto connection = Connect();
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 1", nullptr, -1);
  connection->CommitTrans();
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("2", "3"));
}

TEST_P(Conformance, RollsATransactionBack) {
  MakeNumbers(3);
  const auto connection = Connect();
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS", nullptr, -1);
  connection->RollbackTrans();
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "2", "3"));
}

TEST_P(Conformance, RollsBackWhatIsOpenWhenTheConnectionIsClosed) {
  MakeNumbers(3);
  {
    const auto connection = Connect();
    connection->BeginTrans();
    connection->Execute("DELETE FROM NUMBERS", nullptr, -1);
    connection->Close();
  }
  {
    const auto connection = Connect();
    connection->BeginTrans();
    connection->Execute("DELETE FROM NUMBERS", nullptr, -1);
  }
  const auto next = Connect();
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "2", "3"));
  EXPECT_EQ(NumberOf([&] { next->CommitTrans(); }), 3001)
      << "a pooled connection comes back without a transaction";
}

TEST_P(Conformance, DoesNotNestTransactions) {
  const auto connection = Connect();
  EXPECT_EQ(NumberOf([&] { connection->CommitTrans(); }), 3001);
  EXPECT_EQ(NumberOf([&] { connection->RollbackTrans(); }), 3001);
  connection->BeginTrans();
  EXPECT_EQ(NumberOf([&] { connection->BeginTrans(); }), 3001);
  connection->RollbackTrans();
}

TEST_P(Conformance, RollsBackAfterAStatementFailedInsideATransaction) {
  MakeNumbers(3);
  const auto connection = Connect();
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 1", nullptr, -1);
  ErrorOf([&] { connection->Execute("DELETE FROM NOSUCHTABLE", nullptr, -1); });
  if (Quirk().failureEndsTransaction) {
    ErrorOf([&] { connection->Execute("DELETE FROM NUMBERS WHERE ID = 2", nullptr, -1); });
  } else {
    connection->Execute("DELETE FROM NUMBERS WHERE ID = 2", nullptr, -1);
  }
  connection->RollbackTrans();
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "2", "3"));
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 3", nullptr, -1);
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "2"));
}

// --- Errors of the engine ---

TEST_P(Conformance, TellsThatATableIsMissing) {
  const auto connection = Connect();
  const auto error = ErrorOf([&] { connection->Execute("DELETE FROM NOSUCHTABLE", nullptr, -1); });
  EXPECT_EQ(error.Number(), ADODB::engine::kNoSuchTable);
  EXPECT_THAT(error.Description(), testing::ContainsRegex("[nN][oO][sS][uU][cC][hH][tT][aA][bB][lL][eE]"));
  EXPECT_FALSE(error.SqlState().empty());
}

TEST_P(Conformance, TellsThatAKeyExistsAlready) {
  MakeNumbers(1);
  const auto connection = Connect();
  const auto error =
      ErrorOf([&] { connection->Execute("INSERT INTO NUMBERS VALUES (1,'x',0)", nullptr, -1); });
  EXPECT_EQ(error.Number(), ADODB::engine::kConstraintViolation);
  EXPECT_EQ(error.SqlState().substr(0, 2), "23");
}

TEST_P(Conformance, RefusesASecondStatementInAText) {
  MakeNumbers(2);
  const auto connection = Connect();
  const auto error = ErrorOf(
      [&] { connection->Execute("DELETE FROM NUMBERS WHERE ID = 1; DELETE FROM NUMBERS", nullptr, -1); });
  EXPECT_EQ(error.SqlState().substr(0, 2), "42");
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "2"));
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 1 ; -- done\n /* really; */ ", nullptr, -1);
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("2"));
}

TEST_P(Conformance, RefusesAValueThatWouldEndItsOwnText) {
  MakeNumbers(2);
  const auto connection = Connect();
  connection->Execute("INSERT INTO NUMBERS VALUES (3, 'a''b', 0)", nullptr, -1);
  for (const char* value :
       {"O'Brien", "' or 1=1 --", "x'", "''' or 'a'='a", "a''b", "''", "n1''", "n1' --", "\\'", "\\''"}) {
    ADODB::Statement statement = "DELETE FROM NUMBERS WHERE NAME = '";
    statement += ADODB::SqlValue(value);
    statement += "'";
    const auto error = ErrorOf([&] { connection->Execute(statement, nullptr, -1); });
    EXPECT_EQ(error.SqlState().substr(0, 2), "42") << value;
    EXPECT_EQ(error.Number(), ADODB::engine::kStatementFailure) << value;
  }
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "2", "3"));
}

TEST_P(Conformance, TakesAWholeLiteralForAValue) {
  MakeNumbers(2);
  const auto connection = Connect();
  connection->Execute("INSERT INTO NUMBERS VALUES (3, 'a''b', 0)", nullptr, -1);
  ADODB::Statement statement = "SELECT ID FROM NUMBERS WHERE NAME IN (";
  statement += ADODB::SqlValue("'n1'");
  statement += ", ";
  statement += ADODB::SqlValue("'a''b'");
  statement += ") ORDER BY ID";
  const auto rows = Open(statement, connection, ADODB::CursorType::Static, ADODB::LockType::ReadOnly);
  EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("1", "3"));
}

// The fixed text and the finished text are both known by then; the value is what is new.
TEST_P(Conformance, LooksAtEachValueOfATextThatWasSentBefore) {
  MakeNumbers(2);
  const auto connection = Connect();
  const auto named = [](const char* before, std::string_view name, const char* after) {
    ADODB::Statement statement = "SELECT ID FROM NUMBERS WHERE ";
    statement += ADODB::SqlFragment(before);
    statement += ADODB::SqlValue(name);
    statement += ADODB::SqlFragment(after);
    return statement;
  };
  for (const ADODB::CursorType cursor : {ADODB::CursorType::ForwardOnly, ADODB::CursorType::Keyset}) {
    const auto open = [&](const ADODB::Statement& statement) {
      return Walk(*Open(statement, connection, cursor, ADODB::LockType::ReadOnly), "ID");
    };
    for (int round = 0; round < 3; ++round) {
      EXPECT_THAT(open(named("NAME = '", "n1", "'")), ElementsAre("1"));
      EXPECT_THAT(open(named("NAME = 'n1' OR NAME = '", "n2", "'")), SizeIs(2));
      // The first and the last have the bytes of the text before.
      for (const auto& breaking :
           {named("NAME = '", "n1' OR NAME = 'n2", "'"), named("NAME = '", "n''1", "'"),
            named("NAME = ", "'n1' OR NAME = 'n2'", "")}) {
        const auto error = ErrorOf([&] { open(breaking); });
        EXPECT_EQ(error.SqlState().substr(0, 2), "42") << breaking.ToString();
      }
    }
  }
}

TEST_P(Conformance, TakesABackslashAsAnOrdinaryCharacter) {
  engine->CreateTable("PATHS", {{"ID", ColumnKind::Key}, {"PATH", ColumnKind::Text}});
  const auto connection = Connect();
  ADODB::Statement statement = "INSERT INTO PATHS VALUES (1,'";
  statement += ADODB::SqlValue("C:\\new\\");
  statement += "')";
  connection->Execute(statement, nullptr, -1);
  EXPECT_THAT(Rows("SELECT PATH FROM PATHS"), ElementsAre("C:\\new\\"));
}

}  // namespace
}  // namespace orvane_test
