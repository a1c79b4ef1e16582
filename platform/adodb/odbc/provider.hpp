// The ODBC provider: "Driver={...};Server=...", "DSN=...", with or without "Provider=MSDASQL".
#pragma once

#include <memory>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::odbc {

std::shared_ptr<engine::Provider> MakeProvider();

}  // namespace ADODB::odbc
