// The SQLite dialect.
#pragma once

#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

// dateadd(d,n,m) becomes orvane_adddays(n,m), a function that the SQLite provider registers: the engine's own
// datetime() would drop fractions of a second.
const Dialect& SqliteDialect();

}  // namespace ADODB::engine
