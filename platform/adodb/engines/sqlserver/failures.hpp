// What the failures of SQL Server tell.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

const Failures& SqlServerFailures();

}  // namespace ADODB::engine
