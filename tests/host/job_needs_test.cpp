// What the jobs are said to need is what the schemas hold, the grants grant and the statements name.
#include "components/registration/job_needs.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "tests/support/temporary_folder.hpp"

namespace {

using OrvaneProcess::DatabaseOf;
using Words = std::set<std::string>;
using Tables = std::map<std::string, Words>;

std::string Read(const std::string& file) {
  return orvane_test::TemporaryFolder::Read(std::filesystem::path(ORVANE_SOURCE_FOLDER) / "schema" / file);
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

Words Split(std::string_view text) {
  std::istringstream stream{Upper(std::string(text))};
  return {std::istream_iterator<std::string>(stream), {}};
}

// Columns by table.
Tables InSchema(const std::string& file) {
  static const std::regex kTable(R"(CREATE TABLE (\w+) \(([^;]*);)");
  static const std::regex kColumn(R"(\n\s+(\w+))");
  const std::string text = Read(file);
  Tables tables;
  for (std::sregex_iterator table(text.begin(), text.end(), kTable), end; table != end; ++table) {
    const std::string body = table->str(2);
    for (std::sregex_iterator column(body.begin(), body.end(), kColumn); column != end; ++column) {
      tables[table->str(1)].insert(Upper(column->str(1)));
    }
  }
  return tables;
}

// Rights by table, "UPDATE (T2_DATE)" as "UPDATE T2_DATE".
Tables InGrants(const std::string& file) {
  static const std::regex kGrant(R"(GRANT ([^;]+?) ON (?!SCHEMA)(\w+) (?:\((\w+)\) )?TO)");
  static const std::regex kRight(R"((SELECT|DELETE|INSERT|UPDATE)(?: \((\w+)\))?)");
  const std::string text = Read(file);
  Tables tables;
  for (std::sregex_iterator grant(text.begin(), text.end(), kGrant), end; grant != end; ++grant) {
    const std::string rights = grant->str(1);
    for (std::sregex_iterator right(rights.begin(), rights.end(), kRight); right != end; ++right) {
      const std::string column = grant->str(3) + right->str(2);
      tables[grant->str(2)].insert(right->str(1) + (column.empty() ? "" : " " + column));
    }
  }
  return tables;
}

Tables Rights(DatabaseOf database) {
  Tables tables;
  for (const auto& job : OrvaneProcess::NeedsOfJobs()) {
    for (const auto& table : job.tables) {
      if (table.database != database) continue;
      Words& rights = tables[std::string(table.name)];
      if (!table.reads.empty()) rights.insert("SELECT");
      if (table.deletes) rights.insert("DELETE");
      if (!table.inserts.empty()) rights.insert("INSERT");
      for (const std::string& column : Split(table.updates)) rights.insert("UPDATE " + column);
    }
  }
  return tables;
}

TEST(JobNeedsTest, AreWhatTheGrantsGrant) {
  for (const std::string engine : {"postgresql", "mariadb", "sqlserver"}) {
    EXPECT_EQ(Rights(DatabaseOf::Suite), InGrants("grants-" + engine + ".sql")) << engine;
    EXPECT_EQ(Rights(DatabaseOf::Catalogue), InGrants("grants-" + engine + "-ecatalog.sql")) << engine;
  }
}

TEST(JobNeedsTest, AreInEverySchema) {
  for (const std::string engine : {"sqlite", "postgresql", "mariadb", "sqlserver"}) {
    const Tables suite = InSchema(engine + ".sql");
    const Tables catalogue = InSchema(engine + "-ecatalog.sql");
    for (const auto& job : OrvaneProcess::NeedsOfJobs()) {
      for (const auto& table : job.tables) {
        const Tables& schema = table.database == DatabaseOf::Suite ? suite : catalogue;
        const auto columns = schema.find(std::string(table.name));
        ASSERT_NE(columns, schema.end()) << engine << ", " << table.name;
        for (const std::string_view list : {table.reads, table.inserts, table.updates}) {
          for (const std::string& column : Split(list)) {
            EXPECT_TRUE(columns->second.contains(column)) << engine << ", " << table.name << "." << column;
          }
        }
      }
    }
  }
}

}  // namespace
