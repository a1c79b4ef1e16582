// From what SQLite stores to what a column's declaration promises.
#pragma once

#include <sqlite3.h>

#include <string_view>

#include "platform/adodb/sql/column.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::sqlite {

// BIT and BOOL... are Boolean; DATE, DATETIME and TIMESTAMP are DateTime; then SQLite's own rules by parts of
// the name (INT, CHAR/CLOB/TEXT, BLOB, REAL/FLOA/DOUB). Anything else is Decimal, no declaration at all Text.
engine::ColumnType TypeOfDeclaration(std::string_view declaration);

// The value of a column of the current row. A stored form that does not fit the declared type (a text that is
// no date in a date column, say) comes as it is stored.
void ReadValue(sqlite3_stmt* statement, int place, engine::ColumnType type, automation::Variant& into);

}  // namespace ADODB::sqlite
