// A suite's databases on a server.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/servers/server_database.hpp"

namespace orvane_test {

class SuiteOnServer {
 public:
  // Makes both databases with the rows of the files orvane.sqlite and ecatalog.sqlite in `rows`, and lets the
  // installation use them, by the account that may do what the jobs have to. The installation's own files, if
  // it has any, are removed.
  SuiteOnServer(const std::string& server, const std::filesystem::path& home,
                const std::filesystem::path& rows);

  ServerDatabase& Orvane() { return orvane_; }
  const ServerDatabase& Orvane() const { return orvane_; }
  const ServerDatabase& Catalogue() const { return catalogue_; }

 private:
  ServerDatabase orvane_;
  ServerDatabase catalogue_;
};

// A session with a file of the embedded engine, its tables, and all values of one of them.
std::unique_ptr<ADODB::engine::Session> OpenFile(const std::filesystem::path& file);
std::vector<std::string> TablesOf(ADODB::engine::Session& sqlite);
std::vector<std::vector<automation::Variant>> ValuesOf(ADODB::engine::Session& session,
                                                       const std::string& table);

}  // namespace orvane_test
