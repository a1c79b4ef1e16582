#include "tests/support/sqlite_database.hpp"

#include <sqlite3.h>

#include <stdexcept>

#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "tests/support/server_backend.hpp"

namespace orvane_test {
namespace {

[[noreturn]] void Fail(sqlite3* database, std::string_view sql) {
  throw std::runtime_error(std::string(sqlite3_errmsg(database)) + " in: " + std::string(sql.substr(0, 500)));
}

}  // namespace

std::vector<std::shared_ptr<ADODB::engine::Provider>> TestProviders(const std::filesystem::path& folder) {
  return {ADODB::sqlite::MakeProvider(folder), ADODB::odbc::MakeProvider()};
}

SqliteDatabase::SqliteDatabase(std::filesystem::path file, bool wal) : file_(std::move(file)) {
  if (const std::string engine = TestEngine(); !engine.empty()) {
    server_ = std::make_unique<ServerBackend>(engine);
    return;
  }
  if (sqlite3_open(file_.c_str(), &database_) != SQLITE_OK) Fail(database_, file_.string());
  sqlite3_busy_timeout(database_, 5000);
  Run(wal ? "PRAGMA journal_mode = WAL" : "PRAGMA journal_mode = DELETE");
  // The tests' own writes need not survive a power cut.
  Run("PRAGMA synchronous = OFF; PRAGMA user_version = 1");
}

SqliteDatabase::~SqliteDatabase() {
  sqlite3_close(database_);
}

void SqliteDatabase::MakeSuiteTables(std::string_view suffix) {
  if (server_) return server_->RunSchemaFile(suffix);
  for (const std::string& statement :
       StatementsOf(std::filesystem::path(ORVANE_SOURCE_DIR "/schema") / ("sqlite" + std::string(suffix)))) {
    Run(statement);
  }
}

void SqliteDatabase::Run(std::string_view script) {
  if (server_) return server_->Run(script);
  const std::string text(script);
  if (sqlite3_exec(database_, text.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) Fail(database_, script);
}

std::vector<std::string> SqliteDatabase::Rows(std::string_view sql) {
  if (server_) return server_->Rows(sql);
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database_, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) !=
      SQLITE_OK) {
    Fail(database_, sql);
  }
  std::vector<std::string> rows;
  int code = 0;
  while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
    std::string row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const void* value = sqlite3_column_blob(statement, i);
      const int size = sqlite3_column_bytes(statement, i);
      if (i > 0) row += '|';
      if (sqlite3_column_type(statement, i) == SQLITE_NULL) {
        row += "NULL";
      } else {
        row.append(static_cast<const char*>(value), static_cast<std::size_t>(size));
      }
    }
    rows.push_back(std::move(row));
  }
  sqlite3_finalize(statement);
  if (code != SQLITE_DONE) Fail(database_, sql);
  return rows;
}

std::string SqliteDatabase::Value(std::string_view sql) {
  const std::vector<std::string> rows = Rows(sql);
  return rows.empty() ? std::string() : rows.front().substr(0, rows.front().find('|'));
}

std::string SqliteDatabase::ConnectionString() const {
  if (server_) return server_->ConnectionString();
  return "Provider=SQLite;Data Source=" + file_.string();
}

SuiteDatabases::SuiteDatabases(TestRuntime& runtime, bool wal)
    : orvane(folder.Path() / "orvane.sqlite", wal), catalogue(folder.Path() / "ecatalog.sqlite", wal) {
  std::vector<std::shared_ptr<ADODB::engine::Provider>> providers = TestProviders(folder.Path());
  for (auto& provider : providers) provider = std::make_shared<FaultyProvider>(provider, faults);
  ADODB::RegisterClasses(runtime.runtime.classes, std::move(providers));
  runtime.configuration->connectionStrings[{"Orvane", "Orvane"}] = orvane.ConnectionString();
  runtime.configuration->connectionStrings[{"VnServer", "ECatalog"}] = catalogue.ConnectionString();
}

}  // namespace orvane_test
