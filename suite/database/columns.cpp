#include "suite/database/columns.hpp"

#include <cstddef>

#include "platform/base/text.hpp"

namespace suite {

bool HasColumn(ADODB::Recordset& rows, std::string_view name) {
  ADODB::Fields& fields = rows.Fields();
  for (std::size_t i = 0; i < fields.Count(); ++i) {
    if (base::EqualsIgnoringAsciiCase(fields.Item(i).Name(), name)) return true;
  }
  return false;
}

std::string OptionalText(ADODB::Recordset& rows, std::string_view name) {
  return HasColumn(rows, name) ? automation::ToTextOrEmpty(rows.Value(name)) : std::string();
}

}  // namespace suite
