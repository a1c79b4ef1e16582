// What the ODBC provider knows about drivers, without a server.
#include <gmock/gmock.h>

#include "platform/adodb/odbc/driver.hpp"
#include "platform/adodb/odbc/error.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/automation/error.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using ADODB::engine::ConnectionString;
using ADODB::odbc::Engine;
using ADODB::odbc::EngineOfDriver;
using testing::AnyOf;
using testing::HasSubstr;

std::string ForDriver(std::string_view text) {
  const ConnectionString given = ConnectionString::Parse(text);
  return ADODB::odbc::ForDriver(given, EngineOfDriver(given.Value("Driver").value_or(""))).ToString();
}

TEST(OdbcDriverTest, KnowsTheEnginesByTheirDrivers) {
  EXPECT_EQ(EngineOfDriver("PostgreSQL Unicode"), Engine::PostgreSql);
  EXPECT_EQ(EngineOfDriver("/usr/lib/x86_64-linux-gnu/odbc/psqlodbcw.so"), Engine::PostgreSql);
  EXPECT_EQ(EngineOfDriver("MariaDB Unicode"), Engine::MariaDb);
  EXPECT_EQ(EngineOfDriver("libmaodbc.so"), Engine::MariaDb);
  EXPECT_EQ(EngineOfDriver("FreeTDS"), Engine::SqlServer);
  EXPECT_EQ(EngineOfDriver("ODBC Driver 18 for SQL Server"), Engine::SqlServer);
  EXPECT_EQ(EngineOfDriver("Something Else"), Engine::Other);
}

TEST(OdbcDriverTest, AddsTheOptionsThatThePostgreSqlDriverNeeds) {
  EXPECT_EQ(
      ForDriver("Provider=MSDASQL;Driver={PostgreSQL Unicode};Server=db;User ID=jobs;Password=a"),
      "Driver=PostgreSQL Unicode;Server=db;UID=jobs;PWD=a;BoolsAsChar=0;UseDeclareFetch=0;Protocol=7.4-2;"
      "LFConversion=0;ConnSettings=SET+jit%3Doff%3BSET+datestyle%3D'ISO,MDY'%3B"
      "SET+standard_conforming_strings%3Don%3BSET+client_encoding+to+'UTF8'");
}

TEST(OdbcDriverTest, AddsTheOptionsThatTheMariaDbDriverNeeds) {
  EXPECT_EQ(ForDriver("Driver={MariaDB Unicode};Server=db"),
            "Driver=MariaDB Unicode;Server=db;OPTION=2;CHARSET=utf8mb4;INITSTMT=SET SESSION sql_mode="
            "'STRICT_TRANS_TABLES,NO_BACKSLASH_ESCAPES,PIPES_AS_CONCAT,ANSI_QUOTES'");
}

TEST(OdbcDriverTest, AddsTheOptionsThatTheSqlServerDriverNeeds) {
  EXPECT_EQ(ForDriver("Driver=FreeTDS;Server=db"),
            "Driver=FreeTDS;Server=db;TDS_Version=7.4;ClientCharset=UTF-8");
}

TEST(OdbcDriverTest, LeavesOptionsOfTheStringAlone) {
  EXPECT_EQ(ForDriver("Driver={MariaDB Unicode};option=67108866;charset=latin1;InitStmt={SET @a = 1}"),
            "Driver=MariaDB Unicode;option=67108866;charset=latin1;InitStmt=SET @a = 1");
}

// As bytes only where they are sure to be UTF-8.
TEST(OdbcDriverTest, ReadsTextsAsBytesWhenTheStringNamesTheirEncoding) {
  using ADODB::odbc::TextForm;
  const auto formOf = [](std::string_view text) {
    const Engine engine = EngineOfDriver(*ConnectionString::Parse(text).Value("Driver"));
    return ADODB::odbc::TextFormOf(engine, ADODB::odbc::ForDriver(ConnectionString::Parse(text), engine));
  };
  EXPECT_EQ(formOf("Driver={PostgreSQL Unicode}"), TextForm::Utf8);
  EXPECT_EQ(formOf("Driver={PostgreSQL Unicode};ConnSettings=SET+jit%3Doff"), TextForm::Utf16);
  EXPECT_EQ(formOf("Driver={MariaDB Unicode}"), TextForm::Utf8);
  EXPECT_EQ(formOf("Driver={MariaDB Unicode};CHARSET=latin1"), TextForm::Utf16);
  EXPECT_EQ(formOf("Driver=FreeTDS"), TextForm::Utf16);
}

TEST(OdbcDriverTest, KeepsUidAndPwdWhenBothSpellingsAreGiven) {
  EXPECT_EQ(ForDriver("Driver=Other;UID=first;User ID=second"), "Driver=Other;UID=first");
}

// SQL Server reads the jobs' local date texts itself.
TEST(OdbcDriverTest, TellsSqlServerTheDateOrderOfTheRunsLocale) {
  orvane_test::TestRuntime runtime;
  EXPECT_EQ(ADODB::odbc::SessionSetUp(Engine::SqlServer, {}), "SET DATEFORMAT mdy");
  runtime.locale->dayFirst = true;
  EXPECT_EQ(ADODB::odbc::SessionSetUp(Engine::SqlServer, {}), "SET DATEFORMAT dmy");
}

TEST(OdbcDriverTest, GivesABackslashItsPlainMeaningWhereTheStringHasSettingsOfItsOwn) {
  const auto setUp = [](Engine engine, std::string_view text) {
    return ADODB::odbc::SessionSetUp(engine, ADODB::odbc::ForDriver(ConnectionString::Parse(text), engine));
  };
  EXPECT_EQ(setUp(Engine::PostgreSql, ""), "");
  EXPECT_EQ(setUp(Engine::PostgreSql, "ConnSettings=SET+jit%3Don"), "SET standard_conforming_strings = on");
  EXPECT_EQ(setUp(Engine::MariaDb, ""), "");
  EXPECT_EQ(setUp(Engine::MariaDb, "InitStmt={SET @own = 1}"),
            "SET SESSION sql_mode = concat(@@sql_mode, ',NO_BACKSLASH_ESCAPES')");
}

TEST(OdbcDriverTest, RefusesACharacterSetInWhichOtherCharactersBecomeQuotes) {
  const auto require = [](Engine engine, std::string_view text) {
    ADODB::odbc::RequireTextsAsTheyAre(engine, ConnectionString::Parse(text));
  };
  require(Engine::MariaDb, "CHARSET=utf8mb4");
  require(Engine::MariaDb, "charset=UTF8");
  require(Engine::PostgreSql, "");
  for (const char* text : {"", "CHARSET=latin1", "CHARSET=gbk"}) {
    const auto error = orvane_test::ErrorOf([&] { require(Engine::MariaDb, text); });
    EXPECT_EQ(error.Number(), 3001);
    EXPECT_THAT(error.Description(), testing::StartsWith("The connection string must say CHARSET=utf8mb4."));
  }
}

TEST(OdbcDriverTest, LoadsTheSqlServerDriver) {
  try {
    ADODB::odbc::MakeProvider()->Connect(ConnectionString::Parse(
        "Driver={FreeTDS};Server=127.0.0.1;Port=1;Database=orvane;UID=jobs;PWD=secret"));
    FAIL() << "nothing was raised";
  } catch (const automation::Error& error) {
    // The driver's own words; the driver manager would say IM002 or 01000 had it not been found.
    EXPECT_THAT(error.SqlState(), AnyOf("08001", "08S01", "S1000", "HY000")) << error.Description();
    EXPECT_THAT(error.Description(), HasSubstr("[FreeTDS]"));
  }
}

struct Refusal {
  const char* sqlState;
  std::int32_t nativeCode;
  bool leavesCommitOpen;
  bool losesSession;
};

TEST(OdbcDriverTest, KnowsWhichFailuresLeaveACommitOpenAndWhichEndTheSession) {
  constexpr Refusal kRefusals[] = {
      {"08S01", 2013, true, true},    // lost during the query
      {"08S01", 2006, true, true},    // has gone away
      {"HY000", 2055, true, true},    // lost, with the reason of the system
      {"70100", 1927, true, true},    // killed
      {"HY000", 4031, true, true},    // idle for too long
      {"08006", 0, true, true},       // connection failure
      {"08007", 0, true, true},       // transaction resolution unknown
      {"57P01", 1, true, true},       // shut down by the administrator
      {"57P02", 1, true, true},       // crashed
      {"57P03", 1, true, true},       // starting up
      {"40003", 0, true, false},      // statement completion unknown
      {"HYT00", 0, true, false},      // time-out
      {"HYT01", 0, true, false},      // the connection's
      {"HY008", 0, true, false},      // cancelled
      {"08S01", 1053, true, true},    // shutting down
      {"HY000", 1180, true, false},   // an engine failed in mid-commit
      {"70100", 1317, true, false},   // interrupted
      {"23505", 1, false, false},     // a constraint that waited for the commit
      {"40001", 1213, false, false},  // deadlock, or another node's transaction came first
      {"40P01", 1, false, false},     // deadlock
      {"HY000", 1205, false, false},  // lock wait timeout
      {"HY000", 1290, false, false},  // the server is read-only
      {"25006", 1, false, false},     // the transaction is
      {"57014", 1, false, false},     // the statement was cancelled before it was done
      {"HY000", 0, false, false},     // no reason given: the session is asked
  };
  for (const Refusal& refusal : kRefusals) {
    EXPECT_EQ(ADODB::odbc::LeavesCommitOpen(refusal.sqlState, refusal.nativeCode), refusal.leavesCommitOpen)
        << refusal.sqlState << ' ' << refusal.nativeCode;
    ADODB::odbc::Health health;
    health.Note({.sqlState = refusal.sqlState, .nativeCode = refusal.nativeCode, .message = {}});
    EXPECT_EQ(health.lost, refusal.losesSession) << refusal.sqlState << ' ' << refusal.nativeCode;
    EXPECT_EQ(health.doubtful, std::string_view(refusal.sqlState) == "HY000");
  }
}

}  // namespace
