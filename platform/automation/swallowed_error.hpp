// Errors that an entry point does not pass to its caller, for whoever wants to know them all the same.
#pragma once

#include <functional>

#include "platform/automation/error.hpp"
#include "platform/automation/export.hpp"

namespace automation {

// While it lives, `notify` is called for each error that this thread reports as swallowed. Scopes nest; the
// innermost is called.
class ORVANE_EXPORT SwallowedErrors {
 public:
  explicit SwallowedErrors(std::function<void(const Error&)> notify);
  ~SwallowedErrors();
  SwallowedErrors(const SwallowedErrors&) = delete;
  SwallowedErrors& operator=(const SwallowedErrors&) = delete;

 private:
  friend void ReportSwallowed() noexcept;
  const std::function<void(const Error&)> notify_;
  SwallowedErrors* const outer_;
};

// Reports the error being handled, from the last trap of an entry point that returns normally whatever
// happens. Does nothing without a scope.
ORVANE_EXPORT void ReportSwallowed() noexcept;

}  // namespace automation
