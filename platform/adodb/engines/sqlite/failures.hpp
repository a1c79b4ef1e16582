// What the failures of SQLite tell.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Failures& SqliteFailures();

}  // namespace ADODB::engine
