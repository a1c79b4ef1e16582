// Database servers and databases of a bench's own, started by the scripts that the tests use.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orvane_test {
class Server;
class ServerDatabase;
}  // namespace orvane_test

namespace orvane_bench {

class BenchServer {
 public:
  // "postgresql" or "mariadb". `durable` lets it wait for the disk with each commit, as in production.
  BenchServer(const std::string& name, bool durable);
  ~BenchServer();
  BenchServer(const BenchServer&) = delete;
  BenchServer& operator=(const BenchServer&) = delete;
  const std::string& Name() const { return name_; }

 private:
  friend class BenchDatabase;
  std::string name_;
  std::unique_ptr<orvane_test::Server> server_;
};

// A new database with the suite's empty tables; dropped by the destructor. The server must outlive it.
class BenchDatabase {
 public:
  explicit BenchDatabase(const BenchServer& server);
  ~BenchDatabase();
  BenchDatabase(const BenchDatabase&) = delete;
  BenchDatabase& operator=(const BenchDatabase&) = delete;

  std::string ConnectionString() const;
  std::string Setting(const std::string& keyword) const;  // of the connection string
  void Execute(const std::string& sql) const;
  std::int64_t Number(const std::string& sql) const;  // first column of the first row
  // What the server would do by itself in the hours between a load and a nightly run.
  void Analyse(const std::string& table) const;

 private:
  std::string server_;
  std::unique_ptr<orvane_test::ServerDatabase> database_;
};

// Opens and closes a connection of the driver, past the pool.
void OpenPhysicalConnection(const std::string& connectionString);

}  // namespace orvane_bench
