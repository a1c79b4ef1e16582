// Every engine, once: whoever needs to know which engines there are reads this table.
//
// docs/adding-an-engine.md is the list of steps for another one. No other file outside of the engines' own
// folders names an engine in its code; scripts/check-layers looks.
#pragma once

#include <span>
#include <string_view>

#include "platform/adodb/session/engine_entry.hpp"

namespace ADODB::engine {

std::span<const EngineEntry> Engines();

// By the name or the file of an ODBC driver, or by what an open connection says about itself; null when that
// does not tell.
const EngineEntry* EngineOfDriver(std::string_view driver);

// By the provider or the driver that a connection string names; null when it names neither, as with a DSN.
const EngineEntry* EngineOf(const ConnectionString& text);

}  // namespace ADODB::engine
