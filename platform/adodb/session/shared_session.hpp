// The session of a connection and of the record sets that were opened on it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/adodb/session/pool.hpp"
#include "platform/adodb/session/statement_cache.hpp"
#include "platform/adodb/statement.hpp"

namespace ADODB::engine {

// Runs statements on a session of the pool, each known one as it was prepared before, and tells the pool's
// Freshness of every write before it is sent. Failures carry ADODB.Connection as their source where they are
// not the engine's.
class SharedSession {
 public:
  SharedSession(std::shared_ptr<Pool> pool, Pool::Lease lease)
      : pool_(std::move(pool)), lease_(std::move(lease)) {}
  ~SharedSession() { Close(); }
  SharedSession(const SharedSession&) = delete;
  SharedSession& operator=(const SharedSession&) = delete;

  bool IsOpen() const { return lease_ != nullptr; }
  // Gives the session back to the pool; record sets on it are closed by that.
  void Close() noexcept;

  // 3704 when it is closed, as with all that follows.
  Session& GetSession() const { return *Pooled().session; }
  const Dialect& GetDialect() const { return GetSession().GetDialect(); }
  Freshness& GetFreshness() const { return pool_->GetFreshness(); }
  // To be told of every change; null where nobody is to be.
  ChangeObserver* Observer() const { return pool_->Observer(); }

  // A caller's statement, checked and translated. The values that it holds as parameters are the session's
  // until the next statement is prepared.
  struct Prepared {
    StatementCache::Known known;
    const Parameters& values;
    const Translation& GetTranslation() const { return known->translation; }
  };
  Prepared Prepare(const Statement& statement);
  // For a statement whose rows are only read: its values become parameters where that makes no difference to
  // the answer.
  Prepared PrepareRead(const Statement& statement);

  std::unique_ptr<Rows> Query(const Prepared& prepared);
  // Rows affected.
  std::int64_t Execute(const Prepared& prepared);

  // Statements that the cursors compose, in the engine's SQL. `table` as in Sql::Table().
  std::unique_ptr<Rows> Query(const std::string& sql, const Parameters& parameters = {},
                              std::string_view table = {});
  // One that changes rows and answers with some.
  std::unique_ptr<Rows> Change(const std::string& sql, const Parameters& parameters,
                               std::string_view table = {});
  std::int64_t Execute(const std::string& sql, const Parameters& parameters);

  // As Connection::BeginTrans, CommitTrans and RollbackTrans; the observer is told of them.
  void Begin();
  void Commit();
  void Rollback();
  // Calls `work` in the transaction that is open, or in one of its own, which a failure rolls back and of
  // which nobody is told.
  void InTransaction(const std::function<void()>& work);

 private:
  Pool::PooledSession& Pooled() const;
  void BeforeChange();
  void Observed(ChangeObserver::Ticket (ChangeObserver::*tell)(), const std::function<void()>& step) const;
  StatementCache::Known Translated(KnownStatement::Kind kind, FixedText text, const Statement& statement);
  Sql ForSession(StatementCache::Known& known, const std::string& sql, bool hasParameters);

  enum class Transaction { None, Open, CommitFailed };

  std::shared_ptr<Pool> pool_;
  Pool::Lease lease_;
  Transaction transaction_ = Transaction::None;
};

}  // namespace ADODB::engine
