// The suite's conversion of texts into SQL literals, created by class.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace OrvCommon {

inline constexpr std::string_view kSqlConversionClass = "OrvCommon.SqlConversion";

class ORVANE_EXPORT SqlConversion : public automation::Object {
 public:
  // The text as a complete literal: in single quotes, every quote inside doubled.
  virtual std::string ToLiteral(std::string_view text) = 0;
};

}  // namespace OrvCommon
