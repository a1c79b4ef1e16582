// How SQLite is reached.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Traits& SqliteTraits();

}  // namespace ADODB::engine
