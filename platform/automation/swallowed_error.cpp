#include "platform/automation/swallowed_error.hpp"

#include <utility>

namespace automation {
namespace {

thread_local SwallowedErrors* innermostListener = nullptr;

}  // namespace

SwallowedErrors::SwallowedErrors(std::function<void(const Error&)> notify)
    : notify_(std::move(notify)), outer_(std::exchange(innermostListener, this)) {}

SwallowedErrors::~SwallowedErrors() {
  innermostListener = outer_;
}

void ReportSwallowed() noexcept {
  try {
    if (innermostListener != nullptr) innermostListener->notify_(PendingError());
  } catch (...) {
    // Nobody is left to notify.
  }
}

}  // namespace automation
