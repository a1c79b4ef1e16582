// The memory into which a driver puts the values of one column while it fetches rows.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <memory>
#include <string>

#include "platform/adodb/odbc/result_column.hpp"
#include "platform/adodb/sql/column.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::odbc {

// One call of the driver then fetches a row with all its short values, instead of one more call for each.
class BoundColumn {
 public:
  // Whether the values of a column of this type can be fetched so, as long as they are short.
  static bool Suits(SQLSMALLINT sqlType);

  // The driver writes into this object with every fetch from now on: it must stay where it is, and outlive
  // the statement's results.
  SQLRETURN Bind(SQLHANDLE statement, SQLUSMALLINT number, engine::ColumnType type, TextForm form);

  // The driver writes here no longer.
  SQLRETURN Unbind(SQLHANDLE statement, SQLUSMALLINT number);

  // Whether the value that was fetched is here; a text that is too long for it is not.
  bool Holds() const { return !text_ || indicator_ == SQL_NULL_DATA || HoldsText(); }
  // The value, in the form that engine::Rows promises. `buffer` is working memory.
  void Read(automation::Variant& into, TextBuffer& buffer) const;

 private:
  bool HoldsText() const;

  engine::ColumnType type_ = engine::ColumnType::Text;
  TextForm form_ = TextForm::Utf16;
  SQLLEN indicator_ = SQL_NULL_DATA;
  union {
    SQLBIGINT whole;
    double number;
    SQL_TIMESTAMP_STRUCT moment;
  } fixed_{};
  std::unique_ptr<SQLWCHAR[]> text_;  // in either form
};

}  // namespace ADODB::odbc
