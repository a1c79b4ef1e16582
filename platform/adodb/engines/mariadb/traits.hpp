// How MariaDB is reached and how its tables are described.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Traits& MariaDbTraits();

}  // namespace ADODB::engine
