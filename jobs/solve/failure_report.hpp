// Failures of the solve job, written to the suite's log.
#pragma once

#include <string_view>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"

namespace OrvaneProcess {

// Writes: source " caught: " description " (" number ")." for the error being handled, and returns. Called
// from inside a catch clause; a failure of the log component is raised.
void ReportFailure(std::string_view source);

// Closes both on an error path: what goes wrong here is secondary to the error being handled and is dropped.
void Release(ADODB::RecordsetPtr& recordset, ADODB::ConnectionPtr& connection) noexcept;

}  // namespace OrvaneProcess
