// What the ODBC provider knows about drivers, without a server.
#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/adodb/engines/table.hpp"
#include "platform/adodb/odbc/driver.hpp"
#include "platform/adodb/odbc/error.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/automation/error.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using ADODB::engine::ConnectionString;
using ADODB::engine::EngineEntry;
using ADODB::engine::EngineOfDriver;
using testing::AnyOf;
using testing::HasSubstr;

std::string ForDriver(std::string_view text) {
  const ConnectionString given = ConnectionString::Parse(text);
  return ADODB::odbc::ForDriver(given, EngineOfDriver(given.Value("Driver").value_or(""))).ToString();
}

std::string_view NameOfDriver(std::string_view driver) {
  const EngineEntry* engine = EngineOfDriver(driver);
  return engine == nullptr ? "" : engine->name;
}

const EngineEntry& Engine(std::string_view name) {
  for (const EngineEntry& engine : ADODB::engine::Engines()) {
    if (engine.name == name) return engine;
  }
  throw std::invalid_argument(std::string(name));
}

TEST(OdbcDriverTest, KnowsTheEnginesByTheirDrivers) {
  EXPECT_EQ(NameOfDriver("PostgreSQL Unicode"), "postgresql");
  EXPECT_EQ(NameOfDriver("/usr/lib/x86_64-linux-gnu/odbc/psqlodbcw.so"), "postgresql");
  EXPECT_EQ(NameOfDriver("MariaDB Unicode"), "mariadb");
  EXPECT_EQ(NameOfDriver("libmaodbc.so"), "mariadb");
  EXPECT_EQ(NameOfDriver("FreeTDS"), "sqlserver");
  EXPECT_EQ(NameOfDriver("ODBC Driver 18 for SQL Server"), "sqlserver");
  EXPECT_EQ(NameOfDriver("Something Else"), "");
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
  const auto asBytes = [](std::string_view text) {
    const EngineEntry* engine = EngineOfDriver(*ConnectionString::Parse(text).Value("Driver"));
    return engine->traits().givesUtf8(ADODB::odbc::ForDriver(ConnectionString::Parse(text), engine));
  };
  EXPECT_TRUE(asBytes("Driver={PostgreSQL Unicode}"));
  EXPECT_FALSE(asBytes("Driver={PostgreSQL Unicode};ConnSettings=SET+jit%3Doff"));
  EXPECT_TRUE(asBytes("Driver={MariaDB Unicode}"));
  EXPECT_FALSE(asBytes("Driver={MariaDB Unicode};CHARSET=latin1"));
  EXPECT_FALSE(asBytes("Driver=FreeTDS"));
}

TEST(OdbcDriverTest, KeepsUidAndPwdWhenBothSpellingsAreGiven) {
  EXPECT_EQ(ForDriver("Driver=Other;UID=first;User ID=second"), "Driver=Other;UID=first");
}

// SQL Server reads the jobs' local date texts itself.
TEST(OdbcDriverTest, TellsSqlServerTheDateOrderOfTheRunsLocale) {
  orvane_test::TestRuntime runtime;
  EXPECT_EQ(Engine("sqlserver").traits().setUp({}), "SET DATEFORMAT mdy");
  runtime.locale->dayFirst = true;
  EXPECT_EQ(Engine("sqlserver").traits().setUp({}), "SET DATEFORMAT dmy");
}

TEST(OdbcDriverTest, GivesABackslashItsPlainMeaningWhereTheStringHasSettingsOfItsOwn) {
  const auto setUp = [](std::string_view engine, std::string_view text) {
    return Engine(engine).traits().setUp(
        ADODB::odbc::ForDriver(ConnectionString::Parse(text), &Engine(engine)));
  };
  EXPECT_EQ(setUp("postgresql", ""), "");
  EXPECT_EQ(setUp("postgresql", "ConnSettings=SET+jit%3Don"), "SET standard_conforming_strings = on");
  EXPECT_EQ(setUp("mariadb", ""), "");
  EXPECT_EQ(setUp("mariadb", "InitStmt={SET @own = 1}"),
            "SET SESSION sql_mode = concat(@@sql_mode, ',NO_BACKSLASH_ESCAPES')");
}

TEST(OdbcDriverTest, RefusesACharacterSetInWhichOtherCharactersBecomeQuotes) {
  const auto require = [](std::string_view engine, std::string_view text) {
    Engine(engine).traits().requireExactText(ConnectionString::Parse(text));
  };
  require("mariadb", "CHARSET=utf8mb4");
  require("mariadb", "charset=UTF8");
  require("postgresql", "");
  for (const char* text : {"", "CHARSET=latin1", "CHARSET=gbk"}) {
    const auto error = orvane_test::ErrorOf([&] { require("mariadb", text); });
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
  const char* engine;
  const char* sqlState;
  std::int32_t nativeCode;
  bool leavesCommitOpen;
  bool losesSession;
};

TEST(OdbcDriverTest, KnowsWhichFailuresLeaveACommitOpenAndWhichEndTheSession) {
  constexpr Refusal kRefusals[] = {
      {"mariadb", "08S01", 2013, true, true},    // lost during the query
      {"mariadb", "08S01", 2006, true, true},    // has gone away
      {"mariadb", "HY000", 2055, true, true},    // lost, with the reason of the system
      {"mariadb", "70100", 1927, true, true},    // killed
      {"mariadb", "HY000", 4031, true, true},    // idle for too long
      {"postgresql", "08006", 0, true, true},    // connection failure
      {"postgresql", "08007", 0, true, true},    // transaction resolution unknown
      {"postgresql", "57P01", 1, true, true},    // shut down by the administrator
      {"postgresql", "57P02", 1, true, true},    // crashed
      {"postgresql", "57P03", 1, true, true},    // starting up
      {"postgresql", "40003", 0, true, false},   // statement completion unknown
      {"mariadb", "HYT00", 0, true, false},      // time-out
      {"mariadb", "HYT01", 0, true, false},      // the connection's
      {"mariadb", "HY008", 0, true, false},      // cancelled
      {"mariadb", "08S01", 1053, true, true},    // shutting down
      {"mariadb", "HY000", 1180, true, false},   // an engine failed in mid-commit
      {"mariadb", "70100", 1317, true, false},   // interrupted
      {"postgresql", "23505", 1, false, false},  // a constraint that waited for the commit
      {"mariadb", "40001", 1213, false, false},  // deadlock, or another node's transaction came first
      {"postgresql", "40P01", 1, false, false},  // deadlock
      {"mariadb", "HY000", 1205, false, false},  // lock wait timeout
      {"mariadb", "HY000", 1290, false, false},  // the server is read-only
      {"postgresql", "25006", 1, false, false},  // the transaction is
      {"postgresql", "57014", 1, false, false},  // the statement was cancelled before it was done
      {"mariadb", "HY000", 0, false, false},     // no reason given: the session is asked
  };
  for (const Refusal& refusal : kRefusals) {
    ADODB::odbc::Health health;
    health.engine = &Engine(refusal.engine);
    const automation::Error failure =
        automation::Error(-2147467259, "MSDASQL", "").WithEngineCodes(refusal.sqlState, refusal.nativeCode);
    EXPECT_EQ(health.LeavesCommitOpen(failure), refusal.leavesCommitOpen)
        << refusal.sqlState << ' ' << refusal.nativeCode;
    health.Note({.sqlState = refusal.sqlState, .nativeCode = refusal.nativeCode, .message = {}});
    EXPECT_EQ(health.lost, refusal.losesSession) << refusal.sqlState << ' ' << refusal.nativeCode;
    EXPECT_EQ(health.doubtful, std::string_view(refusal.sqlState) == "HY000");
  }
}

}  // namespace
