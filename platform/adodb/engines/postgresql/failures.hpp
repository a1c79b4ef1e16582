// What the failures of PostgreSQL tell.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Failures& PostgreSqlFailures();

}  // namespace ADODB::engine
