#include "platform/adodb/sql/checked_statement.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/adodb/engines/sqlite/dialect.hpp"

namespace {

using ADODB::SqlFragment;
using ADODB::SqlValue;
using ADODB::Statement;
using testing::StartsWith;

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
  for (const char* value : {"", "x", "a;b", "-- a", "/*", "\\", "\"", "`", "$$", "größe", "\xE2\x80\x99"}) {
    EXPECT_EQ(Refusal(Quoted(value)), "") << value;
  }
}

TEST(CheckedStatementTest, RefusesAnyQuoteInsideATextAsTheEngineWould) {
  EXPECT_EQ(Refusal(Quoted("O'Brien")), "near \"Brien\": syntax error");
  EXPECT_EQ(Refusal(Quoted("' or 1=1 --")), "near \"or\": syntax error");
  EXPECT_EQ(Refusal(Quoted("'''x")), "near \"x\": syntax error");
  EXPECT_EQ(Refusal(Quoted("x'")), "near \"'\": syntax error");
}

// To the engine they would be one quote, and the text another one than was asked for.
TEST(CheckedStatementTest, RefusesQuotesInPairs) {
  EXPECT_EQ(Refusal(Quoted("a''b")), "near \"b\": syntax error");
  EXPECT_EQ(Refusal(Quoted("''x''")), "near \"x\": syntax error");
  EXPECT_EQ(Refusal(Quoted("''")), "near \"'\": syntax error");
  EXPECT_EQ(Refusal(Quoted("''''")), "near \"'\": syntax error");
  EXPECT_EQ(Refusal(Quoted("chat'--1")), "near \"-\": syntax error");
  EXPECT_EQ(Refusal(Quoted("x' --")), "near \"-\": syntax error");
}

// Values can meet inside one text without fixed text between them.
TEST(CheckedStatementTest, RefusesAPairThatTwoValuesMake) {
  Statement statement = "select A from T where B = '";
  statement += SqlValue("a'");
  statement += SqlValue("'b");
  statement += "'";
  EXPECT_EQ(Refusal(statement), "near \"'\": syntax error");
}

TEST(CheckedStatementTest, RefusesTwoValuesThatWouldPairTheirQuotes) {
  Statement statement = "delete from T where A = '";
  statement += SqlValue("x'");
  statement += "' and B = '";
  statement += SqlValue("' or 1 = 1 --");
  statement += "'";
  EXPECT_EQ(Refusal(statement), "near \"'\": syntax error");
}

TEST(CheckedStatementTest, RefusesANulInsideAText) {
  EXPECT_EQ(Refusal(Quoted(std::string_view("a\0b", 3))), std::string("near \"\0\": syntax error", 22));
}

TEST(CheckedStatementTest, LetsASignedDecimalNumberPassOutsideATexts) {
  for (const char* value : {"0", "17", "-17", "+3", "12.50", "-0.5", "99999999999999999999"}) {
    EXPECT_EQ(Refusal(Bare(value)), "") << value;
  }
}

TEST(CheckedStatementTest, RefusesAnythingElseOutsideATexts) {
  for (const char* value : {"", "x", "1 or 1=1", "1;", "--1", "1-", "1.", ".5", "1e5", "0x10", " 1", "1 ",
                            "(1)", "NULL", "?", "\xD9\xA1", "{ts '2004-07-26 09:05:03'}"}) {
    EXPECT_THAT(Refusal(Bare(value)), StartsWith("near \"")) << value;
  }
  EXPECT_EQ(Refusal(Bare("abc or 1")), "near \"abc\": syntax error");
}

// What the suite's conversion makes of a name.
TEST(CheckedStatementTest, LetsAWholeLiteralPassOutsideATexts) {
  for (const char* value : {"''", "'x'", "'O''Brien'", "''''", "'''x'''", "'a -- b /* ; \\'", "'größe'"}) {
    EXPECT_EQ(Refusal(Bare(value)), "") << value;
  }
}

TEST(CheckedStatementTest, RefusesWhatIsMoreOrLessThanOneLiteral) {
  for (const char* value : {"'", "'''", "'x", "x'", "'a'b'", "'a'''b'", "'a' or 'b'='b'", "'a','b'", "'a' ",
                            " 'a'", "N'a'", "E'a'", "x'41'", "$$a$$", "\"a\"", "'a'--", "'a';"}) {
    EXPECT_THAT(Refusal(Bare(value)), StartsWith("near \"")) << value;
  }
  EXPECT_THAT(Refusal(Bare(std::string_view("'a\0b'", 5))), StartsWith("near \""));
}

// Side by side, two tokens become one that nobody has looked at.
TEST(CheckedStatementTest, RefusesAValueThatJoinsWhatStandsBesideIt) {
  const auto between = [](const char* before, std::string_view value, const char* after) {
    Statement statement = "select A from T where B = ";
    statement += SqlFragment(before);
    statement += SqlValue(value);
    statement += SqlFragment(after);
    return Refusal(statement);
  };
  EXPECT_EQ(between("(", "'a'", ")"), "");
  EXPECT_EQ(between("1-", "2", "+3"), "");
  for (const char* before : {"'x'", "E", "n", "U&", "$", "\"x\""}) {
    EXPECT_THAT(between(before, "'a'", ""), StartsWith("near \"")) << before;
  }
  for (const char* before : {"1", "1.", "X", "'x'", "-"}) {
    EXPECT_THAT(between(before, "-5", ""), StartsWith("near \"")) << before;
  }
  for (const char* after : {"'x'", "0", "e5", ".5", "$"}) {
    EXPECT_THAT(between("", "5", after), StartsWith("near \"")) << after;
  }
  Statement two = "select A from T where B = ";
  two += SqlValue("'a'");
  two += SqlValue("'b'");
  EXPECT_THAT(Refusal(two), StartsWith("near \""));
}

TEST(CheckedStatementTest, DoesNotLetASignOpenAComment) {
  Statement statement = "select A from T where B = -";
  statement += SqlValue(-5);
  EXPECT_EQ(Refusal(statement), "near \"-\": syntax error");
}

TEST(CheckedStatementTest, RefusesAValueInsideANameOrAComment) {
  Statement name = "select \"";
  name += SqlValue("A");
  name += "\" from T";
  EXPECT_EQ(Refusal(name), "near \"A\": syntax error");
  Statement comment = "select A /* ";
  comment += SqlValue(std::int32_t{1});
  comment += " */ from T";
  EXPECT_EQ(Refusal(comment), "near \"1\": syntax error");
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
  EXPECT_EQ(Refusal("select 'a"), "near \"'a\": syntax error");
  EXPECT_EQ(Refusal("select a /* b"), "near \"/* b\": syntax error");
}

}  // namespace
