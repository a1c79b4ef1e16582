// Columns that a site's database may or may not have.
#pragma once

#include <string>
#include <string_view>

#include "platform/adodb/recordset.hpp"

namespace suite {

bool HasColumn(ADODB::Recordset& rows, std::string_view name);

// The column's text in the current record; empty for null and for a column that is not there.
std::string OptionalText(ADODB::Recordset& rows, std::string_view name);

}  // namespace suite
