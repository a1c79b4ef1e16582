// The tests' hand-made tables on a database server instead of SQLite.
//
// Tests write their tables and rows in SQLite's SQL. With ORVANE_TEST_ENGINE=postgresql (or mariadb) in the
// environment the same tests run on a server: this class spells their few SQLite words as the server does. It
// is for what tests do beside the product; the product's own statements never pass it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/servers/server_database.hpp"

namespace orvane_test {

// "postgresql" or "mariadb"; empty for the embedded engine.
std::string TestEngine();

class ServerBackend {
 public:
  explicit ServerBackend(const std::string& server);

  void Run(std::string_view script);
  // Each row as its values joined by "|": NULL for a null, 1 or 0 for a Boolean, dates as YYYY-MM-DD
  // HH:MM:SS.
  std::vector<std::string> Rows(std::string_view sql);
  std::string ConnectionString() const { return database_.ConnectionString(); }
  void RunSchemaFile(std::string_view suffix) { database_.RunSchemaFile(server_ + std::string(suffix)); }

 private:
  std::string Spelled(std::string statement);
  std::string AsUpsert(const std::string& statement);

  std::string server_;
  ServerDatabase database_;
  std::unique_ptr<ADODB::engine::Session> session_;
};

}  // namespace orvane_test
