// A DELETE of the rows of one table in its parts.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

// "DELETE [table] FROM table [WHERE condition]" as ranges of its tokens.
struct DeleteParts {
  TokenRange table;
  std::size_t where = 0;  // the token WHERE; the number of tokens where there is none
  // "DELETE t FROM t": the engine may turn a subquery into a join; no RETURNING with this form.
  bool namesTableTwice = false;
};

// Nothing for a statement of another form: an alias, USING, joins, an order, a limit.
std::optional<DeleteParts> ReadDelete(std::string_view sql, const std::vector<Token>& tokens);

// Whether the table may be named a second time: the statement chooses its rows by a subquery, which does not
// look at the table itself.
bool MayNameTableTwice(std::string_view sql, const std::vector<Token>& tokens, const DeleteParts& parts);

}  // namespace ADODB::engine
