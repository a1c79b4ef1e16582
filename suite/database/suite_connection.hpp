// How the suite's components reach its databases.
#pragma once

#include <string_view>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"

namespace suite {

// An open connection to the database that the site configuration names for a connection of a product, e.g.
// ("Orvane", "Orvane") or ("VnServer", "ECatalog"). What goes wrong is raised.
ADODB::ConnectionPtr OpenConnection(std::string_view product, std::string_view connection);

// A forward-only read-only record set on the statement.
ADODB::RecordsetPtr OpenRows(const ADODB::Statement& sql, const ADODB::ConnectionPtr& connection);

}  // namespace suite
