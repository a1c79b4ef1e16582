// One ODBC statement: prepared or direct, its parameters, and the result that it is reading.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/odbc/bound_column.hpp"
#include "platform/adodb/odbc/error.hpp"
#include "platform/adodb/odbc/handle.hpp"
#include "platform/adodb/odbc/parameter.hpp"
#include "platform/adodb/odbc/result_column.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/adodb/sql/column.hpp"

namespace ADODB::odbc {

class Statement : public engine::PreparedStatement {
 public:
  // `health` is told of each failure; it must outlive the statement.
  Statement(const ConnectionHandle& connection, FetchStyle style, Health& health);

  void Prepare(std::string_view sql);
  // Runs the prepared statement with values for its "?". All of these raise the engine's failure.
  void Execute(const engine::Parameters& parameters);
  void ExecuteDirect(std::string_view sql);

  // The columns of the result, empty when there is none; `table` as in engine::Sql. After another execution
  // of a prepared statement only their types are looked at again.
  std::vector<engine::Column>& Columns(std::string_view table = {});

  bool Fetch();  // false past the last row
  // The value of a column of the row fetched last.
  void ReadInto(std::size_t column, automation::Variant& into) const;

  std::int64_t AffectedRows() const { return affectedRows_; }
  void CloseCursor();

 private:
  void Check(SQLRETURN status);
  void TakeResult(SQLRETURN status);
  std::vector<SQLSMALLINT> ResultTypes();
  void Describe(std::string_view table);
  void Bind();
  std::string ColumnText(SQLUSMALLINT column, SQLUSMALLINT field);

  StatementHandle handle_;
  Health& health_;
  std::vector<ParameterBuffer> parameters_;
  bool described_ = false;
  std::vector<SQLSMALLINT> types_;  // as the driver calls those of columns_
  std::vector<engine::Column> columns_;
  // One for each column: the memory of those that are fetched with the row, and the values of those that had
  // to be asked for.
  struct Slot {
    bool isBound = false;
    BoundColumn bound;
    bool asked = false;
    automation::Variant value;
  };
  std::vector<Slot> slots_;
  FetchStyle style_;
  mutable TextBuffer buffer_;
  std::int64_t affectedRows_ = 0;
};

}  // namespace ADODB::odbc
