// The PostgreSQL dialect.
#pragma once

#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

const Dialect& PostgreSqlDialect();

}  // namespace ADODB::engine
