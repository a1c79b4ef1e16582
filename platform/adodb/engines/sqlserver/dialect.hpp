// The SQL Server dialect.
#pragma once

#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

const Dialect& SqlServerDialect();

}  // namespace ADODB::engine
