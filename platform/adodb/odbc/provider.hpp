// The ODBC provider: "Driver={...};Server=...", "DSN=...", with or without "Provider=MSDASQL".
#pragma once

#include <memory>

#include "platform/adodb/session/coarse_clock.hpp"
#include "platform/adodb/session/provider.hpp"

namespace ADODB::odbc {

// `clock` tells how old a table's description is.
std::shared_ptr<engine::Provider> MakeProvider(engine::Clock clock = &engine::CoarseNow);

}  // namespace ADODB::odbc
