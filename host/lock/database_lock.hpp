// The lock of a suite's database, held for a whole run.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/adodb/engine/session_lock.hpp"

namespace orvane_lock {

// Asks the database at an interval whether the lock is still held, on a thread of its own. A lock that went
// with its session is taken again on a new one; when that fails for a second, because the database does not
// answer or somebody else was faster, it is lost for good.
class DatabaseLock {
 public:
  using Opening = std::function<std::unique_ptr<ADODB::engine::SessionLock>()>;

  // `open` is also called on the thread.
  explicit DatabaseLock(Opening open, std::chrono::milliseconds interval = std::chrono::seconds(5));
  ~DatabaseLock();
  DatabaseLock(const DatabaseLock&) = delete;
  DatabaseLock& operator=(const DatabaseLock&) = delete;

  // Takes the lock unless another session has it, and watches it from then on. True where the database has no
  // such lock. Raises what `open` and SessionLock raise.
  bool TryTake();
  // Who has it instead; empty where that cannot be told. Raises nothing.
  std::string Holder() noexcept;

  // Whether it is held, asked of the database now. REQUIRES: TryTake() gave true.
  bool IsHeld();
  // Whether it was found to be lost for good, as far as is known: asks nobody, and costs nothing.
  bool IsLost() const { return lost_; }

 private:
  void Watch();
  bool IsHeldOrTakenAgain();  // the mutex is held
  bool TakeAgain();

  const Opening open_;
  const std::chrono::milliseconds interval_;
  std::mutex mutex_;  // of all below but the thread
  std::condition_variable ending_;
  bool ends_ = false;
  bool offered_ = true;
  std::atomic<bool> lost_ = false;  // written with the mutex held
  std::unique_ptr<ADODB::engine::SessionLock> session_;
  std::thread watcher_;
};

}  // namespace orvane_lock
