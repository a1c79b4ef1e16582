#include "platform/automation/swallowed_error.hpp"

#include <utility>

namespace automation {
namespace {

thread_local SwallowedErrors* innermost = nullptr;

}  // namespace

SwallowedErrors::SwallowedErrors(std::function<void(const Error&)> notify)
    : notify_(std::move(notify)), outer_(std::exchange(innermost, this)) {}

SwallowedErrors::~SwallowedErrors() {
  innermost = outer_;
}

void ReportSwallowed() noexcept {
  try {
    if (innermost != nullptr) innermost->notify_(PendingError());
  } catch (...) {
    // Nobody is left to notify.
  }
}

}  // namespace automation
