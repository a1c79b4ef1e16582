#include "bench/product/bench_suite.hpp"

#include <fstream>
#include <sstream>

#include "bench/support/sqlite_file.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/configuration/configuration.hpp"
#include "suite/log/file_log.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane_bench {

std::filesystem::path DatabaseOf(const std::filesystem::path& home) {
  return home / "db" / "orvane.sqlite";
}

void MakeSuiteConfiguration(const std::filesystem::path& home, std::string_view connectionString) {
  const std::string connection = connectionString.empty()
                                     ? "Provider=SQLite;Data Source=" + DatabaseOf(home).string()
                                     : std::string(connectionString);
  std::filesystem::create_directories(home / "config");
  std::ofstream(home / "config" / "siteConfiguration.xml")
      << "<siteConfiguration><product name=\"Orvane\"><connection name=\"Orvane\">" << connection
      << "</connection></product><section name=\"MEMBERSHIP\"><key name=\"MemScriptUser\">cn=orvane</key>"
      << "<key name=\"MemScriptCode\">secret</key><key "
         "name=\"LDAPRoot\"></key></section></siteConfiguration>\n";
}

void MakeSuite(const std::filesystem::path& home) {
  MakeSuiteConfiguration(home);
  std::filesystem::create_directories(home / "db");
  std::ifstream schema(std::string(ORVANE_SCHEMA_FOLDER) + "/sqlite.sql");
  std::ostringstream ddl;
  ddl << schema.rdbuf();
  SqliteFile(DatabaseOf(home)).Execute(ddl.str());
}

BenchSuite::BenchSuite(const std::filesystem::path& home) : scope_(runtime_) {
  ADODB::sqlite::LeaveMemoryUncounted();
  runtime_.locale = automation::MakeLocale({});
  ADODB::RegisterClasses(runtime_.classes, {ADODB::sqlite::MakeProvider(home), ADODB::odbc::MakeProvider()});
  Scripting::local::RegisterClasses(runtime_.classes);
  Vantrel::RegisterConfiguration(runtime_.classes, home);
  Vantrel::RegisterLog(runtime_.classes, home / "Vantrel.log");
  OrvCommon::RegisterSqlConversion(runtime_.classes);
}

DatabaseClasses::DatabaseClasses(const std::filesystem::path& folder) : scope_(runtime_) {
  ADODB::RegisterClasses(runtime_.classes,
                         {ADODB::sqlite::MakeProvider(folder), ADODB::odbc::MakeProvider()});
}

ADODB::ConnectionPtr Connect(const std::string& connectionString) {
  auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open(connectionString, "", "", ADODB::kOptionsUnspecified);
  return connection;
}

}  // namespace orvane_bench
