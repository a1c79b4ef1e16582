// A keyed table that keeps the order of insertion: "Scripting.Dictionary".
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/variant.hpp"

namespace Scripting {

inline constexpr std::string_view kDictionaryProgId = "Scripting.Dictionary";

class ORVANE_EXPORT Dictionary : public automation::Object {
 public:
  // 457 when the key is there already; keys are compared exactly, text with regard to case.
  virtual void Add(const automation::Variant& key, const automation::Variant& item) = 0;
  // The item under the key; Empty when there is none.
  virtual automation::Variant Item(const automation::Variant& key) const = 0;
  virtual std::vector<automation::Variant> Keys() const = 0;  // in order of insertion
};
using DictionaryPtr = std::shared_ptr<Dictionary>;

}  // namespace Scripting
