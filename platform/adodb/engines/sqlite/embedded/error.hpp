// SQLite's result codes as errors.
#pragma once

#include <sqlite3.h>

#include <string>

#include "platform/automation/error.hpp"

namespace ADODB::sqlite {

// The error of the last call on `database` that failed with `code`: the engine's message and extended code,
// and the SQLSTATE that fits.
automation::Error ErrorOf(sqlite3* database, int code);
automation::Error ErrorOf(int code, std::string message);

}  // namespace ADODB::sqlite
