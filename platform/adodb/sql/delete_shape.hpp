// A DELETE of the rows of one table in its parts.
#pragma once

#include <string>
#include <string_view>

namespace ADODB::engine {

struct DeleteShape {
  std::string table;  // as written
  std::string where;  // may be empty; with "WHERE"
  // "DELETE t FROM t": the engine may turn a subquery into a join; no RETURNING with this form.
  bool namesTableTwice = false;
};

// Reads finished engine SQL; false for a statement of another form: an alias, USING, joins, an order, a
// limit.
bool ReadDelete(std::string_view sql, DeleteShape& shape);

}  // namespace ADODB::engine
