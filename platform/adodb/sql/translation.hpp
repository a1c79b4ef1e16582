// From the suite's SQL to an engine's.
#pragma once

#include <string>
#include <vector>

#include "platform/adodb/sql/checked_statement.hpp"
#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

struct Translation {
  // One statement; or the pieces of a long DELETE, to be run in one transaction.
  std::vector<std::string> statements;
  // Whether it is one that yields rows, by its first word.
  bool yieldsRows = false;
  // Whether a text was read as a date in the current locale, so that the result holds for this locale only.
  bool usesLocale = false;
};

// Rewrites exactly these tokens, by asking the dialect, and copies everything else byte for byte:
//   {ts '...'}
//   dateadd(d,n,x), and a local date-time text that it is compared with by < > = <= >= <>
//   isnull(a,b)
//   a + b + ... where an operand is a quoted text or an isnull whose replacement is one
//   a condition of more than 100 terms joined by OR: (A,B) IN (VALUES ...) where all terms are equalities on
//   the same columns; pieces of 100 terms where they are not and the statement is a DELETE
// Raises the engine's kind of error (22007) for a text compared with dateadd that is no date.
Translation Translate(const CheckedStatement& checked, const Dialect& dialect);

}  // namespace ADODB::engine
