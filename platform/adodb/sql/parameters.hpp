// Values for the "?" of a statement.
#pragma once

#include <vector>

#include "platform/automation/variant.hpp"

namespace ADODB::engine {

// In order. A value for a column has the variant type that the column's ColumnType stands for (see
// Rows::Value), or is Null.
using Parameters = std::vector<automation::Variant>;

}  // namespace ADODB::engine
