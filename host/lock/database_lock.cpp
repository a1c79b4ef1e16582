#include "host/lock/database_lock.hpp"

#include <exception>
#include <utility>

namespace orvane_lock {
namespace {

constexpr int kTriesAgain = 10;
constexpr std::chrono::milliseconds kBetweenTries(100);

}  // namespace

DatabaseLock::DatabaseLock(Opening open, std::chrono::milliseconds interval)
    : open_(std::move(open)), interval_(interval) {}

DatabaseLock::~DatabaseLock() {
  if (!watcher_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  ending_.notify_all();
  watcher_.join();
}

bool DatabaseLock::TryTake() {
  const std::lock_guard lock(mutex_);
  if (!offered_) return true;
  if (!session_) {
    session_ = open_();
    offered_ = session_ != nullptr;
    if (!offered_) return true;
  }
  try {
    if (!session_->TryTake()) return false;
  } catch (...) {
    session_.reset();
    throw;
  }
  watcher_ = std::thread([this] { Watch(); });
  return true;
}

std::string DatabaseLock::Holder() noexcept {
  try {
    const std::lock_guard lock(mutex_);
    return session_ ? session_->Holder() : std::string();
  } catch (const std::exception&) {
    return {};
  }
}

bool DatabaseLock::IsHeld() {
  const std::lock_guard lock(mutex_);
  return IsHeldOrTakenAgain();
}

void DatabaseLock::Watch() {
  std::unique_lock lock(mutex_);
  while (!ending_.wait_for(lock, interval_, [this] { return ends_; }) && IsHeldOrTakenAgain()) {
  }
}

bool DatabaseLock::IsHeldOrTakenAgain() {
  if (!offered_) return true;
  if (lost_) return false;
  if (session_->IsHeld()) return true;
  lost_ = !TakeAgain();
  return !lost_;
}

bool DatabaseLock::TakeAgain() {
  try {
    session_ = open_();
    // A server lets go of what an ended session held a moment after it has ended it.
    for (int tries = 0; session_ && tries < kTriesAgain; ++tries) {
      if (tries > 0) std::this_thread::sleep_for(kBetweenTries);
      if (session_->TryTake()) return true;
    }
  } catch (const std::exception&) {
    // It does not answer any more.
  }
  return false;
}

}  // namespace orvane_lock
