// Calls of the ERP back ends: "OrvaneBackendA.Calls" and "OrvaneBackendB.Calls".
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/scripting/dictionary.hpp"

namespace OrvaneBackend {

inline constexpr std::string_view kCallsAProgId = "OrvaneBackendA.Calls";
inline constexpr std::string_view kCallsBProgId = "OrvaneBackendB.Calls";

class ORVANE_EXPORT Calls : public automation::Object {
 public:
  // Updates a call of the ERP with the collected values; `message` receives what the back end has to say.
  virtual void UpdateCall(std::string& message, const Scripting::DictionaryPtr& values) = 0;
};
using CallsPtr = std::shared_ptr<Calls>;

}  // namespace OrvaneBackend
