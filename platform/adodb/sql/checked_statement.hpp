// The gate that every statement passes before it is sent.
#pragma once

#include <string_view>

#include "platform/adodb/sql/dialect.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/adodb/statement.hpp"

namespace ADODB::engine {

struct CheckedStatement {
  std::string_view sql;  // into the Statement, without a ";" at its end
  TokenList list;
};

// Raises the dialect's syntax error for
//  - a value inside a string literal that holds a quote, a doubled one too, or a NUL,
//  - a value anywhere else that is not one signed decimal number or one whole string literal, standing alone.
void CheckValues(const Statement& statement, const Dialect& dialect);

// Raises the dialect's syntax error for
//  - a literal, quoted name or comment that does not end, and an empty statement,
//  - anything but white space and comments after a ";".
// `statement` must outlive the result.
CheckedStatement CheckText(const Statement& statement, const Dialect& dialect);

}  // namespace ADODB::engine
