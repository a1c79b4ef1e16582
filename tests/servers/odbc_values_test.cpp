// Values through the ODBC provider, to and from real servers.
#include <vector>

#include "tests/servers/odbc_provider_fixture.hpp"

namespace orvane_test {

TEST_P(OdbcProviderTest, ReadsEveryTypeAsItsVariant) {
  MakeTable();
  session_->Execute(OnPostgreSql() ? "INSERT INTO SAMPLE VALUES (1, TRUE, -7, 5000000000, 12.50, 0.25, "
                                     "'2004-07-26 09:05:03.120', 'é€', 'long')"
                                   : "INSERT INTO SAMPLE VALUES (1, b'1', -7, 5000000000, 12.50, 0.25, "
                                     "'2004-07-26 09:05:03.120', 'é€', 'long')",
                    {});
  const auto rows = session_->Query("SELECT * FROM SAMPLE", {});
  ASSERT_TRUE(rows->Next());
  const auto& columns = rows->Columns();
  ASSERT_EQ(columns.size(), 9u);
  EXPECT_EQ(rows->Value(0), Variant(std::int32_t{1}));
  EXPECT_EQ(rows->Value(1), Variant(true));
  EXPECT_EQ(rows->Value(2), Variant(std::int32_t{-7}));
  EXPECT_EQ(rows->Value(3), Variant(std::int64_t{5'000'000'000}));
  EXPECT_EQ(rows->Value(4), Variant(12.5));
  EXPECT_EQ(rows->Value(5), Variant(0.25));
  EXPECT_EQ(rows->Value(6), Variant(Moment(2004, 7, 26, 9, 5, 3, 120'000)));
  EXPECT_EQ(rows->Value(7), Variant("é€"));
  EXPECT_EQ(rows->Value(8), Variant("long"));
  std::vector<ColumnType> types;
  for (const auto& column : columns) types.push_back(column.type);
  EXPECT_THAT(types, ElementsAre(ColumnType::Integer, ColumnType::Boolean, ColumnType::Integer,
                                 ColumnType::Integer, ColumnType::Decimal, ColumnType::Double,
                                 ColumnType::DateTime, ColumnType::Text, ColumnType::Text));
}

TEST_P(OdbcProviderTest, TellsTheTableAndColumnBehindEachColumn) {
  MakeTable();
  const auto rows = session_->Query("SELECT NUMBER AS OTHER, NUMBER + 1, SHORTTEXT FROM SAMPLE", {});
  const auto& columns = rows->Columns();
  ASSERT_EQ(columns.size(), 3u);
  EXPECT_EQ(columns[0].name, TypeOfEngine("other", "OTHER"));
  EXPECT_EQ(columns[0].baseTable, "sample");
  EXPECT_EQ(columns[0].baseColumn, TypeOfEngine("number", "NUMBER"));
  EXPECT_EQ(columns[1].baseTable, "");
  EXPECT_EQ(columns[1].baseColumn, "");
  EXPECT_EQ(columns[2].collation, TypeOfEngine("", "utf8mb4_nopad_bin"));
}

TEST_P(OdbcProviderTest, TakesAWholeTablesColumnsForWhatTheyAreCalled) {
  MakeTable();
  ADODB::engine::Sql sql("SELECT * FROM SAMPLE");
  sql.SetTable("SAMPLE");
  const auto told = session_->Query(sql, {})->Columns();
  const auto asked = session_->Query("SELECT * FROM SAMPLE", {})->Columns();
  ASSERT_EQ(told.size(), asked.size());
  for (std::size_t i = 0; i < told.size(); ++i) {
    EXPECT_EQ(told[i].name, asked[i].name);
    EXPECT_EQ(told[i].type, asked[i].type);
    EXPECT_EQ(told[i].baseTable, "SAMPLE");
    EXPECT_EQ(told[i].baseColumn, asked[i].baseColumn);
    EXPECT_EQ(told[i].collation, asked[i].collation);
  }
}

TEST_P(OdbcProviderTest, WritesEveryVariantThroughParameters) {
  MakeTable();
  const Parameters values = {true,
                             std::int32_t{-7},
                             std::int64_t{5'000'000'000},
                             12.5,
                             0.25,
                             Moment(2004, 7, 26, 9, 5, 3, 120'000),
                             "it's \\ a ? \"text\" 🙂",
                             "x"};
  const std::string longText = TypeOfEngine("LONGTEXT", "`LONGTEXT`");
  EXPECT_EQ(session_->Execute("INSERT INTO SAMPLE (FLAG, NUMBER, WIDE, EXACT, INEXACT, MOMENT, SHORTTEXT, " +
                                  longText + ") VALUES (?,?,?,?,?,?,?,?)",
                              values),
            1);
  const auto rows = session_->Query(
      "SELECT FLAG, NUMBER, WIDE, EXACT, INEXACT, MOMENT, SHORTTEXT, " + longText + " FROM SAMPLE", {});
  ASSERT_TRUE(rows->Next());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(rows->Value(i), values[i]) << i;
}

TEST_P(OdbcProviderTest, WritesNullIntoColumnsOfEveryType) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (ID, NUMBER, SHORTTEXT) VALUES (1, 5, 'a')", {});
  for (const char* column : {"FLAG", "NUMBER", "WIDE", "EXACT", "INEXACT", "MOMENT", "SHORTTEXT"}) {
    const std::string sql = "UPDATE SAMPLE SET " + std::string(column) + " = ? WHERE ID = ?";
    EXPECT_EQ(session_->Execute(sql, {Variant::Null(), std::int32_t{1}}), 1) << column;
    EXPECT_TRUE(Single("SELECT " + std::string(column) + " FROM SAMPLE").IsNull()) << column;
  }
}

TEST_P(OdbcProviderTest, SwitchesBetweenNullAndValuesInOnePreparedStatement) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (1)", {});
  const char* sql = "UPDATE SAMPLE SET NUMBER = ?, SHORTTEXT = ? WHERE ID = 1";
  for (int round = 0; round < 2; ++round) {
    session_->Execute(sql, {std::int32_t{round}, "text"});
    EXPECT_EQ(Single("SELECT NUMBER FROM SAMPLE"), Variant(std::int32_t{round}));
    session_->Execute(sql, {Variant::Null(), Variant::Null()});
    EXPECT_TRUE(Single("SELECT NUMBER FROM SAMPLE").IsNull());
    session_->Execute(sql, {std::int32_t{7}, std::string(200, 'x')});
    EXPECT_EQ(Single("SELECT SHORTTEXT FROM SAMPLE WHERE NUMBER = 7 AND LENGTH(SHORTTEXT) = 200"),
              Variant(std::string(200, 'x')));
  }
}

// Rows are fetched into memory that is used again for each: nothing of a row may show in a later one.
TEST_P(OdbcProviderTest, KeepsTheValuesOfOneRowOutOfTheNext) {
  session_->Execute(
      "CREATE TABLE MIXED (ID INTEGER PRIMARY KEY, FLAG " + std::string(TypeOfEngine("BOOLEAN", "BIT(1)")) +
          ", SMALL SMALLINT, NUMBER INTEGER, WIDE BIGINT, EXACT DECIMAL(12,2), INEXACT DOUBLE PRECISION,"
          " MOMENT " +
          TypeOfEngine("TIMESTAMP(3)", "DATETIME(3)") +
          ", DAY_ONLY DATE, TIME_ONLY TIME, FIXED CHAR(3), SHORTTEXT VARCHAR(2000))",
      {});
  const std::vector<std::string> values = {
      TypeOfEngine("TRUE", "b'1'"), "-3",           "7",          "5000000000", "12.50", "0.25",
      "'2004-07-26 09:05:03.120'",  "'2004-07-26'", "'09:05:03'", "'abc'",      "'text'"};
  const std::vector<Variant> expected = {true,
                                         std::int32_t{-3},
                                         std::int32_t{7},
                                         std::int64_t{5'000'000'000},
                                         12.5,
                                         0.25,
                                         Moment(2004, 7, 26, 9, 5, 3, 120'000),
                                         Moment(2004, 7, 26, 0, 0, 0),
                                         "09:05:03",
                                         "abc",
                                         "text"};
  for (int id = 1; id <= 6; ++id) {
    std::string row = std::to_string(id);
    for (const std::string& value : values) row += "," + (id % 2 == 0 ? std::string("NULL") : value);
    session_->Execute("INSERT INTO MIXED VALUES (" + row + ")", {});
  }
  const auto rows = session_->Query("SELECT * FROM MIXED WHERE ID > ? ORDER BY ID", {std::int32_t{0}});
  Variant value;
  for (int id = 1; id <= 6; ++id) {
    ASSERT_TRUE(rows->Next());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      rows->ReadInto(i + 1, value);
      EXPECT_EQ(value, id % 2 == 0 ? Variant::Null() : expected[i])
          << id << " " << rows->Columns()[i + 1].name;
    }
  }
  EXPECT_FALSE(rows->Next());
}

TEST_P(OdbcProviderTest, GivesTheKeyOfAnInsertedRow) {
  MakeTable();
  const char* sql = "INSERT INTO SAMPLE (NUMBER) VALUES (?) RETURNING ID";
  const std::int32_t first = automation::ToInt32(Single(sql, {std::int32_t{1}}));
  const std::int32_t second = automation::ToInt32(Single(sql, {std::int32_t{2}}));
  EXPECT_NE(first, second);
  EXPECT_EQ(Single("SELECT NUMBER FROM SAMPLE WHERE ID = ?", {second}), Variant(std::int32_t{2}));
}

TEST(MariaDbProviderTest, ReadsZeroDatesAsNull) {
  const orvane_test::ServerDatabase database("mariadb");
  const auto session = database.Connect();
  session->Execute("CREATE TABLE OLD (ID INTEGER PRIMARY KEY, MOMENT DATETIME)", {});
  session->Execute("INSERT INTO OLD VALUES (1, '0000-00-00 00:00:00'), (2, '2004-07-26 00:00:00')", {});
  const auto rows = session->Query("SELECT MOMENT FROM OLD ORDER BY ID", {});
  ASSERT_TRUE(rows->Next());
  EXPECT_TRUE(rows->Value(0).IsNull());
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Value(0), Variant(Moment(2004, 7, 26, 0, 0, 0)));
}

INSTANTIATE_TEST_SUITE_P(Servers, OdbcProviderTest,
                         testing::Values(std::string("postgresql"), std::string("mariadb")),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

}  // namespace orvane_test
