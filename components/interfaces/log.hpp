// The suite's error log: "Vantrel.Log".
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/variant.hpp"

namespace Vantrel {

inline constexpr std::string_view kLogProgId = "Vantrel.Log";

class ORVANE_EXPORT Log : public automation::Object {
 public:
  // One entry: the component or library that raised the error, what to tell the operator, and a code (0:
  // error). `result` receives whether the entry was written.
  virtual void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                             automation::Variant& result) = 0;
};
using LogPtr = std::shared_ptr<Log>;

}  // namespace Vantrel
