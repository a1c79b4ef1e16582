#include "suite/database/columns.hpp"

#include <cstdint>

#include "platform/automation/error.hpp"

namespace suite {

bool HasColumn(ADODB::Recordset& rows, std::string_view name) {
  try {
    rows.Fields().Item(name);
    return true;
  } catch (const automation::Error& error) {
    if (error.Number() != static_cast<std::int32_t>(automation::ErrorNumber::ItemNotFound)) throw;
    return false;
  }
}

std::string OptionalText(ADODB::Recordset& rows, std::string_view name) {
  return HasColumn(rows, name) ? automation::ToTextOrEmpty(rows.Value(name)) : std::string();
}

}  // namespace suite
