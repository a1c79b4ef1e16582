// The SQL Server dialect.
#pragma once

#include "platform/adodb/dialects/dialect.hpp"

namespace ADODB::engine {

const Dialect& SqlServerDialect();

}  // namespace ADODB::engine
