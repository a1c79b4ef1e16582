#include "suite/database/suite_connection.hpp"

#include "components/interfaces/configuration.hpp"
#include "platform/automation/runtime.hpp"

namespace suite {

ADODB::ConnectionPtr OpenConnection(std::string_view product, std::string_view connection) {
  const auto configuration = automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
  configuration->SelectProduct(product, 0);
  auto opened = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  opened->Open(configuration->GetConnectionString(connection), "", "", ADODB::kOptionsUnspecified);
  return opened;
}

ADODB::RecordsetPtr OpenRows(const ADODB::Statement& sql, const ADODB::ConnectionPtr& connection) {
  auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
             ADODB::kOptionsUnspecified);
  return rows;
}

}  // namespace suite
