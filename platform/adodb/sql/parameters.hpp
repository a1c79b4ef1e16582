// Values for the "?" of a statement.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/automation/variant.hpp"

namespace ADODB::engine {

// In order. A value for a column has the variant type that the column's ColumnType stands for (see
// Rows::Value), or is Null.
using Parameters = std::vector<automation::Variant>;

// A whole number as a column of such gives it: in 32 bits where they are enough.
inline automation::Variant OfWhole(std::int64_t number) {
  const auto narrow = static_cast<std::int32_t>(number);
  return narrow == number ? automation::Variant(narrow) : automation::Variant(number);
}

}  // namespace ADODB::engine
