// OrvaneUtilities: connections, the configuration component and the safe ways to close and create things.
//
// Every getter reports a failure through ReportError under its own source and raises it again.
#pragma once

#include <string>
#include <string_view>

#include "components/interfaces/configuration.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/object.hpp"

namespace OrvaneUtilities {

// An open connection to the suite's own database, or to the product catalogue, with read-committed isolation.
// The caller closes it with CloseConnection.
ADODB::ConnectionPtr GetOrvaneConnection();
ADODB::ConnectionPtr GetECatalogConnection();

// Closes what is open; a null reference or a closed object is left alone. Safe on an error path: the error
// being handled stays the pending one, and nothing new is raised for a closed or null object.
void CloseConnection(ADODB::ConnectionPtr& connection);
void CloseRecordset(ADODB::RecordsetPtr& recordset);

// A new object of the ProgID, in the caller's transaction context where there is one.
automation::ObjectPtr GetComponent(std::string_view progId);

// The installation directory as the configuration component gives it.
std::string GetInstallDirectory();

}  // namespace OrvaneUtilities
