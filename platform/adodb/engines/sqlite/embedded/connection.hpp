// One open database file.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::sqlite {

struct OpenSettings {
  std::string path;
  int flags = 0;
  int timeoutMilliseconds = 5000;
  bool fullSynchronous = false;
  bool isPrivate =
      false;  // nobody else opens the file, and it goes with the connection: its name may go first
};

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

// With sqlite3_open_v2's flags. Raises what the engine says, with the path.
Database OpenDatabase(const std::string& path, int flags);

class Connection : public engine::Session {
 public:
  explicit Connection(const OpenSettings& settings);
  ~Connection() override;

  std::unique_ptr<engine::Rows> Query(const engine::Sql& sql, const engine::Parameters& parameters) override;
  std::int64_t Execute(const engine::Sql& sql, const engine::Parameters& parameters) override;
  void Begin() override;
  void Commit() override;
  void Rollback() override;
  // Transactions of this engine are serializable whatever the level.
  void SetIsolationLevel(IsolationLevel) override {}
  engine::TableShape Describe(const std::string& table) override;
  std::optional<std::int64_t> ChangeMark() override;
  bool Reset() override;
  bool Ping() override;
  const engine::Dialect& GetDialect() const override;

 private:
  void Run(const char* sql);
  void OpenAlone();
  bool FileIsStillThere();

  Database database_;
  // What the session asks for itself.
  std::unique_ptr<engine::PreparedStatement> tableQuery_;
  std::unique_ptr<engine::PreparedStatement> columnQuery_;
  std::unique_ptr<engine::PreparedStatement> versionQuery_;
  std::map<std::string, engine::TableShape> shapes_;  // of tables described since the last Reset
  std::chrono::steady_clock::time_point fileSeen_ = std::chrono::steady_clock::now();
};

}  // namespace ADODB::sqlite
