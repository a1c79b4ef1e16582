// Questions that come again on a server, with other values in them: the answer is that of the literal.
#include <gtest/gtest.h>

#include <string>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/runtime.hpp"
#include "tests/servers/server_database.hpp"

namespace {

using ADODB::SqlFragment;
using ADODB::SqlValue;
using ADODB::Statement;

// Often enough for a server to change its mind about how to find the rows.
constexpr int kTimes = 8;

class BoundReadsTest : public testing::TestWithParam<std::string> {
 protected:
  BoundReadsTest() {
    ADODB::RegisterClasses(runtime_.classes, {ADODB::odbc::MakeProvider()});
    const bool postgresql = GetParam() == "postgresql";
    database_.Execute(
        std::string("CREATE TABLE SAMPLE (ID INTEGER PRIMARY KEY, NUMBER INTEGER, WIDE BIGINT, "
                    "EXACT NUMERIC(12,2), FIXED CHAR(10), SHORTTEXT VARCHAR(255), LARGE TEXT, ") +
        (postgresql ? "FLAG BOOLEAN, MOMENT TIMESTAMP(3))"
                    : "FLAG BIT(1), MOMENT DATETIME(3)) DEFAULT CHARACTER SET utf8mb4 "
                      "COLLATE utf8mb4_nopad_bin"));
    const std::string yes = postgresql ? "true" : "1";
    database_.Execute("INSERT INTO SAMPLE VALUES (1, 5, 5000000000, 2.50, 'x', 'Zo\xC3\xAB', 'long', " + yes +
                      ", timestamp '2004-07-26 09:05:03')");
    database_.Execute("INSERT INTO SAMPLE VALUES (2, 0, 5, 2, '', '', '', " + yes +
                      ", timestamp '2004-07-26 00:00:00')");
    database_.Execute("INSERT INTO SAMPLE VALUES (3, -3, -3, -1, '5', '5', '05', NULL, NULL)");
  }

  // The keys of the rows, or what was raised. Each question has a connection of its own, as in a job.
  std::string Answer(const Statement& sql) {
    const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(database_.ConnectionString(), "", "", ADODB::kOptionsUnspecified);
    const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    std::string answer;
    try {
      rows->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                 ADODB::kCommandText);
      answer = std::to_string(rows->Fields().Count()) + " columns:";
      for (; !rows->Eof(); rows->MoveNext()) answer += " " + automation::ToText(rows->Value("ID"));
    } catch (const automation::Error& error) {
      answer = "error " + error.SqlState();
    }
    connection->Close();
    return answer;
  }

  orvane_test::ServerDatabase database_{GetParam()};
  automation::Runtime runtime_;
  automation::RuntimeScope scope_{runtime_};
};

TEST_P(BoundReadsTest, AnswersAsForTheLiteral) {
  for (const char* column : {"NUMBER", "WIDE", "EXACT", "FIXED", "SHORTTEXT", "LARGE", "FLAG", "MOMENT"}) {
    for (const char* text : {"5", "05", " 5", "5 ", "x", "x ", "X", "", "Zo\xC3\xAB", "zo\xC3\xAB", "2.5",
                             "true", "1", "2004-07-26", "2004-07-26 09:05:03", "--", "?"}) {
      Statement sql = "SELECT ID,NUMBER FROM SAMPLE WHERE ";
      sql += SqlFragment(column);
      sql += " = '";
      sql += SqlValue(text);
      sql += "' ORDER BY ID";
      const std::string expected = Answer(Statement(SqlFragment(sql.ToString())));
      for (int i = 0; i < kTimes; ++i) EXPECT_EQ(Answer(sql), expected) << sql.ToString();
    }
    for (const std::int64_t number :
         {std::int64_t{5}, std::int64_t{-3}, std::int64_t{0}, std::int64_t{5000000000}}) {
      Statement sql = "SELECT ID,NUMBER FROM SAMPLE WHERE ";
      sql += SqlFragment(column);
      sql += " >= ";
      sql += SqlValue(number);
      sql += " ORDER BY ID";
      const std::string expected = Answer(Statement(SqlFragment(sql.ToString())));
      for (int i = 0; i < kTimes; ++i) EXPECT_EQ(Answer(sql), expected) << sql.ToString();
    }
  }
}

TEST_P(BoundReadsTest, GoesOnWhenTheTableHasChanged) {
  Statement sql = "SELECT * FROM SAMPLE WHERE SHORTTEXT = '";
  sql += SqlValue("5");
  sql += "'";
  for (int i = 0; i < kTimes; ++i) ASSERT_EQ(Answer(sql), "9 columns: 3");
  database_.Execute("ALTER TABLE SAMPLE ADD COLUMN MORE INTEGER");
  for (int i = 0; i < kTimes; ++i) ASSERT_EQ(Answer(sql), "10 columns: 3");
  database_.Execute("ALTER TABLE SAMPLE DROP COLUMN MORE");
  for (int i = 0; i < kTimes; ++i) ASSERT_EQ(Answer(sql), "9 columns: 3");
}

TEST_P(BoundReadsTest, GoesOnWhenAColumnHasAnotherType) {
  const bool postgresql = GetParam() == "postgresql";
  Statement sql = "SELECT ID,NUMBER FROM SAMPLE WHERE SHORTTEXT = '";
  sql += SqlValue("5");
  sql += "'";
  for (int i = 0; i < kTimes; ++i) ASSERT_EQ(Answer(sql), "2 columns: 3");
  database_.Execute(postgresql ? "ALTER TABLE SAMPLE ALTER COLUMN NUMBER TYPE BIGINT"
                               : "ALTER TABLE SAMPLE MODIFY NUMBER BIGINT");
  for (int i = 0; i < kTimes; ++i) ASSERT_EQ(Answer(sql), "2 columns: 3");
}

INSTANTIATE_TEST_SUITE_P(Servers, BoundReadsTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& test) { return test.param; });

}  // namespace
