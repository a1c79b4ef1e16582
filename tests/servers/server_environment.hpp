// A test runtime whose suite database is one with the suite's tables on a real server, reached through
// watched ADO.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/doubles/watched_adodb.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

class ServerEnvironment : public TestRuntime {
 public:
  explicit ServerEnvironment(const std::string& server);  // "postgresql" or "mariadb"
  // On a server of the test's own, which must outlive it.
  ServerEnvironment(const Server& own, const std::string& server);

  // The rows of a statement past the cursor engine, values joined by "|", NULL for a null.
  std::vector<std::string> Rows(const std::string& sql) const;
  void Run(const std::string& sql) const { database.Execute(sql); }

  ServerDatabase database;
  std::shared_ptr<AdodbJournal> adodb;
};

}  // namespace orvane_test
