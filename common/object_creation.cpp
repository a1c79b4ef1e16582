#include "common/object_creation.hpp"

namespace OrvaneUtilities {

automation::ObjectPtr CreateInCallersContext(std::string_view progId) {
  if (const std::shared_ptr<automation::ObjectContext> context = automation::GetObjectContext()) {
    return context->CreateInstance(progId);
  }
  return automation::CreateObject(progId);
}

}  // namespace OrvaneUtilities
