#include "run/deadline.hpp"

#include <utility>

namespace orvane {

Deadline::Deadline(std::chrono::seconds after, std::function<void()> passed)
    : after_(after), passed_(std::move(passed)) {}

Deadline::~Deadline() {
  {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }
  over_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void Deadline::Begin() {
  if (!thread_.joinable()) thread_ = std::thread([this] { Wait(); });
}

void Deadline::Wait() {
  std::unique_lock lock(mutex_);
  if (!over_.wait_for(lock, after_, [this] { return isOver_; })) passed_();
}

}  // namespace orvane
