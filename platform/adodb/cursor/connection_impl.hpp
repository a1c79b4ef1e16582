// The connection that stands behind ADODB::Connection for every provider.
#pragma once

#include <memory>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

class ConnectionImpl final : public Connection {
 public:
  explicit ConnectionImpl(std::shared_ptr<Pool> pool) : pool_(std::move(pool)) {}
  ~ConnectionImpl() override;

  void Open(std::string_view connectionString, std::string_view user, std::string_view password,
            int options) override;
  void Close() override;
  ObjectState State() const override;
  void SetIsolationLevel(IsolationLevel level) override;
  RecordsetPtr Execute(const Statement& statement, std::int64_t* recordsAffected, int options) override;
  RecordsetPtr ExecuteDelete(const Statement& statement, Deleted wanted) override;
  void BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;

  const std::shared_ptr<SharedSession>& GetSession() const;  // 3704 when it is not open

 private:
  std::shared_ptr<Pool> pool_;
  std::shared_ptr<SharedSession> session_;  // null while closed
};

}  // namespace ADODB::engine
