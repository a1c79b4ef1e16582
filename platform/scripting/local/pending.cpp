#include "platform/scripting/local/pending.hpp"

#include <system_error>

#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {

bool PublishPending(const std::shared_ptr<base::PendingFiles>& pending) {
  try {
    return pending && pending->Publish();
  } catch (const std::system_error& error) {
    RaiseSystemError(error.code().value(), automation::ErrorNumber::PathNotFound);
  }
}

void MakeDurable(base::PendingFiles& pending) {
  try {
    pending.MakeDurable();
  } catch (const std::system_error& error) {
    RaiseSystemError(error.code().value(), automation::ErrorNumber::PathNotFound);
  }
}

}  // namespace Scripting::local
