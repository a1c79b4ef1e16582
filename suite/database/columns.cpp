#include "suite/database/columns.hpp"

#include <algorithm>
#include <cstddef>

namespace suite {
namespace {

char Folded(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return Folded(a) == Folded(b); });
}

}  // namespace

bool HasColumn(ADODB::Recordset& rows, std::string_view name) {
  ADODB::Fields& fields = rows.Fields();
  for (std::size_t i = 0; i < fields.Count(); ++i) {
    if (EqualIgnoringCase(fields.Item(i).Name(), name)) return true;
  }
  return false;
}

std::string OptionalText(ADODB::Recordset& rows, std::string_view name) {
  return HasColumn(rows, name) ? automation::ToTextOrEmpty(rows.Value(name)) : std::string();
}

}  // namespace suite
