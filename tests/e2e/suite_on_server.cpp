#include "tests/e2e/suite_on_server.hpp"

#include <fstream>
#include <stdexcept>
#include <utility>

#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using ADODB::engine::Session;
using automation::Variant;

void Replace(std::string& text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  if (at == std::string::npos) throw std::runtime_error("no " + from + " in the configuration");
  text.replace(at, from.size(), to);
}

void Copy(Session& from, Session& to) {
  to.Begin();
  for (const std::string& table : TablesOf(from)) {
    for (const std::vector<Variant>& row : ValuesOf(from, table)) {
      std::string marks;
      for (std::size_t i = 0; i < row.size(); ++i) marks += i == 0 ? "?" : ",?";
      to.Execute("INSERT INTO " + table + " VALUES (" + marks + ")", row);
    }
  }
  to.Commit();
}

}  // namespace

SuiteOnServer::SuiteOnServer(const std::string& server, const fs::path& home, const fs::path& rows)
    : orvane_(server), catalogue_(server) {
  orvane_.RunSchemaFile(server + ".sql");
  catalogue_.RunSchemaFile(server + "-ecatalog.sql");
  Copy(*OpenFile(rows / "orvane.sqlite"), *orvane_.Connect());
  Copy(*OpenFile(rows / "ecatalog.sqlite"), *catalogue_.Connect());
  if (server == "postgresql") {
    for (const auto& [table, column] :
         {std::pair("transactions", "t_id"), std::pair("prospect", "prospectid"),
          std::pair("preview", "previewid")}) {
      orvane_.Execute(std::string("SELECT setval(pg_get_serial_sequence('") + table + "', '" + column +
                      "'), (SELECT max(" + column + ") FROM " + table + "))");
    }
  }
  orvane_.GrantJobs("grants-" + server + ".sql");
  catalogue_.GrantJobs("grants-" + server + "-ecatalog.sql");
  fs::remove_all(home / "db");
  const fs::path file = home / "config/siteConfiguration.xml";
  std::string text = TemporaryFolder::Read(file);
  Replace(text, "Provider=SQLite;Data Source=db\\orvane.sqlite", orvane_.JobsConnectionString());
  Replace(text, "Provider=SQLite;Data Source=db\\ecatalog.sqlite", catalogue_.JobsConnectionString());
  std::ofstream(file, std::ios::binary) << text;
}

std::unique_ptr<Session> OpenFile(const fs::path& file) {
  return ADODB::sqlite::MakeProvider({})->Connect(
      ADODB::engine::ConnectionString::Parse("Provider=SQLite;Data Source=" + file.string()));
}

std::vector<std::string> TablesOf(Session& sqlite) {
  const auto rows = sqlite.Query(
      "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%' ORDER BY name", {});
  std::vector<std::string> tables;
  while (rows->Next()) tables.push_back(automation::ToText(rows->Value(0)));
  return tables;
}

std::vector<std::vector<Variant>> ValuesOf(Session& session, const std::string& table) {
  const auto rows = session.Query("SELECT * FROM " + table, {});
  std::vector<std::vector<Variant>> values;
  while (rows->Next()) {
    values.emplace_back();
    for (std::size_t i = 0; i < rows->Columns().size(); ++i) values.back().push_back(rows->Value(i));
  }
  return values;
}

}  // namespace orvane_test
