// The ODBC provider: "Driver={...};Server=...", "DSN=...", with or without "Provider=MSDASQL".
#pragma once

#include <memory>

#include "platform/adodb/engine/provider.hpp"

namespace ADODB::odbc {

std::shared_ptr<engine::Provider> MakeProvider();

}  // namespace ADODB::odbc
