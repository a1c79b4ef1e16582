// The root of everything that can be created by ProgID or held in a Variant.
#pragma once

#include <memory>

#include "platform/automation/export.hpp"

namespace automation {

class ORVANE_EXPORT Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;
};

using ObjectPtr = std::shared_ptr<Object>;

}  // namespace automation
