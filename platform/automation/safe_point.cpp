#include "platform/automation/safe_point.hpp"

#include <utility>

namespace automation {
namespace {

thread_local SafePoints* innermostHandler = nullptr;

}  // namespace

SafePoints::SafePoints(std::function<void()> reached)
    : reached_(std::move(reached)), outer_(std::exchange(innermostHandler, this)) {}

SafePoints::~SafePoints() {
  innermostHandler = outer_;
}

void SafePoint() {
  if (innermostHandler != nullptr) innermostHandler->reached_();
}

}  // namespace automation
