// One physical connection through a driver: the provider's Session.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/odbc/handle.hpp"
#include "platform/adodb/odbc/statement.hpp"
#include "platform/adodb/session/coarse_clock.hpp"
#include "platform/adodb/session/provider.hpp"

namespace ADODB::odbc {

class Connection : public engine::Session {
 public:
  // Connects with a finished string for SQLDriverConnect. The environment must outlive the connection.
  Connection(const EnvironmentHandle& environment, const engine::ConnectionString& text, engine::Clock clock);
  ~Connection() override;

  std::unique_ptr<engine::Rows> Query(const engine::Sql& sql, const engine::Parameters& parameters) override;
  std::int64_t Execute(const engine::Sql& sql, const engine::Parameters& parameters) override;
  void Begin() override;
  void Commit() override;
  void Rollback() override;
  void SetIsolationLevel(IsolationLevel level) override;
  engine::TableShape Describe(const std::string& table) override;
  bool Reset() override;
  bool Ping() override;
  const engine::Dialect& GetDialect() const override { return Engine().dialect(); }

 private:
  struct Table {
    engine::TableShape shape;
    std::map<std::string, std::string> collations;  // by column
    std::chrono::steady_clock::time_point readAt;
  };
  // A statement that was run: one that is kept for its text, or one of its own.
  struct Run {
    Statement* statement;
    std::unique_ptr<Statement> own;
  };
  class ResultRows;

  void Check(SQLRETURN status);
  void SetAttribute(SQLINTEGER attribute, std::uintptr_t value);
  void ApplyIsolationLevel();
  const engine::EngineEntry& Engine() const { return *health_.engine; }
  Run RunStatement(const engine::Sql& sql, const engine::Parameters& parameters);
  Run RunAndCommit(const engine::Sql& sql, const engine::Parameters& parameters);
  Run Send(const engine::Sql& sql, const engine::Parameters& parameters);
  Statement& SendPrepared(const engine::Sql& sql, const engine::Parameters& parameters);
  Statement& SendPreparedOnce(const engine::Sql& sql, const engine::Parameters& parameters);
  void AddCollations(std::vector<engine::Column>& columns, std::string_view allOf);
  const Table& LookUp(const std::string& table);
  void TurnAutocommitOff();
  void KeepTransactionOpen();
  bool StillAnswers();
  void RequireTransaction();
  void LeaveTransaction();

  ConnectionHandle handle_;
  const engine::Clock clock_;
  FetchStyle fetchStyle_;
  Health health_;
  bool settingsKept_ = true;  // no statement has run that may have changed the session's settings
  bool inTransaction_ = false;
  bool autocommitOff_ = false;                                     // for the time of a transaction
  IsolationLevel isolationLevel_ = IsolationLevel::ReadCommitted;  // as the user of the session wants it
  IsolationLevel appliedIsolationLevel_ = IsolationLevel::ReadCommitted;  // as the database has it
  std::map<std::string, Table> tables_;                                   // as described a moment ago
  std::unique_ptr<engine::PreparedStatement> tableQuery_;
};

}  // namespace ADODB::odbc
