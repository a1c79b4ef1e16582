// The connection string as a driver takes it.
#pragma once

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::odbc {

// "Provider" left out, "User ID" and "Password" under the names that drivers read, and the options that this
// system relies on wherever the given string does not set them itself; none for an engine that is not known.
engine::ConnectionString ForDriver(const engine::ConnectionString& given, const engine::EngineEntry* engine);

}  // namespace ADODB::odbc
