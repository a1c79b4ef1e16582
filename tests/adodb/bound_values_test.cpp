// Which statements have their inserted values bound, and what is bound then.
#include "platform/adodb/sql/bound_values.hpp"

#include <gtest/gtest.h>

namespace {

using ADODB::SqlValue;
using ADODB::Statement;
using ADODB::engine::BindValues;
using ADODB::engine::FixedText;
using automation::Variant;

Statement Named(std::string_view name) {
  Statement sql = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = '";
  sql += SqlValue(name);
  sql += "'";
  return sql;
}

TEST(BoundValuesTest, WholeTextAndComparedNumberAreBound) {
  Statement sql = "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=";
  sql += SqlValue(1033);
  sql += " AND LABEL='";
  sql += SqlValue("LBLQX3429");
  sql += "'";
  const auto bound = BindValues(sql);
  ASSERT_TRUE(bound);
  EXPECT_EQ(bound->text, "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=? AND LABEL=?");
  EXPECT_EQ(bound->values, (ADODB::engine::Parameters{Variant(std::int32_t{1033}), Variant("LBLQX3429")}));
}

TEST(BoundValuesTest, EmptyAndNonAsciiTextsAreBound) {
  EXPECT_EQ(BindValues(Named(""))->values.at(0), Variant(""));
  EXPECT_EQ(BindValues(Named("Größe -- ; /* ? */"))->values.at(0), Variant("Größe -- ; /* ? */"));
}

TEST(BoundValuesTest, TextWithAQuoteOrANulIsLeftToTheCheck) {
  EXPECT_FALSE(BindValues(Named("O'Neill")));
  EXPECT_FALSE(BindValues(Named("O''Neill")));
  EXPECT_FALSE(BindValues(Named("x' or 'a'='a")));
  EXPECT_FALSE(BindValues(Named(std::string_view("a\0b", 3))));
}

TEST(BoundValuesTest, NumberThatIsNoneIsLeftToTheCheck) {
  for (const char* text : {"", "1 or 1=1", "1.5", "+1", "--1", "99999999999999999999"}) {
    Statement sql = "SELECT * FROM QUESTIONS WHERE Q_ID = ";
    sql += SqlValue(text);
    EXPECT_FALSE(BindValues(sql)) << text;
  }
  Statement negative = "SELECT * FROM QUESTIONS WHERE Q_ID = ";
  negative += SqlValue(-26);
  EXPECT_EQ(BindValues(negative)->values.at(0), Variant(std::int32_t{-26}));
}

TEST(BoundValuesTest, NumberThatGoesOnIsNotBound) {
  Statement sql = "SELECT * FROM QUESTIONS WHERE Q_ID = ";
  sql += SqlValue(26);
  sql += "7";
  EXPECT_FALSE(BindValues(sql));
}

TEST(BoundValuesTest, PartOfATextIsNotBound) {
  Statement prefix = "select 1 from T where A = 'x";
  prefix += SqlValue("y");
  prefix += "'";
  EXPECT_FALSE(BindValues(prefix));
  Statement suffix = "select 1 from T where A = '";
  suffix += SqlValue("x");
  suffix += "y'";
  EXPECT_FALSE(BindValues(suffix));
  Statement doubled = "select 1 from T where A = '''";
  doubled += SqlValue("x");
  doubled += "'";
  EXPECT_FALSE(BindValues(doubled));
  Statement goesOn = "select 1 from T where A = '";
  goesOn += SqlValue("x");
  goesOn += "''y'";
  EXPECT_FALSE(BindValues(goesOn));
}

TEST(BoundValuesTest, ValueInsideACommentOrANameIsNotBound) {
  for (const bool number : {true, false}) {
    Statement comment = "select 1 from T -- A =";
    comment += number ? SqlValue(1) : SqlValue("x");
    EXPECT_FALSE(BindValues(comment));
    Statement name = "select \"A=";
    name += number ? SqlValue(1) : SqlValue("x");
    name += " \" from T";
    EXPECT_FALSE(BindValues(name));
  }
}

TEST(BoundValuesTest, StatementWhoseTokensAreRewrittenIsNotBound) {
  Statement days = "select 1 from H where dateadd(d,";
  days += SqlValue(30);
  days += ",ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}";
  EXPECT_FALSE(BindValues(days));
  Statement date = "select 1 from H where dateadd(d,30,ENDSTATUSTIME)<'";
  date += SqlValue("7-26-2004 09:05:03");
  date += "'";
  EXPECT_FALSE(BindValues(date));
  Statement joined = "select A + B from T where C='";
  joined += SqlValue("x");
  joined += "'";
  EXPECT_FALSE(BindValues(joined));
}

TEST(BoundValuesTest, OnlyComparedValuesAreBound) {
  Statement list = "select 1 from T where A IN ('";
  list += SqlValue("x");
  list += "')";
  EXPECT_FALSE(BindValues(list));
  Statement order = "select A from T order by ";
  order += SqlValue(1);
  EXPECT_FALSE(BindValues(order));
}

TEST(BoundValuesTest, StatementWithoutValuesOrWithASecondOneIsNotBound) {
  EXPECT_FALSE(BindValues("select 1 from T"));
  Statement two = Named("x");
  two += "; delete from PARAMETERS";
  EXPECT_FALSE(BindValues(two));
}

TEST(BoundValuesTest, LongChainsAreNotBound) {
  Statement sql = "select 1 from T where A=1";
  for (int i = 0; i < 20; ++i) {
    sql += " or A=";
    sql += SqlValue(i);
  }
  EXPECT_FALSE(BindValues(sql));
}

TEST(BoundValuesTest, NumbersTakeTheTypeOfTheirLiteral) {
  Statement sql = "SELECT * FROM QUESTIONS WHERE Q_ID > ";
  sql += SqlValue(std::int64_t{2147483647});
  sql += " and Q_ID < ";
  sql += SqlValue(std::int64_t{2147483648});
  EXPECT_EQ(BindValues(sql)->values, (ADODB::engine::Parameters{Variant(std::int32_t{2147483647}),
                                                                Variant(std::int64_t{2147483648})}));
}

TEST(FixedTextTest, IsTheSameWhateverTheValuesAre) {
  const FixedText text(Named("one"));
  EXPECT_TRUE(text.IsOf(Named("one")));
  EXPECT_TRUE(text.IsOf(Named("")));
  EXPECT_TRUE(text.IsOf(Named("another ' one")));
  EXPECT_EQ(FixedText::Hash(Named("one")), FixedText::Hash(Named("")));
}

TEST(FixedTextTest, IsAnotherWhenAnythingElseDiffers) {
  const FixedText text(Named("one"));
  EXPECT_FALSE(text.IsOf(Statement("select PARAM_VALUE from PARAMETERS where PARAM_NAME = ''")));
  EXPECT_FALSE(text.IsOf(Named("one") + " "));
  Statement shifted = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = ";
  shifted += SqlValue("one");
  shifted += "''";
  EXPECT_FALSE(text.IsOf(shifted));
  Statement two = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = '";
  two += SqlValue("o");
  two += SqlValue("ne");
  two += "'";
  EXPECT_FALSE(text.IsOf(two));
  Statement upper = "select PARAM_VALUE from PARAMETERS where PARAM_NAMe = '";
  upper += SqlValue("one");
  upper += "'";
  EXPECT_FALSE(text.IsOf(upper));
}

}  // namespace
