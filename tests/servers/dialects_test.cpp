// The jobs' statements in each engine's SQL, without a server.
#include <gmock/gmock.h>

#include <string>

#include "platform/adodb/engines/mariadb/dialect.hpp"
#include "platform/adodb/engines/postgresql/dialect.hpp"
#include "platform/adodb/engines/sqlserver/dialect.hpp"
#include "platform/adodb/sql/checked_statement.hpp"
#include "platform/adodb/sql/translation.hpp"
#include "tests/servers/job_statements.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using ADODB::engine::Column;
using ADODB::engine::Dialect;

std::string Translated(const std::string& sql, const Dialect& dialect) {
  const ADODB::Statement statement = ADODB::SqlFragment(sql);
  return ADODB::engine::Translate(ADODB::engine::CheckText(statement, dialect), dialect).text;
}

class DialectTest : public testing::Test {
 protected:
  orvane_test::TestRuntime runtime_;
  const Dialect& postgresql_ = ADODB::engine::PostgreSqlDialect();
  const Dialect& mariadb_ = ADODB::engine::MariaDbDialect();
  const Dialect& sqlserver_ = ADODB::engine::SqlServerDialect();
};

TEST_F(DialectTest, SendsEveryStatementToSqlServerAsItStands) {
  for (const auto& statement : orvane_test::JobStatements()) {
    EXPECT_EQ(Translated(statement.sql, sqlserver_), statement.sql) << statement.name;
  }
}

TEST_F(DialectTest, LeavesStatementsWithoutTheSuitesTokensAloneButForBlanksAtTheEnd) {
  for (const auto& statement : orvane_test::JobStatements()) {
    const bool hasTokens =
        statement.sql.find("{ts") != std::string::npos || statement.sql.find("dateadd") != std::string::npos;
    if (hasTokens) continue;
    std::string expected = statement.sql;
    while (expected.ends_with(' ')) expected.pop_back();
    EXPECT_EQ(Translated(statement.sql, postgresql_), expected) << statement.name;
    EXPECT_EQ(Translated(statement.sql, mariadb_), expected) << statement.name;
  }
}

TEST_F(DialectTest, WritesTheArchiveSelectionForPostgreSql) {
  EXPECT_EQ(
      Translated("select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
                 "QUESTIONHISTORY where dateadd(d,30,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}",
                 postgresql_),

      "select distinct ((Q_ORIGINATOR || coalesce(EMAILID,''))),Q_ORIGINATOR,EMAILID,PROSPECT from "
      "QUESTIONHISTORY where (ENDSTATUSTIME + (30) * interval '1 day')<timestamp '2004-07-26 09:05:03'");
}

TEST_F(DialectTest, WritesTheArchiveSelectionForMariaDb) {
  EXPECT_EQ(
      Translated("select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
                 "QUESTIONHISTORY where dateadd(d,30,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}",
                 mariadb_),

      "select distinct (concat(Q_ORIGINATOR,coalesce(EMAILID,''))),Q_ORIGINATOR,EMAILID,PROSPECT from "
      "QUESTIONHISTORY where (ENDSTATUSTIME + interval (30) day)<timestamp'2004-07-26 09:05:03'");
}

TEST_F(DialectTest, ReadsALocalDateTimeTextAsTheRunsLocaleWritesIt) {
  const std::string condition = "delete from QUESTIONHISTORY where dateadd(d,-5,ENDSTATUSTIME)<'";
  const std::string postgresql =
      "delete from QUESTIONHISTORY where (ENDSTATUSTIME + (-5) * interval '1 day')<timestamp '2004-07-08 "
      "09:05:03'";
  EXPECT_EQ(Translated(condition + "7-8-2004 09:05:03'", postgresql_), postgresql);
  runtime_.locale->dayFirst = true;
  EXPECT_EQ(Translated(condition + "8-7-2004 09:05:03'", postgresql_), postgresql);
  EXPECT_EQ(Translated(condition + "2004-7-8 09:05:03'", postgresql_), postgresql);
  EXPECT_EQ(Translated(condition + "8-7-2004 09:05:03'", mariadb_),
            "delete from QUESTIONHISTORY where (ENDSTATUSTIME + interval (-5) "
            "day)<timestamp'2004-07-08 09:05:03'");
}

TEST_F(DialectTest, NamesTheTableOfADeleteByASubqueryTwiceForMariaDb) {
  const std::string rest =
      " TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR='jdoe')";
  EXPECT_EQ(Translated("Delete from" + rest, mariadb_), "Delete TRANSACTIONS from" + rest);
  EXPECT_EQ(Translated("Delete from" + rest, postgresql_), "Delete from" + rest);
}

TEST_F(DialectTest, NamesNoTableTwiceWhereMariaDbWouldRefuseIt) {
  for (const std::string sql :
       {"delete from T where A in (select A from T where B=1)", "delete from T where A in (1,2)",
        "delete from T where A in (select A from S) order by A limit 5",
        "delete from T where A in (select A from S) returning A",
        "delete from `T` where A in (select A from S)", "delete from T where A in (select A from `T`)",
        "delete from T", "update T set A=1 where A in (select A from S)"}) {
    EXPECT_EQ(Translated(sql, mariadb_), sql);
  }
}

TEST_F(DialectTest, LeavesTokensInsideTextsAlone) {
  for (const Dialect* dialect : {&postgresql_, &mariadb_, &sqlserver_}) {
    const std::string sql = "select 'isnull(a,b) {ts ''x''} + dateadd(d,1,c)' from PARAMETERS";
    EXPECT_EQ(Translated(sql, *dialect), sql) << dialect->Name();
  }
}

TEST_F(DialectTest, ComposesInsertsThatAnswerWithTheNewRow) {
  EXPECT_EQ(postgresql_.InsertReturning("T", {"a", "b"}, {"id"}),
            "INSERT INTO T (\"a\",\"b\") VALUES (?,?) RETURNING \"id\"");
  EXPECT_EQ(postgresql_.InsertReturning("T", {}, {"id"}), "INSERT INTO T DEFAULT VALUES RETURNING \"id\"");
  EXPECT_EQ(mariadb_.InsertReturning("T", {"A", "B"}, {"ID", "A"}),
            "INSERT INTO T (`A`,`B`) VALUES (?,?) RETURNING `ID`,`A`");
  EXPECT_EQ(mariadb_.InsertReturning("T", {}, {"ID"}), "INSERT INTO T () VALUES () RETURNING `ID`");
  EXPECT_EQ(sqlserver_.InsertReturning("T", {"A", "B"}, {"ID", "A"}),
            "INSERT INTO T ([A],[B]) OUTPUT INSERTED.[ID],INSERTED.[A] VALUES (?,?)");
  EXPECT_EQ(sqlserver_.InsertReturning("T", {}, {"ID"}), "INSERT INTO T OUTPUT INSERTED.[ID] DEFAULT VALUES");
}

TEST_F(DialectTest, LocksRowsThatAreToBeDeleted) {
  EXPECT_EQ(mariadb_.LockedSelect("*,`ID`", "T", "where A=1"), "SELECT *,`ID` FROM T where A=1 FOR UPDATE");
  EXPECT_EQ(sqlserver_.LockedSelect("[ID]", "T", "where A=1"), "SELECT [ID] FROM T WITH (UPDLOCK) where A=1");
}

TEST_F(DialectTest, CutsResultsToANumberOfRows) {
  EXPECT_EQ(postgresql_.Limited("a", " FROM T", 5), "SELECT a FROM T LIMIT 5");
  EXPECT_EQ(mariadb_.Limited("a", " FROM T", 5), "SELECT a FROM T LIMIT 5");
  EXPECT_EQ(sqlserver_.Limited("a", " FROM T", 5), "SELECT TOP (5) a FROM T");
}

TEST_F(DialectTest, QuotesNamesThatHoldTheQuoteItself) {
  EXPECT_EQ(postgresql_.QuotedName("a\"b"), "\"a\"\"b\"");
  EXPECT_EQ(mariadb_.QuotedName("a`b"), "`a``b`");
  EXPECT_EQ(sqlserver_.QuotedName("a]b"), "[a]]b]");
}

TEST_F(DialectTest, ShowsNamesThatPostgreSqlFoldedInUpperCase) {
  EXPECT_EQ(postgresql_.ShownName("q_originator"), "Q_ORIGINATOR");
  EXPECT_EQ(postgresql_.ShownName("Quoted"), "Quoted");
  EXPECT_EQ(mariadb_.ShownName("Mail_Id"), "Mail_Id");
}

TEST_F(DialectTest, ComparesTextsAsTheColumnsCollationDoes) {
  const auto same = [](const Dialect& dialect, const char* collation, const char* left, const char* right) {
    Column column;
    column.collation = collation;
    return dialect.ComparisonKey(left, column) == dialect.ComparisonKey(right, column);
  };
  EXPECT_FALSE(same(postgresql_, "", "a", "A"));
  EXPECT_FALSE(same(postgresql_, "", "a", "a "));

  EXPECT_FALSE(same(mariadb_, "utf8mb4_nopad_bin", "a", "A"));
  EXPECT_FALSE(same(mariadb_, "utf8mb4_nopad_bin", "a", "a "));
  EXPECT_TRUE(same(mariadb_, "utf8mb4_bin", "a", "a "));
  EXPECT_FALSE(same(mariadb_, "utf8mb4_bin", "a", "A"));
  EXPECT_TRUE(same(mariadb_, "utf8mb4_general_ci", "Éa ", "eA"));
  EXPECT_TRUE(same(mariadb_, "utf8mb4_general_ci", "ДОМ", "дом"));
  EXPECT_FALSE(same(mariadb_, "utf8mb4_general_nopad_ci", "a ", "a"));
  EXPECT_FALSE(same(mariadb_, "utf8mb4_general_ci", "a", "b"));
  EXPECT_FALSE(same(mariadb_, "utf8mb4_general_ci", "×", "÷"));

  EXPECT_FALSE(same(sqlserver_, "Latin1_General_100_BIN2", "a", "A"));
  EXPECT_TRUE(same(sqlserver_, "Latin1_General_100_BIN2", "a", "a "));
  EXPECT_TRUE(same(sqlserver_, "SQL_Latin1_General_CP1_CI_AS", "É", "é"));
  EXPECT_FALSE(same(sqlserver_, "SQL_Latin1_General_CP1_CI_AS", "E", "é"));
}

TEST_F(DialectTest, RefusesABrokenStatementInTheEnginesOwnWords) {
  const automation::Error postgresql = postgresql_.SyntaxError("'jd");
  EXPECT_EQ(postgresql.Description(), "ERROR: syntax error at or near \"'jd\"");
  EXPECT_EQ(postgresql.SqlState(), "42601");
  const automation::Error mariadb = mariadb_.SyntaxError("'jd");
  EXPECT_EQ(mariadb.Description(),
            "You have an error in your SQL syntax; check the manual that corresponds to your MariaDB server "
            "version "
            "for the right syntax to use near ''jd' at line 1");
  EXPECT_EQ(mariadb.NativeCode(), 1064);
  EXPECT_EQ(sqlserver_.SyntaxError("'jd").Description(), "Incorrect syntax near ''jd'.");
}

}  // namespace
