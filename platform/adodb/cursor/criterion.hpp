// The search conditions of Find and Filter: "NAME='text'", "NAME=12".
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/variant.hpp"

namespace ADODB::engine {

struct Criterion {
  std::string column;         // without brackets
  automation::Variant value;  // a string or a number
};

// Raises 3001 for anything but one equality of a column with a string literal or a number. Criteria
// are put together from a column and a value that comes from outside, so the literal holds no quote, doubled
// ones included, and no NUL, and nothing follows it, not even a space.
Criterion ParseCriterion(std::string_view text);

}  // namespace ADODB::engine
