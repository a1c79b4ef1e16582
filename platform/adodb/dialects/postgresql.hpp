// The PostgreSQL dialect.
#pragma once

#include "platform/adodb/dialects/dialect.hpp"

namespace ADODB::engine {

const Dialect& PostgreSqlDialect();

}  // namespace ADODB::engine
