// The component-services context of a caller that runs its components inside a transaction.
#pragma once

#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace automation {

class ORVANE_EXPORT ObjectContext {
 public:
  virtual ~ObjectContext() = default;

  // A new object that joins the caller's transaction; null or a raised error when it cannot be created.
  virtual ObjectPtr CreateInstance(std::string_view progId) = 0;

  // Votes to commit, or to abort, the transaction that surrounds the caller.
  virtual void SetComplete() = 0;
  virtual void SetAbort() = 0;
};

}  // namespace automation
