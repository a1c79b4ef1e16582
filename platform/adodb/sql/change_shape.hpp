// What a statement changes, as far as its words say.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

struct ChangeParts {
  Change change{};
  TokenRange table;
};

// INSERT, REPLACE, UPDATE, MERGE or DELETE of rows of one table, which need not be one that ReadDelete knows.
// Nothing for what begins otherwise: what changes tables themselves, calls of procedures.
std::optional<ChangeParts> ReadChange(std::string_view sql, const std::vector<Token>& tokens);

// Whether the statement is a query, or a setting of the session. Functions that it calls may change something
// all the same.
bool OnlyReads(std::string_view sql, const std::vector<Token>& tokens);

}  // namespace ADODB::engine
