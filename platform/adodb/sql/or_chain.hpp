// Very long OR chains: "(ID1 = 17 AND FILETYPE =1) or  (ID1 = 18 AND FILETYPE =1) or ...".
//
// As they stand engines refuse them or take minutes; as a list of row values they cost a fraction of a
// second.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

// The condition at the end of a statement, from the token behind WHERE to the last, cut at its outermost ORs.
struct OrChain {
  std::size_t begin = 0;                                   // index of the first token
  std::vector<std::pair<std::size_t, std::size_t>> terms;  // token ranges, end excluded
};

// No terms when the statement does not end in a condition of its own, or when cutting it would change it (a
// CASE or a subquery inside).
OrChain FindOrChain(std::string_view sql, const std::vector<Token>& tokens);

// The chain as "(A,B) IN (VALUES (1,2),...)", with `start` in the place of "VALUES "; empty when the terms
// are not all equalities between the same columns and literals.
std::string AsRowValueList(std::string_view sql, const std::vector<Token>& tokens, const OrChain& chain,
                           std::string_view start);

}  // namespace ADODB::engine
