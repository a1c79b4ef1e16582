#include "platform/automation/swallowed_error.hpp"

#include <utility>

namespace automation {
namespace {

thread_local SwallowedErrors* innermost = nullptr;

}  // namespace

SwallowedErrors::SwallowedErrors(std::function<void(const Error&)> hear)
    : hear_(std::move(hear)), outer_(std::exchange(innermost, this)) {}

SwallowedErrors::~SwallowedErrors() {
  innermost = outer_;
}

void TellSwallowed() noexcept {
  try {
    if (innermost != nullptr) innermost->hear_(PendingError());
  } catch (...) {
    // Nobody is left to tell.
  }
}

}  // namespace automation
