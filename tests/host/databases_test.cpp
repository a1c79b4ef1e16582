#include "host/init/databases.hpp"

#include <gtest/gtest.h>

#include "host/init/embedded.hpp"
#include "platform/automation/error.hpp"

namespace {

using orvane::host::EngineOf;

TEST(EngineOfTest, KnowsTheProviderAndTheDrivers) {
  EXPECT_EQ(EngineOf("Provider=SQLite;Data Source=x").name, "sqlite");
  EXPECT_EQ(EngineOf("provider=sqlite;data source=x").name, "sqlite");
  EXPECT_EQ(EngineOf("Driver={PostgreSQL Unicode};Server=h").name, "postgresql");
  EXPECT_EQ(EngineOf("Driver=/usr/lib/odbc/psqlodbcw.so").name, "postgresql");
  EXPECT_EQ(EngineOf("DRIVER={MariaDB Unicode};Server=h").name, "mariadb");
  EXPECT_EQ(EngineOf("Driver={ODBC Driver 18 for SQL Server};Server=h").name, "sqlserver");
  EXPECT_EQ(EngineOf("Driver={Postgres};Server=h").name, "postgresql");
  EXPECT_EQ(EngineOf("Driver=FreeTDS;Server=h").name, "sqlserver");
}

TEST(EngineOfTest, RefusesWhatItCannotTell) {
  try {
    EngineOf("DSN=somewhere");
    FAIL() << "took a DSN for an engine";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), 3001);
    EXPECT_EQ(error.Description(),
              "The connection string names neither Provider=SQLite nor a Driver of PostgreSQL, MariaDB or "
              "SQL Server");
  }
}

TEST(EmbeddedFilesTest, TheSchemasOfAllEnginesAreInTheProgram) {
  for (const ADODB::engine::EngineEntry& engine : ADODB::engine::Engines()) {
    const std::string base = "schema/" + std::string(engine.name);
    EXPECT_NE(orvane::host::EmbeddedFile(base + ".sql").find("CREATE TABLE PARAMETERS"),
              std::string_view::npos);
    EXPECT_NE(orvane::host::EmbeddedFile(base + "-ecatalog.sql").find("CREATE TABLE FAQPARAMETER"),
              std::string_view::npos);
  }
  EXPECT_EQ(orvane::host::EmbeddedFile("schema/none.sql"), "");
}

TEST(EmbeddedFilesTest, TheStyleSheetsAndTextsAreInTheProgram) {
  for (const char* name : {"reminder", "conclusion", "mail_page"}) {
    EXPECT_NE(orvane::host::EmbeddedFile(std::string("demo/sheets/") + name + ".xsl").find("<xsl:"),
              std::string_view::npos)
        << name;
  }
  EXPECT_NE(orvane::host::EmbeddedFile("demo/texts.tsv").find("LBLQX3120\t1033\t"), std::string_view::npos);
}

}  // namespace
