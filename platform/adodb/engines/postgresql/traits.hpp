// How PostgreSQL is reached and how its tables are described.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Traits& PostgreSqlTraits();

}  // namespace ADODB::engine
