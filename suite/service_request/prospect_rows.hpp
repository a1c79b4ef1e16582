// The PROSPECT rows of a mail address.
#pragma once

#include <string_view>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/statement.hpp"

namespace OrvServiceRequest {

// Whether the database can tell prospects by mail address at all: it has a table PROSPECT with EMAILID and
// the other column.
bool KnowsProspects(const ADODB::ConnectionPtr& connection, std::string_view otherColumn);

// "EMAILID = '...'", the address as a complete literal with its quotes doubled.
ADODB::Statement ByEMail(std::string_view emailAddress);

}  // namespace OrvServiceRequest
