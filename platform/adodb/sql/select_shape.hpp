// What kind of SELECT a statement is: whether its rows can be walked and changed by their table's key.
#pragma once

#include <string>
#include <string_view>

#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

// "SELECT list FROM table [alias] [WHERE condition] [ORDER BY order]" in its parts, as written.
struct SelectShape {
  std::string list;
  std::string table;
  std::string name;       // by which columns of the table are qualified: the alias, or the table
  std::string condition;  // may be empty
  std::string order;      // may be empty; with "ORDER BY"

  // Everything behind the list, for a statement that is cut by `condition` as well.
  std::string From(std::string_view extraCondition) const;
};

// The columns of the statement and those that address its rows behind them.
std::string ListWithKey(const SelectShape& select, const TableShape& table, const Dialect& dialect);

// Reads finished engine SQL; false for a statement of another form: joins, DISTINCT, functions or expressions
// in the list, grouping, unions, limits.
bool ReadSelect(std::string_view sql, SelectShape& shape);

}  // namespace ADODB::engine
