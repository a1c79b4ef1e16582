// The lock of a suite's database, held for a whole run.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/adodb/session/session_lock.hpp"

namespace orvane_lock {

// Asks the database at an interval whether the lock is still held, on a thread of its own. A lock that went
// with its session is taken again on a new one; when that fails for a second, because the database does not
// answer or somebody else was faster, it is lost for good. So is one of a database that owes an answer for
// longer than `patience`: the network may have gone, and the server may have given the lock away.
class DatabaseLock {
 public:
  using Opening = std::function<std::unique_ptr<ADODB::engine::SessionLock>()>;

  // `open` is also called on the thread.
  explicit DatabaseLock(Opening open, std::chrono::milliseconds interval = std::chrono::seconds(5),
                        std::chrono::milliseconds patience = std::chrono::seconds(30));
  // Waits a moment for an answer that is due, and leaves a thread behind that gets none.
  ~DatabaseLock();
  DatabaseLock(const DatabaseLock&) = delete;
  DatabaseLock& operator=(const DatabaseLock&) = delete;

  // Takes the lock unless another session has it, and watches it from then on. True where the database has no
  // such lock. Raises what `open` and SessionLock raise.
  bool TryTake();
  // Who has it instead; empty where that cannot be told. Raises nothing. REQUIRES: TryTake() gave false.
  std::string Holder() noexcept;

  // Whether it is held, asked of the database now. REQUIRES: TryTake() gave true.
  bool IsHeld();
  // Whether it was found to be lost for good, as far as is known: asks nobody, and costs next to nothing.
  bool IsLost() const;

 private:
  class Watch;

  Opening open_;
  const std::chrono::milliseconds interval_;
  const std::chrono::milliseconds patience_;
  std::unique_ptr<ADODB::engine::SessionLock> session_;  // until it is watched
  std::shared_ptr<Watch> watch_;                         // shared with its thread
};

}  // namespace orvane_lock
