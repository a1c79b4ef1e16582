#include "platform/adodb/engine/checked_statement.hpp"

#include <gtest/gtest.h>

#include "platform/adodb/dialects/sqlite.hpp"

namespace {

using ADODB::SqlFragment;
using ADODB::SqlValue;
using ADODB::Statement;

// The message of the refusal, empty when the statement passes.
std::string Refusal(const Statement& statement) {
  const ADODB::engine::Dialect& dialect = ADODB::engine::SqliteDialect();
  try {
    ADODB::engine::CheckValues(statement, dialect);
    ADODB::engine::CheckText(statement, dialect);
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), -2147217900);
    EXPECT_EQ(error.SqlState(), "42000");
    return error.Description();
  }
  return {};
}

Statement Quoted(std::string_view value) {
  Statement statement = "select A from T where B = '";
  statement += SqlValue(value);
  statement += "' and C = 1";
  return statement;
}

Statement Bare(std::string_view value) {
  Statement statement = "select A from T where B = ";
  statement += SqlValue(value);
  statement += " and C = 1";
  return statement;
}

TEST(CheckedStatementTest, LetsAPlainTextPass) {
  for (const char* value : {"", "x", "a;b", "-- a", "/*", "\\", "\"", "it''s", "''", "''''", "größe"}) {
    EXPECT_EQ(Refusal(Quoted(value)), "") << value;
  }
}

TEST(CheckedStatementTest, RefusesAnUnpairedQuoteAsTheEngineWould) {
  EXPECT_EQ(Refusal(Quoted("O'Brien")), "near \"Brien\": syntax error");
  EXPECT_EQ(Refusal(Quoted("' or 1=1 --")), "near \"or\": syntax error");
  EXPECT_EQ(Refusal(Quoted("'''x")), "near \"x\": syntax error");
  EXPECT_EQ(Refusal(Quoted("a''b'c")), "near \"c\": syntax error");
  EXPECT_EQ(Refusal(Quoted("x'")), "near \"'\": syntax error");
}

TEST(CheckedStatementTest, RefusesTwoValuesThatWouldPairTheirQuotes) {
  Statement statement = "delete from T where A = '";
  statement += SqlValue("x'");
  statement += "' and B = '";
  statement += SqlValue("' or 1 = 1 --");
  statement += "'";
  EXPECT_NE(Refusal(statement), "");
}

TEST(CheckedStatementTest, RefusesANulInsideAText) {
  EXPECT_NE(Refusal(Quoted(std::string_view("a\0b", 3))), "");
}

TEST(CheckedStatementTest, LetsASignedDecimalNumberPassOutsideATexts) {
  for (const char* value : {"0", "17", "-17", "+3", "12.50", "-0.5", "99999999999999999999"}) {
    EXPECT_EQ(Refusal(Bare(value)), "") << value;
  }
}

TEST(CheckedStatementTest, RefusesAnythingElseOutsideATexts) {
  for (const char* value :
       {"", "x", "1 or 1=1", "1;", "--1", "1-", "1.", ".5", "1e5", "0x10", " 1", "1 ", "(1)", "'1'"}) {
    EXPECT_NE(Refusal(Bare(value)), "") << value;
  }
  EXPECT_EQ(Refusal(Bare("abc or 1")), "near \"abc\": syntax error");
}

TEST(CheckedStatementTest, DoesNotLetASignOpenAComment) {
  Statement statement = "select A from T where B = -";
  statement += SqlValue(-5);
  EXPECT_NE(Refusal(statement), "");
}

TEST(CheckedStatementTest, RefusesAValueInsideANameOrAComment) {
  Statement name = "select \"";
  name += SqlValue("A");
  name += "\" from T";
  EXPECT_NE(Refusal(name), "");
  Statement comment = "select A /* ";
  comment += SqlValue(std::int32_t{1});
  comment += " */ from T";
  EXPECT_NE(Refusal(comment), "");
}

TEST(CheckedStatementTest, KnowsWhereFixedTextsAndCommentsEnd) {
  Statement statement = "select 'it''s -- /*', \"a'b\", [c d] -- don't\n from T /* isn't */ where B = '";
  statement += SqlValue("x");
  statement += "' and C = ";
  statement += SqlValue(std::int32_t{5});
  EXPECT_EQ(Refusal(statement), "");
}

TEST(CheckedStatementTest, TakesAFragmentAsFixedText) {
  Statement statement = "select A from T where B IN (";
  statement += SqlFragment("'O''Brien', 'x'");
  statement += ")";
  EXPECT_EQ(Refusal(statement), "");
}

TEST(CheckedStatementTest, RefusesASecondStatement) {
  EXPECT_EQ(Refusal("delete from A; delete from B"), "near \"delete\": syntax error");
  EXPECT_EQ(Refusal("delete from A;; -- end\n /* ; */ ;"), "");
  EXPECT_EQ(Refusal("delete from A where B = ';'"), "");
}

TEST(CheckedStatementTest, RefusesAStatementWithoutWordsOrEnd) {
  EXPECT_EQ(Refusal(""), "incomplete input");
  EXPECT_EQ(Refusal(" ; "), "incomplete input");
  EXPECT_EQ(Refusal("-- nothing"), "incomplete input");
  EXPECT_NE(Refusal("select 'a"), "");
  EXPECT_NE(Refusal("select a /* b"), "");
}

}  // namespace
