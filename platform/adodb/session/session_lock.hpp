// A lock of a whole database, held by a session that does nothing else: programs take turns by it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::engine {

// Threads: one at a time. The lock goes with the object, and with the session when the database ends that.
class SessionLock {
 public:
  // REQUIRES: the session's dialect offers such a lock. `self` is shown to those who ask who holds it, where
  // the engine has a place for that.
  SessionLock(std::unique_ptr<Session> session, std::string_view self);

  // Takes the lock unless another session has it; never waits. Raises what the session raises.
  bool TryTake();
  // Asks the database; false as well when the session does not answer any more. Also keeps the session from
  // being ended as an idle one.
  bool IsHeld() noexcept;
  // The session that has the lock, described; empty where the engine cannot tell.
  std::string Holder();

 private:
  // The value of a query's only row and column; Null without a row.
  automation::Variant Ask(std::string_view sql);
  bool Affirms(std::string_view sql);  // whether that is 1

  std::unique_ptr<Session> session_;
  const Dialect::SessionLockTexts* texts_;
};

// A lock on a new session with the database that the string leads to; null where none is to be had: an
// embedded database, or an engine that has no such lock. Raises 3001 or 3706 for a string that leads nowhere,
// and what Provider::Connect raises.
std::unique_ptr<SessionLock> OpenSessionLock(const std::vector<std::shared_ptr<Provider>>& providers,
                                             std::string_view connectionString, std::string_view self);

}  // namespace ADODB::engine
