// Readable texts for codes, from the suite's own tables.
#include <cstdint>
#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

using automation::Variant;

bool IsNullOrBlank(const Variant& key) {
  return key.IsNull() || automation::ToText(key).find_first_not_of(' ') == std::string::npos;
}

bool HasRow(const ADODB::Recordset& recordset) {
  return !recordset.Eof();
}
// Always false where the provider does not know the count of a forward-only cursor.
bool CountsRows(const ADODB::Recordset& recordset) {
  return recordset.RecordCount() > 0;
}

// The column in the statement's first row, empty text without one. `connection` is left to the caller when
// something fails.
std::string ReadFirst(ADODB::ConnectionPtr& connection, const ADODB::Statement& sql, std::string_view column,
                      ADODB::CursorType cursor, bool (*found)(const ADODB::Recordset&)) {
  std::string text;
  connection = OrvaneUtilities::GetOrvaneConnection();
  const auto recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  recordset->Open(sql, connection, cursor, ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified);
  if (found(*recordset)) text = automation::ToTextOrEmpty(recordset->Value(column));
  recordset->Close();
  OrvaneUtilities::CloseConnection(connection);
  return text;
}

std::string LookUp(std::string_view errorSource, const ADODB::Statement& sql, std::string_view column,
                   ADODB::CursorType cursor = ADODB::CursorType::ForwardOnly,
                   bool (*found)(const ADODB::Recordset&) = HasRow) {
  ADODB::ConnectionPtr connection;
  try {
    return ReadFirst(connection, sql, column, cursor, found);
  } catch (...) {
    OrvaneUtilities::CloseConnection(connection);
    OrvaneUtilities::LogError(errorSource);
    return {};
  }
}

ADODB::SqlValue Key(const Variant& key) {
  return ADODB::SqlValue(automation::ToTextOrEmpty(key));
}

}  // namespace

std::string SolveOnNoResponseJob::GetDataLabelDesc(const Variant& textId, std::int32_t localeId) {
  ADODB::Statement sql = "Select TEXT From DATALABEL where LOCALEID = ";
  sql += ADODB::SqlValue(localeId);
  sql += " and TEXTID = '";
  sql += Key(textId);
  sql += "'";
  return LookUp("OrvaneProcess.SolveOnNoResponse.GetDataLabelDesc", sql, "TEXT", ADODB::CursorType::Static);
}

std::string SolveOnNoResponseJob::getSiteDescription(const Variant& site) {
  if (IsNullOrBlank(site)) return {};
  ADODB::Statement sql = "Select DESCRIPTION from SITE where SITE='";
  sql += Key(site);
  sql += "'";
  return LookUp("OrvaneProcess.SolveOnNoResponse.getSiteDescription", sql, "DESCRIPTION",
                ADODB::CursorType::ForwardOnly, CountsRows);
}

std::string SolveOnNoResponseJob::getProductDescription(const Variant& product) {
  if (IsNullOrBlank(product)) return {};
  ADODB::Statement sql = "Select DESCRIPTION from PRODUCT where PRODUCT='";
  sql += Key(product);
  sql += "'";
  return LookUp("OrvaneProcess.SolveOnNoResponse.getProductDescription", sql, "DESCRIPTION");
}

std::string SolveOnNoResponseJob::getObjectDescription(const Variant& object, const Variant& objectNr) {
  if (object.IsNull()) return {};
  ADODB::Statement sql = "Select OBJECTDESC from OBJECT where OBJECT = '";
  sql += Key(object);
  sql += "' AND OBJECTNR='";
  sql += Key(objectNr);
  sql += "'";
  return LookUp("OrvaneProcess.SolveOnNoResponse.getObjectDescription", sql, "OBJECTDESC");
}

std::string SolveOnNoResponseJob::getReportedDescription(const Variant& problem) {
  if (IsNullOrBlank(problem)) return {};
  ADODB::Statement sql = "Select DESCRIPTION from PROBLEM where PROBLEM='";
  sql += Key(problem);
  sql += "'";
  ADODB::ConnectionPtr connection;
  return ReadFirst(connection, sql, "DESCRIPTION", ADODB::CursorType::ForwardOnly, HasRow);
}

std::string SolveOnNoResponseJob::getPriorityDescription(std::int32_t priority) {
  ADODB::Statement sql = "Select DESCRIPTION from PRIORITY where PRIORITY=";
  sql += ADODB::SqlValue(priority);
  return LookUp("OrvaneProcess.SolveOnNoResponse.getPriorityDescription", sql, "DESCRIPTION");
}

}  // namespace OrvaneProcess
