// Places where a job may be ended without anything being left half done.
#pragma once

#include <functional>

#include "platform/automation/export.hpp"

namespace automation {

// While it lives, `reached` is called at each safe point of this thread. It may end the process. Scopes nest;
// the innermost is asked.
class ORVANE_EXPORT SafePoints {
 public:
  explicit SafePoints(std::function<void()> reached);
  ~SafePoints();
  SafePoints(const SafePoints&) = delete;
  SafePoints& operator=(const SafePoints&) = delete;

 private:
  friend void SafePoint();
  const std::function<void()> reached_;
  SafePoints* const outer_;
};

// To be called by a job where everything that it has begun is finished: no transaction is open, no file half
// written, nothing done that the next run would do again. A host that has to stop does so here and nowhere
// else. May not return.
ORVANE_EXPORT void SafePoint();

}  // namespace automation
