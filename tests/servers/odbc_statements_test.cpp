// Statements and transactions through the ODBC provider, on real servers.
#include <chrono>
#include <future>

#include "platform/adodb/sql/engine_error.hpp"
#include "tests/servers/odbc_provider_fixture.hpp"

namespace orvane_test {

TEST_P(OdbcProviderTest, CountsTheRowsThatAStatementMeets) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (ID, NUMBER) VALUES (1, 5), (2, 5), (3, 6)", {});
  EXPECT_EQ(session_->Execute("DELETE FROM SAMPLE WHERE ID = ?", {std::int32_t{99}}), 0);
  EXPECT_EQ(session_->Execute("DELETE FROM SAMPLE WHERE ID = 99", {}), 0);
  EXPECT_EQ(
      session_->Execute("UPDATE SAMPLE SET NUMBER = ? WHERE NUMBER = ?", {std::int32_t{5}, std::int32_t{5}}),
      2)
      << "an update that changes nothing still meets its rows";
  EXPECT_EQ(session_->Execute("DELETE FROM SAMPLE", {}), 3);
}

TEST_P(OdbcProviderTest, GivesRowsWithoutColumnsForAStatementThatYieldsNone) {
  MakeTable();
  const auto rows = session_->Query("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  EXPECT_TRUE(rows->Columns().empty());
  EXPECT_FALSE(rows->Next());
}

TEST_P(OdbcProviderTest, LeavesNothingOpenBehindAResultThatIsLetGoHalfRead) {
  MakeTable();
  for (int i = 0; i < 3; ++i) session_->Execute("INSERT INTO SAMPLE (NUMBER) VALUES (?)", {std::int32_t{i}});
  for (int round = 0; round < 2; ++round) {
    const auto rows =
        session_->Query("SELECT ID FROM SAMPLE WHERE NUMBER >= ? ORDER BY ID", {std::int32_t{0}});
    EXPECT_TRUE(rows->Next());
  }
  EXPECT_EQ(session_->Execute("DELETE FROM SAMPLE", {}), 3);
}

TEST_P(OdbcProviderTest, TellsTheEnginesMessageStateAndCode) {
  const automation::Error error = ErrorOf([&] { session_->Execute("SELECT * FROM NO_SUCH_TABLE", {}); });
  EXPECT_EQ(error.Number(), ADODB::engine::kNoSuchTable);
  EXPECT_THAT(error.Description(), testing::ContainsRegex("[nN][oO]_[sS][uU][cC][hH]_[tT][aA][bB][lL][eE]"));
  EXPECT_EQ(error.SqlState(), TypeOfEngine("42P01", "42S02"));
  if (!OnPostgreSql()) {
    EXPECT_EQ(error.NativeCode(), 1146);
  }
  EXPECT_THAT(error.Description(), testing::Not(HasSubstr("\n")));

  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  const automation::Error duplicate =
      ErrorOf([&] { session_->Execute("INSERT INTO SAMPLE (ID) VALUES (?)", {std::int32_t{1}}); });
  EXPECT_EQ(duplicate.Number(), ADODB::engine::kConstraintViolation);

  const automation::Error syntax = ErrorOf([&] { session_->Query("SELEKT 1", {}); });
  EXPECT_EQ(syntax.Number(), ADODB::engine::kStatementFailure);
}

TEST_P(OdbcProviderTest, GoesOnAfterAFailedStatement) {
  MakeTable();
  const char* sql = "INSERT INTO SAMPLE (ID) VALUES (?)";
  session_->Execute(sql, {std::int32_t{1}});
  ErrorOf([&] { session_->Execute(sql, {std::int32_t{1}}); });
  EXPECT_EQ(session_->Execute(sql, {std::int32_t{2}}), 1);

  session_->Begin();
  session_->Execute(sql, {std::int32_t{3}});
  ErrorOf([&] { session_->Execute(sql, {std::int32_t{3}}); });
  session_->Commit();
  EXPECT_EQ(Single("SELECT COUNT(*) FROM SAMPLE"), Variant(std::int32_t{3}));
}

TEST_P(OdbcProviderTest, CommitsAndRollsBack) {
  MakeTable();
  session_->Begin();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  session_->Rollback();
  session_->Begin();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (2)", {});
  session_->Commit();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (3)", {});
  const auto other = database_.Connect();
  const auto rows = other->Query("SELECT ID FROM SAMPLE ORDER BY ID", {});
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Value(0), Variant(std::int32_t{2}));
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Value(0), Variant(std::int32_t{3}));
  EXPECT_FALSE(rows->Next());
}

// MariaDB commits whenever a table is made.
TEST_P(OdbcProviderTest, RollsBackWhatFollowsAStatementThatCommits) {
  MakeTable();
  session_->Begin();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  session_->Execute("CREATE TABLE OTHER (ID INTEGER PRIMARY KEY)", {});
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (2)", {});
  session_->Rollback();
  EXPECT_EQ(Single("SELECT COUNT(*) FROM SAMPLE"), Variant(std::int32_t{OnPostgreSql() ? 0 : 1}));
  // Afterwards each statement is on its own again.
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (3)", {});
  const auto other = database_.Connect();
  const auto rows = other->Query("SELECT ID FROM SAMPLE WHERE ID = 3", {});
  EXPECT_TRUE(rows->Next());
}

TEST_P(OdbcProviderTest, TellsKeyColumnsInTheirOrderAndTheGeneratedOne) {
  MakeTable();
  const auto sample = session_->Describe("SAMPLE");
  EXPECT_THAT(sample.keyColumns, ElementsAre(TypeOfEngine("id", "ID")));
  EXPECT_EQ(sample.generatedColumn, TypeOfEngine("id", "ID"));

  session_->Execute(
      "CREATE TABLE PAIRS (A INTEGER NOT NULL, B INTEGER NOT NULL, C INTEGER, PRIMARY KEY (C, A))", {});
  const auto pairs = session_->Describe("pairs");
  EXPECT_THAT(pairs.keyColumns, ElementsAre(TypeOfEngine("c", "C"), TypeOfEngine("a", "A")));
  EXPECT_EQ(pairs.generatedColumn, std::nullopt);

  session_->Execute("CREATE TABLE KEYLESS (A INTEGER)", {});
  using Address = ADODB::engine::TableShape::Address;
  EXPECT_EQ(session_->Describe("KEYLESS").address,
            GetParam() == "postgresql" ? Address::Place : Address::WholeRow);
  session_->Execute("CREATE VIEW SHOWN AS SELECT ID FROM SAMPLE", {});
  EXPECT_TRUE(session_->Describe("SHOWN").keyColumns.empty());
  EXPECT_TRUE(session_->Describe("NOWHERE").keyColumns.empty());
}

TEST_P(OdbcProviderTest, DescribesATableByAQuotedNameWithItsSchema) {
  MakeTable();
  const std::string schema =
      automation::ToText(Single(TypeOfEngine("SELECT current_schema()::text", "SELECT database()")));
  const auto& dialect = session_->GetDialect();
  const auto shape = session_->Describe(dialect.QuotedName(schema) + "." + dialect.QuotedName("sample"));
  EXPECT_THAT(shape.keyColumns, ElementsAre(TypeOfEngine("id", "ID")));
}

// A key that is no key any more would meet several rows, or another's.
TEST_P(OdbcProviderTest, DescribesATableThatWasMadeAnew) {
  std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
  const auto provider = ADODB::odbc::MakeProvider([&] { return now; });
  const auto session =
      provider->Connect(ADODB::engine::ConnectionString::Parse(database_.ConnectionString()));
  database_.Execute("CREATE TABLE MADE_ANEW (A INTEGER, B INTEGER, PRIMARY KEY (A))");
  EXPECT_THAT(session->Describe("MADE_ANEW").keyColumns, ElementsAre(TypeOfEngine("a", "A")));
  EXPECT_TRUE(session->Reset());
  database_.Execute("DROP TABLE MADE_ANEW");
  database_.Execute("CREATE TABLE MADE_ANEW (A INTEGER, B INTEGER, PRIMARY KEY (B))");
  now += std::chrono::seconds(1);
  EXPECT_THAT(session->Describe("MADE_ANEW").keyColumns, ElementsAre(TypeOfEngine("b", "B")));
  // Its own definitions are known at once.
  session->Execute("DROP TABLE MADE_ANEW", {});
  EXPECT_THAT(session->Describe("MADE_ANEW").keyColumns, ElementsAre());
}

// The plan is not at fault.
TEST_P(OdbcProviderTest, KeepsAStatementPreparedWhoseValueWasRefused) {
  MakeTable();
  const char* insert = "INSERT INTO SAMPLE (ID, NUMBER) VALUES (?, ?)";
  const auto prepared = [&] {
    return OnPostgreSql() ? automation::ToInt64(Single("SELECT count(*) FROM pg_prepared_statements WHERE "
                                                       "statement LIKE 'INSERT INTO SAMPLE%'"))
                          : automation::ToInt64(Single("SELECT VARIABLE_VALUE FROM information_schema."
                                                       "SESSION_STATUS WHERE VARIABLE_NAME = "
                                                       "'Com_stmt_close'"));
  };
  session_->Execute(insert, {std::int32_t{1}, std::int32_t{5}});
  session_->Execute(insert, {std::int32_t{2}, std::int32_t{5}});
  for (int i = 0; i < 2; ++i) prepared();  // from now on the question itself is kept prepared
  const std::int64_t before = prepared();
  EXPECT_EQ(ErrorOf([&] {
              session_->Execute(insert, {std::int32_t{1}, std::int32_t{6}});
            }).SqlState(),
            TypeOfEngine("23505", "23000"));
  EXPECT_EQ(prepared(), before);
  EXPECT_EQ(session_->Execute(insert, {std::int32_t{3}, std::int32_t{6}}), 1);
}

TEST_P(OdbcProviderTest, SeesEveryChangeInAReadThatIsRepeated) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (NUMBER, SHORTTEXT) VALUES (17, 'one')", {});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Single("select SHORTTEXT from SAMPLE"), Variant("one"));
  database_.Execute("UPDATE SAMPLE SET SHORTTEXT = 'two'");
  EXPECT_EQ(Single("select SHORTTEXT from SAMPLE"), Variant("two"));
}

TEST_P(OdbcProviderTest, ReadsAColumnInItsNewTypeWhenAReadIsRepeated) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (NUMBER) VALUES (17)", {});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Single("select NUMBER from SAMPLE"), Variant(std::int32_t{17}));
    EXPECT_EQ(Single("select NUMBER from SAMPLE where ID > ?", {std::int32_t{0}}), Variant(std::int32_t{17}));
  }
  database_.Execute(OnPostgreSql() ? "ALTER TABLE SAMPLE ALTER COLUMN NUMBER TYPE VARCHAR(50)"
                                   : "ALTER TABLE SAMPLE MODIFY NUMBER VARCHAR(50)");
  database_.Execute("UPDATE SAMPLE SET NUMBER = 'seventeen'");
  EXPECT_EQ(Single("select NUMBER from SAMPLE"), Variant("seventeen"));
  EXPECT_EQ(Single("select NUMBER from SAMPLE"), Variant("seventeen"));
  // With values it is prepared anew after the server has refused what was prepared before.
  try {
    EXPECT_EQ(Single("select NUMBER from SAMPLE where ID > ?", {std::int32_t{0}}), Variant("seventeen"));
  } catch (const automation::Error& error) {
    EXPECT_TRUE(OnPostgreSql()) << error.Description();
  }
  EXPECT_EQ(Single("select NUMBER from SAMPLE where ID > ?", {std::int32_t{0}}), Variant("seventeen"));
}

TEST_P(OdbcProviderTest, ReportsARepeatedReadOfATableThatIsGone) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (NUMBER) VALUES (17)", {});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Single("select NUMBER from SAMPLE"), Variant(std::int32_t{17}));
  database_.Execute("DROP TABLE SAMPLE");
  const automation::Error error = ErrorOf([&] { session_->Query("select NUMBER from SAMPLE", {}); });
  EXPECT_EQ(error.SqlState(), TypeOfEngine("42P01", "42S02"));
  EXPECT_EQ(Single("select 1"), Variant(std::int32_t{1}));
}

// The server takes back all of a transaction that it ends because of a deadlock. What follows is not on its
// own for that: it goes when the caller rolls back.
TEST(MariaDbProviderTest, RollsBackWhatFollowsADeadlock) {
  const orvane_test::ServerDatabase database("mariadb");
  const auto heavy = database.Connect();
  const auto light = database.Connect();
  heavy->Execute("CREATE TABLE SAMPLE (ID INTEGER PRIMARY KEY, NUMBER INTEGER)", {});
  heavy->Execute("INSERT INTO SAMPLE VALUES (1, 0), (2, 0)", {});
  heavy->Begin();
  light->Begin();
  heavy->Execute("UPDATE SAMPLE SET NUMBER = 1 WHERE ID = 1", {});
  light->Execute("UPDATE SAMPLE SET NUMBER = 1 WHERE ID = 2", {});
  // The transaction that has changed less is the one that is ended.
  heavy->Execute("INSERT INTO SAMPLE VALUES (11, 1), (12, 1), (13, 1), (14, 1), (15, 1), (16, 1)", {});
  auto waiting = std::async(std::launch::async,
                            [&] { return heavy->Execute("UPDATE SAMPLE SET NUMBER = 1 WHERE ID = 2", {}); });
  try {
    light->Execute("UPDATE SAMPLE SET NUMBER = 1 WHERE ID = 1", {});
    ADD_FAILURE() << "nothing was raised";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.SqlState(), "40001") << error.Description();
  }
  EXPECT_EQ(waiting.get(), 1);
  heavy->Rollback();
  light->Execute("INSERT INTO SAMPLE VALUES (3, 0)", {});
  light->Rollback();
  const auto rows = heavy->Query("SELECT COUNT(*), SUM(NUMBER) FROM SAMPLE", {});
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Value(0), Variant(std::int32_t{2}));
  EXPECT_EQ(rows->Value(1), Variant(std::int32_t{0}));
}

}  // namespace orvane_test
