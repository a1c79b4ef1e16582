// OrvaneUtilities: where the shared procedures get the suite's components from.
#pragma once

#include <memory>
#include <string_view>

#include "platform/automation/runtime.hpp"

namespace OrvaneUtilities {

// A new object of the ProgID: through the caller's object context where there is one, so that it joins the
// caller's transaction, else directly. A context may answer null; what goes wrong is raised.
automation::ObjectPtr CreateInCallersContext(std::string_view progId);

// The same, seen through T: 91 for null, 430 for an object that is no T.
template <class T>
std::shared_ptr<T> CreateInCallersContext(std::string_view progId) {
  if (automation::GetObjectContext()) return automation::As<T>(CreateInCallersContext(progId));
  return automation::CreateObject<T>(progId);
}

}  // namespace OrvaneUtilities
