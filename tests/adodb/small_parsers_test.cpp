// Connection strings, criteria, stored dates and the shape of a SELECT.
#include <gtest/gtest.h>

#include "platform/adodb/cursor/criterion.hpp"
#include "platform/adodb/session/connection_string.hpp"
#include "platform/adodb/sql/iso_date_time.hpp"
#include "platform/adodb/sql/select_shape.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/iso_text.hpp"

namespace {

using ADODB::engine::ConnectionString;
using ADODB::engine::ParseCriterion;
using ADODB::engine::ParseIso;
using ADODB::engine::SelectShape;
using automation::DateTime;
using automation::IsoText;
using automation::Variant;

template <class Action>
std::int32_t NumberOf(Action action) {
  try {
    action();
  } catch (const automation::Error& error) {
    return error.Number();
  }
  return 0;
}

TEST(ConnectionStringTest, ReadsKeywordsInAnyCase) {
  const auto text = ConnectionString::Parse(" Provider = SQLite ;Data Source=db\\orvane.sqlite;;");
  EXPECT_EQ(text.Value("PROVIDER"), "SQLite");
  EXPECT_EQ(text.Value("data source"), "db\\orvane.sqlite");
  EXPECT_EQ(text.Value("Mode"), std::nullopt);
  EXPECT_EQ(ConnectionString::Parse("").ToString(), "");
}

TEST(ConnectionStringTest, ReadsEnclosedValues) {
  const auto text =
      ConnectionString::Parse("Driver={PostgreSQL Unicode};Pwd={a;b}}c};Opt=\"x;y\";Init='z=1'");
  EXPECT_EQ(text.Value("Driver"), "PostgreSQL Unicode");
  EXPECT_EQ(text.Value("Pwd"), "a;b}c");
  EXPECT_EQ(text.Value("Opt"), "x;y");
  EXPECT_EQ(text.Value("Init"), "z=1");
  EXPECT_EQ(ConnectionString::Parse(text.ToString()).Value("Pwd"), "a;b}c");
}

TEST(ConnectionStringTest, TheLastOfTwoEqualKeywordsCounts) {
  EXPECT_EQ(ConnectionString::Parse("UID=a;uid=b").ToString(), "UID=b");
}

TEST(ConnectionStringTest, RefusesWhatIsNone) {
  for (const char* text : {"nonsense", "=x", "a=1;b", "a={b", "a=\"b", "a={b}c"}) {
    EXPECT_EQ(NumberOf([&] { ConnectionString::Parse(text); }), 3001) << text;
  }
  try {
    ConnectionString::Parse("a=1;oops");
    FAIL();
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Description(),
              "The connection string is not valid: a '=' is missing after the keyword at character 5.");
  }
}

TEST(CriterionTest, ReadsTextsAndNumbers) {
  EXPECT_EQ(ParseCriterion("SESSIONID='a \"b\" -- /* \\.xml '").value, Variant("a \"b\" -- /* \\.xml "));
  EXPECT_EQ(ParseCriterion("SESSIONID=''").value, Variant(""));
  EXPECT_EQ(ParseCriterion(" [A B] = -12").value, Variant(std::int64_t{-12}));
  EXPECT_EQ(ParseCriterion(" [A B] = -12").column, "A B");
  EXPECT_EQ(ParseCriterion("Q_ID=2.5").value, Variant(2.5));
}

TEST(CriterionTest, RefusesEverythingElse) {
  for (const char* text :
       {"",         "A",           "A=",     "=1",           "A=b",       "A='b",   "A='b'c'",
        "A<1",      "A=1 AND B=2", "1=1",    "A=1;",         "A==1",      "A=--1",  "A='a''",
        "A='a''b'", "A='''a'''",   "A=''''", "A='chat'--1'", "A='x' --'", "A='x' ", "A='x'\n",
        "A='x'--",  "A='x'/* */",  "A='x';", "A=1 "}) {
    EXPECT_EQ(NumberOf([&] { ParseCriterion(text); }), 3001) << text;
  }
  EXPECT_EQ(NumberOf([] { ParseCriterion(std::string_view("A='a\0b'", 8)); }), 3001);
}

TEST(IsoDateTimeTest, ReadsEveryStoredForm) {
  const DateTime moment =
      DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  EXPECT_EQ(ParseIso("2004-07-26 09:05:03"), moment);
  EXPECT_EQ(ParseIso("2004-07-26T09:05:03"), moment);
  EXPECT_EQ(ParseIso("2004-07-26"), moment.DatePart());
  EXPECT_EQ(IsoText(*ParseIso("2004-07-26 09:05")), "2004-07-26 09:05:00");
  EXPECT_EQ(IsoText(*ParseIso("2004-07-26 09:05:03.25")), "2004-07-26 09:05:03.25");
  EXPECT_EQ(IsoText(*ParseIso("2004-07-26 09:05:03.0000009")), "2004-07-26 09:05:03");
  EXPECT_EQ(IsoText(*ParseIso("0999-01-01")), "0999-01-01 00:00:00");
}

TEST(IsoDateTimeTest, ReadsNothingElse) {
  for (const char* text :
       {"", "2004", "2004-7-26", "26-07-2004", "2004-02-30", "2004-07-26 ", "2004-07-26 24:00:00",
        "2004-07-26 09:05:03.", "2004-07-26 09:05:03Z", "2004-07-26x", "0000-00-00 00:00:00"}) {
    EXPECT_EQ(ParseIso(text), std::nullopt) << text;
  }
}

bool ReadSelect(std::string_view sql, SelectShape& shape) {
  const std::vector<ADODB::engine::Token> tokens = ADODB::engine::Tokenize(sql).tokens;
  const auto parts = ADODB::engine::ReadSelect(sql, tokens);
  if (!parts) return false;
  const auto text = [&](ADODB::engine::TokenRange range) { return std::string(range.In(sql, tokens)); };
  shape = {text(parts->list), text(parts->table), text(parts->name), text(parts->condition),
           text(parts->order)};
  return true;
}

TEST(SelectShapeTest, ReadsARowByRowSelect) {
  SelectShape shape;
  ASSERT_TRUE(
      ReadSelect("SELECT a.X AS Y, Z FROM dbo.T a WHERE (A = 1 or B = 'x from') ORDER BY A DESC", shape));
  EXPECT_EQ(shape.list, "a.X AS Y, Z");
  EXPECT_EQ(shape.table, "dbo.T");
  EXPECT_EQ(shape.name, "a");
  EXPECT_EQ(shape.condition, "(A = 1 or B = 'x from')");
  EXPECT_EQ(shape.order, "ORDER BY A DESC");
  EXPECT_EQ(shape.From("K > ?"), " FROM dbo.T a WHERE ((A = 1 or B = 'x from')) AND K > ?");
  ASSERT_TRUE(ReadSelect("select * from PROSPECT", shape));
  EXPECT_EQ(shape.name, "PROSPECT");
  EXPECT_EQ(shape.From(""), " FROM PROSPECT");
}

TEST(SelectShapeTest, RefusesEveryOtherStatement) {
  SelectShape shape;
  for (const char* sql :
       {"DELETE FROM T", "SELECT DISTINCT A FROM T", "SELECT COUNT(*) FROM T", "SELECT A FROM T, U",
        "SELECT A FROM T JOIN U ON 1=1", "SELECT A FROM T INNER JOIN U ON 1=1", "SELECT A FROM T GROUP BY A",
        "SELECT A FROM T WHERE B = 1 GROUP BY A", "SELECT A FROM T UNION SELECT B FROM U",
        "SELECT A FROM T LIMIT 1", "SELECT A FROM T WHERE B = 1 LIMIT 1", "SELECT A FROM (SELECT 1) b",
        "SELECT 1", "SELECT A + 1 FROM T", "SELECT A FROM T WHERE", "SELECT A FROM T ORDER BY A LIMIT 3",
        "SELECT TOP 5 A FROM T", "SELECT FROM T"}) {
    EXPECT_FALSE(ReadSelect(sql, shape)) << sql;
  }
}

}  // namespace
