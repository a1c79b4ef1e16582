#include "run/lock/database_lock.hpp"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace orvane_lock {

using ADODB::engine::SessionLock;
using Clock = std::chrono::steady_clock;

// The session belongs to the thread alone, so that nobody else has to wait for the database.
class DatabaseLock::Watch {
 public:
  Watch(std::unique_ptr<SessionLock> session, Opening open)
      : session_(std::move(session)), open_(std::move(open)) {}

  static void Run(const std::shared_ptr<Watch>& watch, std::chrono::milliseconds interval) {
    std::thread([watch, interval] { watch->Keep(interval); }).detach();
  }

  // Whether the lock is held by an answer that is asked for now, and comes in time.
  bool Ask(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    const std::uint64_t question = ++asked_;
    changed_.notify_all();
    const bool inTime = changed_.wait_for(lock, patience, [&] { return answered_ >= question || over_; });
    lost_ = lost_ || !inTime;
    return !lost_;
  }

  void End(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    ends_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, patience, [this] { return over_; });
  }

  bool IsLost(std::chrono::milliseconds patience) const {
    return lost_ || Clock::now() - lastAnswer_.load() > patience;
  }

 private:
  void Keep(std::chrono::milliseconds interval) {
    std::unique_lock lock(mutex_);
    while (!ends_ && !lost_) {
      changed_.wait_for(lock, interval, [this] { return ends_ || asked_ != answered_; });
      if (ends_) break;
      const std::uint64_t question = asked_;
      lock.unlock();
      const bool held = IsHeldOrTakenAgain();
      lock.lock();
      lastAnswer_ = Clock::now();
      lost_ = lost_ || !held;
      answered_ = question;
      changed_.notify_all();
    }
    lock.unlock();
    session_.reset();
    lock.lock();
    over_ = true;
    changed_.notify_all();
  }

  bool IsHeldOrTakenAgain() {
    constexpr int kTries = 10;
    constexpr std::chrono::milliseconds kBetweenTries(100);
    if (session_->IsHeld()) return true;
    try {
      session_ = open_();
      // A server lets go of what an ended session held a moment after it has ended it.
      for (int tries = 0; session_ && tries < kTries; ++tries) {
        if (tries > 0) std::this_thread::sleep_for(kBetweenTries);
        if (session_->TryTake()) return true;
      }
    } catch (const std::exception&) {
      // It does not answer any more.
    }
    return false;
  }

  std::unique_ptr<SessionLock> session_;
  const Opening open_;

  std::mutex mutex_;  // of all below but the atomic ones, which are written with it held
  std::condition_variable changed_;
  std::uint64_t asked_ = 0;
  std::uint64_t answered_ = 0;
  bool ends_ = false;
  bool over_ = false;
  std::atomic<bool> lost_ = false;
  std::atomic<Clock::time_point> lastAnswer_ = Clock::now();
};

DatabaseLock::DatabaseLock(Opening open, std::chrono::milliseconds interval,
                           std::chrono::milliseconds patience)
    : open_(std::move(open)), interval_(interval), patience_(patience) {}

DatabaseLock::~DatabaseLock() {
  if (watch_) watch_->End(std::min(patience_, std::chrono::milliseconds(2000)));
}

bool DatabaseLock::TryTake() {
  if (!session_) session_ = open_();
  if (!session_) return true;
  try {
    if (!session_->TryTake()) return false;
  } catch (...) {
    session_.reset();
    throw;
  }
  watch_ = std::make_shared<Watch>(std::move(session_), open_);
  Watch::Run(watch_, interval_);
  return true;
}

std::string DatabaseLock::Holder() noexcept {
  try {
    return session_ ? session_->Holder() : std::string();
  } catch (const std::exception&) {
    return {};
  }
}

bool DatabaseLock::IsHeld() {
  return !watch_ || watch_->Ask(patience_);
}

bool DatabaseLock::IsLost() const {
  return watch_ && watch_->IsLost(interval_ + patience_);
}

}  // namespace orvane_lock
