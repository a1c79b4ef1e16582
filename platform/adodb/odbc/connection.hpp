// One physical connection through a driver: the provider's Session.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/odbc/driver.hpp"
#include "platform/adodb/odbc/handle.hpp"
#include "platform/adodb/odbc/statement.hpp"
#include "platform/adodb/session/provider.hpp"

namespace ADODB::odbc {

class Connection : public engine::Session {
 public:
  // Connects with a finished string for SQLDriverConnect. The environment must outlive the connection.
  Connection(const EnvironmentHandle& environment, const engine::ConnectionString& text);
  ~Connection() override;

  std::unique_ptr<engine::Rows> Query(std::string_view sql, const engine::Parameters& parameters) override;
  std::int64_t Execute(std::string_view sql, const engine::Parameters& parameters) override;
  void Begin() override;
  void Commit() override;
  void Rollback() override;
  void SetIsolationLevel(IsolationLevel level) override;
  engine::TableShape Describe(const std::string& table) override;
  bool Reset() override;
  bool Ping() override;
  const engine::Dialect& GetDialect() const override { return *dialect_; }

 private:
  struct Table {
    engine::TableShape shape;
    std::map<std::string, std::string> collations;  // by column
  };
  using StatementPtr = std::shared_ptr<Statement>;

  void Check(SQLRETURN status);
  void SetAttribute(SQLINTEGER attribute, std::uintptr_t value);
  void ApplyIsolationLevel();
  StatementPtr Run(std::string_view sql, const engine::Parameters& parameters);
  StatementPtr RunAndCommit(std::string_view sql, const engine::Parameters& parameters);
  StatementPtr RunInAnyWay(std::string_view sql, const engine::Parameters& parameters);
  bool IsRepeatedRead(std::string_view sql);
  StatementPtr RunPrepared(std::string_view sql, const engine::Parameters& parameters);
  StatementPtr RunPreparedOnce(std::string_view sql, const engine::Parameters& parameters);
  void AddCollations(std::vector<engine::Column>& columns);
  const Table& LookUp(const std::string& table);
  void TurnAutocommitOff();
  void KeepTransactionOpen();
  bool StillAnswers();
  void RequireTransaction();
  void LeaveTransaction();

  ConnectionHandle handle_;
  Engine engine_ = Engine::Other;
  const engine::Dialect* dialect_ = nullptr;
  FetchStyle fetchStyle_;
  Health health_;
  bool settingsKept_ = true;  // no statement has run that may have changed the session's settings
  bool inTransaction_ = false;
  bool autocommitOff_ = false;                                     // for the time of a transaction
  IsolationLevel isolationLevel_ = IsolationLevel::ReadCommitted;  // as the user of the session wants it
  IsolationLevel appliedIsolationLevel_ = IsolationLevel::ReadCommitted;  // as the database has it
  // Prepared statements, the one used last in front.
  std::list<std::pair<std::string, StatementPtr>> prepared_;
  std::vector<std::size_t> reads_;  // hashes of the reads without values that were sent last
  std::size_t nextRead_ = 0;        // the place of reads_ that is given up next
  std::map<std::string, Table> tables_;
};

}  // namespace ADODB::odbc
