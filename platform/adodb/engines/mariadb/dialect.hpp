// The MariaDB dialect.
#pragma once

#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

const Dialect& MariaDbDialect();

}  // namespace ADODB::engine
