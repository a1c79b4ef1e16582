// Makes the tables of a new suite and fills them with the rows that every suite needs.
#pragma once

#include <string_view>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/engines/table.hpp"

namespace orvane::host {

using ADODB::engine::EngineEntry;

// The engine that a connection string leads to, by its provider or driver. Raises 3001 for one that it cannot
// tell, such as a DSN without a driver.
const EngineEntry& EngineOf(std::string_view connectionString);

// An open connection; the caller closes it.
ADODB::ConnectionPtr OpenDatabase(std::string_view connectionString);

// Makes the tables of the suite's own database, or of the catalogue's. Raises what the engine says, for a
// table that is there already among others.
void MakeSuiteTables(const EngineEntry& engine, const ADODB::ConnectionPtr& connection);
void MakeCatalogueTables(const EngineEntry& engine, const ADODB::ConnectionPtr& connection);

// Settings, mail templates and the texts of all labels; the catalogue's settings.
void FillSuite(const ADODB::ConnectionPtr& connection);
void FillCatalogue(const ADODB::ConnectionPtr& connection);

}  // namespace orvane::host
