// From the suite's SQL to an engine's.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/sql/checked_statement.hpp"
#include "platform/adodb/sql/delete_shape.hpp"
#include "platform/adodb/sql/dialect.hpp"
#include "platform/adodb/sql/select_shape.hpp"

namespace ADODB::engine {

// A DELETE of the rows of one table, in the engine's SQL.
struct DeleteShape {
  std::string table;
  std::string where;  // with "WHERE"; may be empty
  bool namesTableTwice = false;
};

// Any statement that changes rows of one table.
struct ChangeShape {
  Change change{};
  std::string table;  // as the statement writes it
};

struct Translation {
  std::string text;                     // in the engine's SQL
  std::optional<SelectShape> select;    // what ReadSelect knows
  std::optional<DeleteShape> deletion;  // what ReadDelete knows
  std::optional<ChangeShape> change;    // what ReadChange knows
  bool onlyReads = false;               // see OnlyReads
  bool yieldsRows = false;              // by its first word
  // Whether a literal was read as a date in the current locale, so that the result holds for this locale
  // only.
  bool usesLocale = false;
  std::vector<std::string> names;  // words of the select list, where the engine folds names
};

// Rewrites exactly these tokens, by asking the dialect, and copies everything else byte for byte:
//   {ts '...'}
//   dateadd(d,n,x), and a local date-time literal that it is compared with by < > = <= >= <>
//   isnull(a,b)
//   a + b + ... where an operand is a string literal or an isnull whose replacement is one
//   a condition of more than 100 terms joined by OR that are all equalities on the same columns:
//   (A,B) IN (VALUES ...)
// Raises the engine's kind of error (22007) for a literal compared with dateadd that is no date.
Translation Translate(const CheckedStatement& checked, const Dialect& dialect);

}  // namespace ADODB::engine
