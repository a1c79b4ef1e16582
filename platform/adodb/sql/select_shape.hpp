// What kind of SELECT a statement is: whether its rows can be walked and changed by their table's key.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/sql/dialect.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

// "SELECT list FROM table [alias] [WHERE condition] [ORDER BY order]" as ranges of its tokens.
struct SelectParts {
  TokenRange list;
  TokenRange table;
  TokenRange name;       // the alias, or the table
  TokenRange condition;  // may be empty
  TokenRange order;      // may be empty; with "ORDER BY"
};

// Nothing for a statement of another form: joins, DISTINCT, functions or expressions in the list, grouping,
// unions, limits.
std::optional<SelectParts> ReadSelect(std::string_view sql, const std::vector<Token>& tokens);

// The parts in the engine's SQL.
struct SelectShape {
  std::string list;
  std::string table;
  std::string name;  // by which columns of the table are qualified
  std::string condition;
  std::string order;

  // The table, when the list is "*": every column then has the name that it has there. Empty otherwise.
  std::string_view WholeTable() const { return list == "*" ? std::string_view(table) : std::string_view(); }

  // Everything behind the list, for a statement that is cut by `condition` as well.
  std::string From(std::string_view extraCondition) const;
  // The list, and behind it the columns that address a row.
  std::string ListWithKey(const TableShape& key, const Dialect& dialect) const;
  // Yields a row for each of the statement's whose column equals a parameter.
  std::string Holding(std::string_view column, const Dialect& dialect) const;
};

}  // namespace ADODB::engine
