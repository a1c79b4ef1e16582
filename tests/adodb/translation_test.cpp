#include "platform/adodb/sql/translation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/adodb/engines/sqlite/dialect.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using ADODB::SqlFragment;
using ADODB::Statement;

class TranslationTest : public testing::Test {
 protected:
  static ADODB::engine::Translation TranslateAll(std::string text) {
    const Statement statement{SqlFragment(std::move(text))};
    const ADODB::engine::Dialect& dialect = ADODB::engine::SqliteDialect();
    return ADODB::engine::Translate(ADODB::engine::CheckText(statement, dialect), dialect);
  }
  static std::string Translated(std::string text) { return TranslateAll(std::move(text)).text; }

  orvane_test::TestRuntime runtime;
};

TEST_F(TranslationTest, CopiesEverythingElseByteForByte) {
  for (const char* sql :
       {"select  PARAM_VALUE from PARAMETERS where PARAM_NAME = 'a + b'", "SELECT A+B, -1 , C /* x */ FROM T",
        "SELECT * FROM T WHERE (A) IN (1, 2) AND B LIKE 'isnull(%'", "select isnull from T",
        "select A.isnull, B + C from T where D < '7-26-2004'",
        "DELETE FROM T WHERE  (A = 1 AND B =1) or  (A = 2) ", "select ( ( A ) ) from T where ) ("}) {
    std::string expected = sql;
    while (expected.back() == ' ') expected.pop_back();
    EXPECT_EQ(Translated(sql), expected);
  }
}

TEST_F(TranslationTest, RewritesTheArchiveJobsSelection) {
  EXPECT_EQ(
      Translated("select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
                 "QUESTIONHISTORY where dateadd(d,-30,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}"),
      "select distinct ((Q_ORIGINATOR || ifnull(EMAILID,''))),Q_ORIGINATOR,EMAILID,PROSPECT from "
      "QUESTIONHISTORY where orvane_adddays(-30,ENDSTATUSTIME)<'2004-07-26 09:05:03'");
}

TEST_F(TranslationTest, ReadsALocalDateTimeTextOnlyWhereItIsComparedWithDateAdd) {
  EXPECT_EQ(
      Translated("select * from T where dateadd(d,1,E)<'7-26-2004 09:05:03' and Q='7-26-2004 09:05:03'"),
      "select * from T where orvane_adddays(1,E)<'2004-07-26 09:05:03' and Q='7-26-2004 09:05:03'");
  EXPECT_EQ(Translated("select * from T where '7-26-2004' >= dateadd(d,1,E)"),
            "select * from T where '2004-07-26 00:00:00' >= orvane_adddays(1,E)");
  EXPECT_EQ(Translated("select * from T where dateadd(d,1,E) <> '2004-7-6 01:02:03'"),
            "select * from T where orvane_adddays(1,E) <> '2004-07-06 01:02:03'");
}

TEST_F(TranslationTest, ReadsTheTextInTheLocaleOfTheMoment) {
  const std::string sql = "select * from T where dateadd(d,1,E)<'3-4-2004 00:00:01'";
  EXPECT_TRUE(TranslateAll(sql).usesLocale);
  EXPECT_THAT(Translated(sql), testing::HasSubstr("'2004-03-04 00:00:01'"));
  runtime.locale->dayFirst = true;
  EXPECT_THAT(Translated(sql), testing::HasSubstr("'2004-04-03 00:00:01'"));
  EXPECT_FALSE(TranslateAll("select * from T where dateadd(d,1,E)<{ts '2004-01-01 00:00:00'}").usesLocale);
}

TEST_F(TranslationTest, RefusesAComparedTextThatIsNoDate) {
  try {
    TranslateAll("select * from T where dateadd(d,1,E)<'soon'");
    FAIL();
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.SqlState(), "22007");
    EXPECT_EQ(error.Description(),
              "Conversion failed when converting date and/or time from character string 'soon'.");
  }
}

TEST_F(TranslationTest, RewritesTokensInsideOneAnother) {
  EXPECT_EQ(Translated("select isnull(isnull(A,B + 'x'), dateadd(d, isnull(N,0), C)) from T"),
            "select ifnull(ifnull(A,(B || 'x')),orvane_adddays(ifnull(N,0),C)) from T");
  EXPECT_EQ(
      Translated(
          "Delete from TRANSACTIONS where Q_ID in (select Q_ID from H where dateadd(d,5,E)<'1-2-2004')"),
      "Delete from TRANSACTIONS where Q_ID in (select Q_ID from H where orvane_adddays(5,E)<'2004-01-02 "
      "00:00:00')");
}

TEST_F(TranslationTest, JoinsTextsOnlyWhereAnOperandIsOne) {
  EXPECT_EQ(Translated("select A + 'x' + B from T"), "select (A || 'x' || B) from T");
  EXPECT_EQ(Translated("select A + isnull(N,0) from T"), "select A + ifnull(N,0) from T");
  EXPECT_EQ(Translated("select 2 * A + '3' from T"), "select 2 * A + '3' from T") << "some other arithmetic";
  EXPECT_EQ(Translated("select A from T where B = +5"), "select A from T where B = +5");
}

TEST_F(TranslationTest, LeavesOtherCallsAlone) {
  EXPECT_EQ(Translated("select dateadd(h,1,C), isnull(A), isnull(A,B,C) from T"),
            "select dateadd(h,1,C), isnull(A), isnull(A,B,C) from T");
}

std::string Chain(int terms, const std::string& term) {
  std::string text;
  for (int i = 1; i <= terms; ++i) {
    std::string one = term;
    one.replace(one.find('#'), 1, std::to_string(i));
    text += one + (i < terms ? " or " : " ");
  }
  return text;
}

TEST_F(TranslationTest, LeavesAShortChainAlone) {
  const std::string sql = "DELETE FROM DATAFILES WHERE " + Chain(100, " (ID1 = # AND FILETYPE =1)");
  EXPECT_EQ(Translated(sql) + " ", sql);
}

TEST_F(TranslationTest, MakesALongChainOfEqualitiesAList) {
  const std::string list =
      Translated("DELETE FROM DATAFILES WHERE " + Chain(101, " (ID1 = # AND FILETYPE =1)"));
  EXPECT_THAT(list,
              testing::StartsWith("DELETE FROM DATAFILES WHERE (ID1,FILETYPE) IN (VALUES (1,1),(2,1),(3,1"));
  EXPECT_THAT(list, testing::EndsWith("),(100,1),(101,1))"));
  const std::string texts = Translated("DELETE FROM DATAFILES WHERE " +
                                       Chain(101, " (ID1 = # and FILENAME = 'a or''b' and  FILETYPE = -3 )"));
  EXPECT_THAT(texts, testing::StartsWith("DELETE FROM DATAFILES WHERE (ID1,FILENAME,FILETYPE) IN (VALUES "
                                         "(1,'a or''b',-3),(2,'a or''b',-3),"));
  EXPECT_THAT(Translated("SELECT * FROM T WHERE " + Chain(101, "A=#")),
              testing::StartsWith("SELECT * FROM T WHERE A IN (VALUES (1),"));
}

TEST_F(TranslationTest, PutsTheColumnsOfEveryTermInOneOrder) {
  const std::string sql = "DELETE FROM T WHERE " + Chain(100, "(A = # AND B = 0)") + "or (b = 7 AND a = 8)";
  const std::string list = Translated(sql);
  EXPECT_THAT(list, testing::EndsWith(",(100,0),(8,7))"));
}

TEST_F(TranslationTest, LeavesALongChainOfOtherConditionsAlone) {
  EXPECT_EQ(
      Translated("DELETE FROM T WHERE " + Chain(250, "(A = # AND B < {ts '2004-01-01 00:00:00'})")) + " ",
      "DELETE FROM T WHERE " + Chain(250, "(A = # AND orvane_moment(B) < '2004-01-01 00:00:00')"));
}

TEST_F(TranslationTest, MakesNoListOfWhatWouldMeanSomethingElse) {
  for (const char* term : {"(A = # AND B IN (SELECT C FROM T))", "CASE WHEN A = # or B = 1 THEN 1 END = 1",
                           "A BETWEEN # AND 7", "NOT A = #"}) {
    const std::string sql = "DELETE FROM T WHERE " + Chain(150, term);
    EXPECT_EQ(Translated(sql) + " ", sql);
  }
  const std::string select = "SELECT * FROM T WHERE " + Chain(150, "A < #");
  EXPECT_EQ(Translated(select) + " ", select);
}

TEST_F(TranslationTest, DoesNotTakeTermsForTheSameThatNameOtherColumns) {
  for (const char* last : {"(A = 1 AND C = 1)", "(A = 1)"}) {
    const std::string sql = "DELETE FROM T WHERE " + Chain(101, "(A = # AND B = 1)") + "or " + last;
    EXPECT_EQ(Translated(sql), sql);
  }
}

// "A = 1 AND A = 2" meets no row; a list that took the last value for each column would meet rows of A = 2.
TEST_F(TranslationTest, MakesNoListOfATermThatNamesOneColumnTwice) {
  for (const char* term : {"(A = 1 AND A = 2)", "(A = 1 AND a = 2)", "(B = 1 AND B = 2)"}) {
    const std::string sql =
        "DELETE FROM T WHERE " + Chain(101, "(A = # AND B = 1)") + "or " + std::string(term);
    EXPECT_EQ(Translated(sql), sql) << term;
  }
}

// Each of these words, wherever it stands, may bind what is around it in another way than AND and OR do.
TEST_F(TranslationTest, MakesNoListOfAChainThatHoldsAWordOfAnotherKind) {
  for (const char* last :
       {"CASE A WHEN 1 THEN 1 END = 1", "A = (SELECT 1)", "A = 1 ORDER BY A", "A = 1 GROUP BY A",
        "A = 1 HAVING 1 = 1", "A = 1 UNION ALL VALUES (1)", "A = 1 LIMIT 1", "A BETWEEN 1 AND 7",
        "A = 1 RETURNING A", "A = 1 EXCEPT VALUES (1)", "A = 1 INTERSECT VALUES (1)", "NOT A = 1",
        "A = 1 returning A", "(B = 1 AND (NOT A = 1))"}) {
    const std::string sql = "DELETE FROM T WHERE " + Chain(150, "A = #") + "or " + last;
    EXPECT_EQ(Translated(sql), sql) << last;
  }
  const std::string twice = "DELETE FROM T WHERE " + Chain(150, "A = #") + "or A WHERE A = 1";
  EXPECT_EQ(Translated(twice), twice);
}

// The parts by which rows are walked and deleted are in the engine's words.
TEST_F(TranslationTest, TellsThePartsOfASelectInTheEnginesSql) {
  const auto select =
      TranslateAll(
          "select A, B as C from T x where isnull(A,'') = 'a' and D < {ts '2004-07-26 09:05:03'} order by B")
          .select;
  ASSERT_TRUE(select);
  EXPECT_EQ(select->list, "A, B as C");
  EXPECT_EQ(select->table, "T");
  EXPECT_EQ(select->name, "x");
  EXPECT_EQ(select->condition, "ifnull(A,'') = 'a' and orvane_moment(D) < '2004-07-26 09:05:03'");
  EXPECT_EQ(select->order, "order by B");
  const auto chain = TranslateAll("SELECT * FROM T WHERE " + Chain(101, "A=#")).select;
  ASSERT_TRUE(chain);
  EXPECT_THAT(chain->condition, testing::StartsWith("A IN (VALUES (1),"));
  EXPECT_THAT(chain->condition, testing::EndsWith(",(101))"));
  EXPECT_FALSE(TranslateAll("select distinct A from T").select);
}

TEST_F(TranslationTest, TellsOfWhichTableAStatementChangesRows) {
  using ADODB::Change;
  const auto told = [](const std::string& sql) {
    const auto change = TranslateAll(sql).change;
    if (!change) return std::string("nothing");
    const std::string kind = change->change == Change::Insert   ? "insert "
                             : change->change == Change::Update ? "update "
                                                                : "delete ";
    return kind + change->table;
  };
  EXPECT_EQ(told("insert into T(A) values(1)"), "insert T");
  EXPECT_EQ(told("INSERT T SELECT * FROM U"), "insert T");
  EXPECT_EQ(told("insert or ignore into T values(1)"), "insert T");
  EXPECT_EQ(told("replace into T values(1)"), "insert T");
  EXPECT_EQ(told("update T set A = 1"), "update T");
  EXPECT_EQ(told("update only dbo.T x set A = 1"), "update dbo.T");
  EXPECT_EQ(told("merge into T using U on 1 = 1 when matched then delete"), "update T");
  EXPECT_EQ(told("delete from T order by A limit 3"), "delete T");
  for (const char* sql :
       {"drop table T", "call P(1)", "create table T(A integer)", "truncate table T", "delete top (3) from T",
        "select * from T", "update", "alter table T add B integer"}) {
    EXPECT_EQ(told(sql), "nothing") << sql;
  }
}

TEST_F(TranslationTest, KnowsQueriesFromWhatMayChangeSomething) {
  for (const char* sql :
       {"select * from T", "(select A from T) union (select B from U)",
        "with a as (select 1) select * from a", "values (1)", "select * from T for update",
        "select * from T for no key update", "set language us_english",
        "select insert('abc',1,1,'x'), replace(A,'a','b') from T", "select 'insert', \"delete\" from T"}) {
    EXPECT_TRUE(TranslateAll(sql).onlyReads) << sql;
  }
  for (const char* sql : {"insert into T values(1)", "with a as (delete from T returning *) select * from a",
                          "select * into U from T", "with a as (select 1) update T set A = 1",
                          "explain analyze delete from T", "call P(1)", "create table U(A integer)"}) {
    EXPECT_FALSE(TranslateAll(sql).onlyReads) << sql;
  }
}

TEST_F(TranslationTest, TellsThePartsOfADeleteInTheEnginesSql) {
  const auto deletion =
      TranslateAll("Delete from T where dateadd(d,1,E)<{ts '2004-07-26 09:05:03'}").deletion;
  ASSERT_TRUE(deletion);
  EXPECT_EQ(deletion->table, "T");
  EXPECT_EQ(deletion->where, "where orvane_adddays(1,E)<'2004-07-26 09:05:03'");
  EXPECT_FALSE(deletion->namesTableTwice);
  EXPECT_EQ(TranslateAll("delete from T").deletion->where, "");
  for (const char* sql : {"delete from T order by A", "delete from T x where A = 1", "update T set A = 1"}) {
    EXPECT_FALSE(TranslateAll(sql).deletion) << sql;
  }
}

}  // namespace
