// What the failures of MariaDB tell.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Failures& MariaDbFailures();

}  // namespace ADODB::engine
