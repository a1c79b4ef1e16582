// Sessions of the ODBC provider: how they are made, used by one after the other, and lost.
#include "tests/servers/odbc_provider_fixture.hpp"

namespace orvane_test {

TEST_P(OdbcProviderTest, ComesBackCleanFromItsUser) {
  MakeTable();
  session_->SetIsolationLevel(ADODB::IsolationLevel::Serializable);
  session_->Begin();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  EXPECT_TRUE(session_->Ping());
  // The table was made on this very session, which is more than a pooled one may have done.
  EXPECT_FALSE(session_->Reset());
  EXPECT_EQ(Single("SELECT COUNT(*) FROM SAMPLE"), Variant(std::int32_t{0}));

  const auto fresh = database_.Connect();
  fresh->SetIsolationLevel(ADODB::IsolationLevel::Serializable);
  fresh->Begin();
  fresh->Execute("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  EXPECT_TRUE(fresh->Reset());
  const auto level = fresh->Query(TypeOfEngine("SHOW transaction_isolation", "SELECT @@tx_isolation"), {});
  ASSERT_TRUE(level->Next());
  EXPECT_THAT(automation::ToText(level->Value(0)), testing::AnyOf("read committed", "READ-COMMITTED"));
}

TEST_P(OdbcProviderTest, IsNotUsedAgainOnceAStatementMayHaveChangedItsSettings) {
  session_->Execute(TypeOfEngine("SET datestyle = 'German'", "SET @@session.sql_mode = ''"), {});
  EXPECT_FALSE(session_->Reset());
}

TEST_P(OdbcProviderTest, RunsInReadCommittedIsolationUnlessToldOtherwise) {
  const char* level = TypeOfEngine("SHOW transaction_isolation", "SELECT @@tx_isolation");
  EXPECT_THAT(automation::ToText(Single(level)), testing::AnyOf("read committed", "READ-COMMITTED"));
  session_->SetIsolationLevel(ADODB::IsolationLevel::Serializable);
  EXPECT_THAT(automation::ToText(Single(level)), testing::AnyOf("serializable", "SERIALIZABLE"));
}

TEST_P(OdbcProviderTest, RunsTransactionsInTheLevelThatItWasGivenLast) {
  const char* level = TypeOfEngine("SHOW transaction_isolation", "SELECT @@tx_isolation");
  struct Case {
    ADODB::IsolationLevel level;
    const char* postgresql;
    const char* mariadb;
  };
  for (const auto& [given, postgresql, mariadb] :
       {Case{ADODB::IsolationLevel::Serializable, "serializable", "SERIALIZABLE"},
        Case{ADODB::IsolationLevel::ReadUncommitted, "read uncommitted", "READ-UNCOMMITTED"},
        Case{ADODB::IsolationLevel::RepeatableRead, "repeatable read", "REPEATABLE-READ"},
        Case{ADODB::IsolationLevel::ReadCommitted, "read committed", "READ-COMMITTED"}}) {
    session_->SetIsolationLevel(given);
    session_->Begin();
    EXPECT_EQ(automation::ToText(Single(level)), TypeOfEngine(postgresql, mariadb));
    session_->SetIsolationLevel(ADODB::IsolationLevel::Serializable);
    EXPECT_EQ(automation::ToText(Single(level)), TypeOfEngine(postgresql, mariadb)) << "it has begun";
    session_->Rollback();
    EXPECT_EQ(automation::ToText(Single(level)), TypeOfEngine("serializable", "SERIALIZABLE"));
  }
}

// A session that others use next must not keep what a statement of this kind may have changed, whatever else
// it ran before or after.
TEST_P(OdbcProviderTest, IsNotUsedAgainAfterADefinitionBehindOrdinaryStatements) {
  MakeTable();
  const auto used = database_.Connect();
  used->Execute("INSERT INTO SAMPLE (ID, NUMBER) VALUES (1, 1), (2, 2)", {});
  EXPECT_TRUE(used->Reset());
  EXPECT_EQ(used->Execute("DELETE FROM SAMPLE WHERE ID = 1", {}), 1);
  EXPECT_TRUE(used->Reset());
  used->Execute("ALTER TABLE SAMPLE ADD COLUMN ADDED INTEGER", {});
  EXPECT_EQ(used->Execute("DELETE FROM SAMPLE WHERE ID = 2", {}), 1);
  EXPECT_FALSE(used->Reset());
  EXPECT_EQ(Single("SELECT COUNT(ADDED) FROM SAMPLE"), Variant(std::int32_t{0}));
}

TEST_P(OdbcProviderTest, IsDeadOnceTheServerHasEndedIt) {
  const Variant id = Single(TypeOfEngine("SELECT pg_backend_pid()", "SELECT connection_id()"));
  database_.Execute(OnPostgreSql() ? "SELECT pg_terminate_backend(" + automation::ToText(id) + ")"
                                   : "KILL " + automation::ToText(id));
  ErrorOf([&] { Single("SELECT 1"); });
  EXPECT_FALSE(session_->Reset());
  EXPECT_FALSE(session_->Ping());
}

TEST_P(OdbcProviderTest, SetsTheDriverOptionsThatTheStringLeavesOpen) {
  if (OnPostgreSql()) {
    EXPECT_EQ(Single("SHOW jit"), Variant("off"));
    EXPECT_EQ(Single("SHOW datestyle"), Variant("ISO, MDY"));
  } else {
    EXPECT_THAT(automation::ToText(Single("SELECT @@sql_mode")),
                testing::AllOf(HasSubstr("STRICT_TRANS_TABLES"), HasSubstr("NO_BACKSLASH_ESCAPES"),
                               HasSubstr("PIPES_AS_CONCAT"), HasSubstr("ANSI_QUOTES")));
    EXPECT_EQ(Single("SELECT @@character_set_client"), Variant("utf8mb4"));
  }
}

TEST_P(OdbcProviderTest, LeavesAnOptionToTheStringThatGivesIt) {
  const std::string option = OnPostgreSql() ? ";ConnSettings=SET+jit%3Don" : ";INITSTMT={SET @own = 1}";
  const auto session = ADODB::odbc::MakeProvider()->Connect(
      ADODB::engine::ConnectionString::Parse(database_.ConnectionString() + option));
  const auto rows = session->Query(TypeOfEngine("SHOW jit", "SELECT concat('', @own)"), {});
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Value(0), Variant(TypeOfEngine("on", "1")));
}

TEST_P(OdbcProviderTest, TakesUserAndPasswordOfConnectionOpen) {
  auto text = ADODB::engine::ConnectionString::Parse(database_.ConnectionString());
  text.Set("User ID", *text.Value("UID"));
  text.Set("Password", *text.Value("PWD"));
  text.Remove("UID");
  text.Remove("PWD");
  EXPECT_TRUE(ADODB::odbc::MakeProvider()->Connect(text)->Ping());
}

TEST_P(OdbcProviderTest, ReportsAWrongPassword) {
  auto text = ADODB::engine::ConnectionString::Parse(database_.ConnectionString());
  text.Set("PWD", "wrong");
  const automation::Error error = ErrorOf([&] { ADODB::odbc::MakeProvider()->Connect(text); });
  EXPECT_THAT(error.Description(), testing::AnyOf(HasSubstr("password authentication failed for user"),
                                                  HasSubstr("Access denied for user")));
}

TEST_P(OdbcProviderTest, ReportsARefusedConnection) {
  auto text = ADODB::engine::ConnectionString::Parse(database_.ConnectionString());
  text.Set("Port", "1");
  const automation::Error error = ErrorOf([&] { ADODB::odbc::MakeProvider()->Connect(text); });
  EXPECT_THAT(error.SqlState(), testing::AnyOf("08001", "HY000"));
  EXPECT_THAT(error.Description(),
              testing::AnyOf(HasSubstr("Connection refused"), HasSubstr("Can't connect to server")));
}

TEST_P(OdbcProviderTest, ReportsADatabaseThatIsNotThere) {
  auto text = ADODB::engine::ConnectionString::Parse(database_.ConnectionString());
  text.Set("Database", "nowhere");
  const automation::Error error = ErrorOf([&] { ADODB::odbc::MakeProvider()->Connect(text); });
  EXPECT_THAT(error.Description(), HasSubstr("nowhere"));
}

TEST(OdbcDriverTest, ReportsADriverThatIsNotInstalled) {
  try {
    ADODB::odbc::MakeProvider()->Connect(
        ADODB::engine::ConnectionString::Parse("Driver={No Such Driver};Server=x"));
    FAIL() << "nothing was raised";
  } catch (const automation::Error& error) {
    EXPECT_THAT(error.Description(), HasSubstr("No Such Driver"));
  }
}

}  // namespace orvane_test
