#include "jobs/solve/failure_report.hpp"

#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "platform/automation/error.hpp"

namespace OrvaneProcess {

void ReportFailure(std::string_view source) {
  const automation::Error error = automation::PendingError();
  std::string message(source);
  message += " caught: " + error.Description() + " (" + std::to_string(error.Number()) + ").";
  OrvaneUtilities::WriteToLog(error, message);
}

void Release(ADODB::RecordsetPtr& recordset, ADODB::ConnectionPtr& connection) noexcept {
  try {
    OrvaneUtilities::CloseRecordset(recordset);
  } catch (...) {
  }
  try {
    OrvaneUtilities::CloseConnection(connection);
  } catch (...) {
  }
  recordset.reset();
  connection.reset();
}

}  // namespace OrvaneProcess
