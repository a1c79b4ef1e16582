#include "platform/automation/safe_point.hpp"

#include <utility>

namespace automation {
namespace {

thread_local SafePoints* innermost = nullptr;

}  // namespace

SafePoints::SafePoints(std::function<void()> reached)
    : reached_(std::move(reached)), outer_(std::exchange(innermost, this)) {}

SafePoints::~SafePoints() {
  innermost = outer_;
}

void SafePoint() {
  if (innermost != nullptr) innermost->reached_();
}

}  // namespace automation
