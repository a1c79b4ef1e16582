// The columns of a result: what they are, and the value of one in the row that the driver stands on.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include "platform/adodb/engine/column.hpp"
#include "platform/adodb/providers/odbc/unicode.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::odbc {

engine::ColumnType TypeOf(SQLSMALLINT sqlType);

// Reads column `number` (from 1) of the current row into `value`, in the form that engine::Rows promises for
// `type`. Columns are read from left to right, each once. `buffer` is working memory that is kept between
// calls. A status other than success is for the caller to report.
SQLRETURN ReadValue(SQLHANDLE statement, SQLUSMALLINT number, engine::ColumnType type, WideText& buffer,
                    automation::Variant& value);

}  // namespace ADODB::odbc
