// A database of a test's own on a server that the tests share.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/adodb/session/provider.hpp"
#include "tests/servers/server_state.hpp"

namespace orvane_test {

class ServerDatabase {
 public:
  // An empty database on `server` ("postgresql" or "mariadb"): a new one, or one that another test has had
  // and that is as if new. The destructor ends what still uses it.
  explicit ServerDatabase(std::string_view server);
  // A new one on a server of the caller's own, which must outlive it.
  ServerDatabase(const Server& server, std::string_view name);
  ~ServerDatabase();
  ServerDatabase(const ServerDatabase&) = delete;

  // For the database's owner, and for an account that may do what schema/grants-SERVER.sql grants and no
  // more. The latter exists once GrantJobs has run.
  std::string ConnectionString() const;
  std::string JobsConnectionString() const;

  // Runs each statement of a file of schema/, e.g. "postgresql.sql".
  void RunSchemaFile(std::string_view file) const;
  // Makes the jobs' account and runs the grants of schema/.
  void GrantJobs(std::string_view file);

  // A connection of the owner's.
  std::unique_ptr<ADODB::engine::Session> Connect() const;
  void Execute(std::string_view sql) const;

 private:
  void Make();
  void Drop() const;
  std::string AdministrationString() const;

  std::string serverName_;
  std::string serverConnection_;
  std::string name_;
  bool shared_ = false;
  bool hasJobsAccount_ = false;
};

// The statements of a script: cut at each ";" at the end of a line.
std::vector<std::string> StatementsOf(const std::filesystem::path& script);

}  // namespace orvane_test
