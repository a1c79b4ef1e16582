// Errors that an entry point keeps from its caller, told to whoever called it nevertheless.
#pragma once

#include <functional>

#include "platform/automation/error.hpp"

namespace automation {

// While it lives, `hear` is called for the errors that this thread tells of. Scopes nest; the innermost
// hears.
class SwallowedErrors {
 public:
  explicit SwallowedErrors(std::function<void(const Error&)> hear);
  ~SwallowedErrors();
  SwallowedErrors(const SwallowedErrors&) = delete;
  SwallowedErrors& operator=(const SwallowedErrors&) = delete;

 private:
  friend void TellSwallowed() noexcept;
  const std::function<void(const Error&)> hear_;
  SwallowedErrors* const outer_;
};

// Tells of the error being handled: for the last trap of an entry point that returns normally whatever
// happens. Without a scope nobody hears it.
void TellSwallowed() noexcept;

}  // namespace automation
