// The files of schema/ against each other, without a server.
#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/servers/server_database.hpp"

namespace {

using testing::ElementsAre;

struct Table {
  std::vector<std::string> columns;
  std::string key;  // as written in its PRIMARY KEY clause, or the column that carries one
  friend bool operator==(const Table&, const Table&) = default;
};

struct Schema {
  std::map<std::string, Table> tables;
  std::set<std::string> indexes;  // "ON TABLE (A, B)"
};

// Reads the plain form that the files are written in: one column a line, the name first.
Schema Read(const std::string& file) {
  Schema schema;
  for (const std::string& statement :
       orvane_test::StatementsOf(std::filesystem::path(ORVANE_SOURCE_DIR "/schema") / file)) {
    std::istringstream lines(statement);
    std::string line;
    std::getline(lines, line);
    if (line.starts_with("CREATE INDEX ")) {
      schema.indexes.insert(line.substr(line.find(" ON ") + 1));
      continue;
    }
    const std::string start = "CREATE TABLE ";
    EXPECT_THAT(line, testing::StartsWith(start)) << file;
    Table& table = schema.tables[line.substr(start.size(), line.find(" (") - start.size())];
    while (std::getline(lines, line) && !line.starts_with(")")) {
      std::istringstream words(line);
      std::string first;
      words >> first;
      if (first == "PRIMARY") {
        table.key = line.substr(line.find('(') + 1, line.find(')') - line.find('(') - 1);
        continue;
      }
      table.columns.push_back(first);
      if (line.find("PRIMARY KEY") != std::string::npos) table.key = first;
    }
  }
  return schema;
}

class SchemaTest : public testing::TestWithParam<std::string> {};

TEST_P(SchemaTest, HasTheTablesColumnsAndKeysOfTheEmbeddedEngineInTheSameOrder) {
  for (const std::string suffix : {".sql", "-ecatalog.sql"}) {
    const Schema reference = Read("sqlite" + suffix);
    const Schema schema = Read(GetParam() + suffix);
    ASSERT_FALSE(reference.tables.empty());
    for (const auto& [name, table] : reference.tables) {
      ASSERT_TRUE(schema.tables.contains(name)) << name;
      EXPECT_EQ(schema.tables.at(name).columns, table.columns) << name;
      EXPECT_EQ(schema.tables.at(name).key, table.key) << name;
    }
    EXPECT_EQ(schema.tables.size(), reference.tables.size());
    // The embedded engine walks waiting reminders by row number, the servers by the key.
    std::set<std::string> indexes = reference.indexes;
    if (indexes.erase("ON REMINDER (R_STATUS)") == 1) indexes.insert("ON REMINDER (R_STATUS, Q_ID)");
    EXPECT_EQ(schema.indexes, indexes);
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, SchemaTest, testing::Values("postgresql", "mariadb", "sqlserver"),
                         [](const testing::TestParamInfo<std::string>& engine) { return engine.param; });

TEST(SchemaFilesTest, GivesEveryTableAKey) {
  for (const char* file : {"sqlite.sql", "sqlite-ecatalog.sql"}) {
    for (const auto& [name, table] : Read(file).tables) EXPECT_NE(table.key, "") << name;
  }
}

// The archive files write the columns in the order of the table.
TEST(SchemaFilesTest, ListsTheColumnsOfClosedQuestionsAsThoseOfQuestionsAndTheMomentOfClosing) {
  const Schema schema = Read("sqlite.sql");
  std::vector<std::string> expected = schema.tables.at("QUESTIONS").columns;
  expected.push_back("ENDSTATUSTIME");
  EXPECT_EQ(schema.tables.at("QUESTIONHISTORY").columns, expected);
}

TEST(SchemaFilesTest, ListsTheColumnsOfATransactionInTheOrderInWhichTheyAreWritten) {
  EXPECT_THAT(Read("sqlite.sql").tables.at("TRANSACTIONS").columns,
              ElementsAre("T_ID", "Q_ID", "T_NAME", "T_STATUS", "CENTER", "T_DATE", "T_COMMENT",
                          "USERCOMMENT", "TIMESPENT"));
}

}  // namespace
