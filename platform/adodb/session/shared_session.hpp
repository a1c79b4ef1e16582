// What a connection and the record sets opened on it share: the session while it is open.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/adodb/session/pool.hpp"
#include "platform/adodb/sql/translation.hpp"
#include "platform/adodb/statement.hpp"

namespace ADODB::engine {

class Link {
 public:
  Link(std::shared_ptr<Pool> pool, Pool::Lease lease) : pool_(std::move(pool)), lease_(std::move(lease)) {}
  ~Link() { Close(); }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  bool IsOpen() const { return lease_.session != nullptr; }
  Session& GetSession() const;  // 3704 when it is closed

  // To be told of every write before it is sent.
  Freshness& GetFreshness() const { return pool_->GetFreshness(); }

  // To be told of every change as well; null where nobody is to be.
  ChangeObserver* Observer() const { return pool_->Observer(); }

  // Checks and translates the statement. Several pieces come out only for a DELETE.
  std::shared_ptr<const Translation> Prepare(const Statement& statement);

  // The same for a statement whose rows are only read, with its values put into Values() where the engine
  // takes them as well; they belong to the translation's one statement then.
  std::shared_ptr<const Translation> PrepareRead(const Statement& statement);
  // What the last Prepare or PrepareRead put there.
  const Parameters& Values() const { return lease_.memo->values; }

  // Gives the session back to the pool; record sets on it are closed by that.
  void Close() noexcept;

  bool inTransaction = false;
  bool commitFailed = false;  // of the transaction that is open: it can only be rolled back

 private:
  std::shared_ptr<const Translation> Translated(const Statement& statement);

  std::shared_ptr<Pool> pool_;
  Pool::Lease lease_;
};

// Calls `work` in the transaction that is open, or in one of its own, which a failure rolls back.
void InTransaction(Link& link, const std::function<void()>& work);

// Runs a statement whose rows are not wanted; pieces run in one transaction. Rows affected.
std::int64_t Run(Link& link, const Translation& translation);

}  // namespace ADODB::engine
