// The columns of a result: what they are, and the value of one in the row that the driver stands on.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <string>

#include "platform/adodb/odbc/unicode.hpp"
#include "platform/adodb/sql/column.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::odbc {

engine::ColumnType TypeOf(SQLSMALLINT sqlType);

// Values as engine::Rows promises them.
automation::Variant OfDecimal(double number);
automation::Variant OfTimestamp(const SQL_TIMESTAMP_STRUCT& moment);

// How a driver hands over strings: every one as UTF-16; some as UTF-8 too, which saves two conversions.
enum class TextForm { Utf16, Utf8 };

// Working memory for strings, kept between calls.
struct TextBuffer {
  WideText wide;
  std::string bytes;
};

// How values are fetched.
struct FetchStyle {
  TextForm text = TextForm::Utf16;
  bool bound = false;  // rows may be fetched into bound memory, and what does not fit asked for afterwards
};

// Reads column `number` (from 1) of the current row into `value`, in the form that engine::Rows promises for
// `type`. Columns are read from left to right, each once. A status other than success is for the caller to
// report.
SQLRETURN ReadValue(SQLHANDLE statement, SQLUSMALLINT number, engine::ColumnType type, TextForm form,
                    TextBuffer& buffer, automation::Variant& value);

}  // namespace ADODB::odbc
