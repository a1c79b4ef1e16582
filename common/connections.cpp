#include "common/connections.hpp"

#include <exception>

#include "common/error_reporting.hpp"
#include "common/object_creation.hpp"

namespace OrvaneUtilities {
namespace {

ADODB::ConnectionPtr OpenConfiguredConnection(std::string_view product, std::string_view connectionName,
                                              std::string_view errorSource) {
  ADODB::ConnectionPtr connection;
  Vantrel::ConfigurationPtr configuration;
  try {
    connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    configuration = CreateInCallersContext<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
    configuration->SelectProduct(product, 0);
    connection->Open(configuration->GetConnectionString(connectionName), "", "", ADODB::kOptionsUnspecified);
    configuration.reset();
    connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted);
    return connection;
  } catch (...) {
    configuration.reset();
    CloseConnection(connection);
    ReportError(errorSource);
  }
}

// Closes an open object. On an error path the error being handled is the one to report: a failure to close
// on top of it is dropped.
template <class Closable>
void CloseIfOpen(const std::shared_ptr<Closable>& object, std::string_view errorSource) {
  const bool errorPending = std::current_exception() != nullptr;
  try {
    if (object && object->State() == ADODB::ObjectState::Open) object->Close();
  } catch (...) {
    if (!errorPending) ReportError(errorSource);
  }
}

}  // namespace

ADODB::ConnectionPtr GetOrvaneConnection() {
  return OpenConfiguredConnection("Orvane", "Orvane", "OrvServiceRequestOrvaneUtilities.GetOrvaneConnection");
}

ADODB::ConnectionPtr GetECatalogConnection() {
  return OpenConfiguredConnection("VnServer", "ECatalog",
                                  "OrvServiceRequestOrvaneUtilities.GetECatalogConnection");
}

void CloseConnection(ADODB::ConnectionPtr& connection) {
  CloseIfOpen(connection, "OrvaneUtilities.CloseConnection");
}

void CloseRecordset(ADODB::RecordsetPtr& recordset) {
  CloseIfOpen(recordset, "OrvaneUtilities.CloseRecordset");
}

automation::ObjectPtr GetComponent(std::string_view progId) {
  std::string whatFailed;
  try {
    if (automation::GetObjectContext()) {
      whatFailed =
          "CreateInstance(" + std::string(progId) +
          ") failed.\r\n"
          "Note: Objects having 'Instancing=PublicNotCreatable' may only be instantiated with 'New', "
          "not with GetComponent()";
    } else {
      whatFailed = "CreateObject(" + std::string(progId) + ") failed";
    }
    automation::ObjectPtr object = CreateInCallersContext(progId);
    if (!object) throw automation::Error(automation::ErrorNumber::CannotCreateObject);
    return object;
  } catch (...) {
    ReportError("OrvaneUtilies.GetComponent", whatFailed);
  }
}

std::string GetInstallDirectory() {
  try {
    return CreateInCallersContext<Vantrel::Configuration>(Vantrel::kConfigurationProgId)->getInstallDir();
  } catch (...) {
    ReportError("OrvaneUtilities.GetInstallDirectory");
  }
}

}  // namespace OrvaneUtilities
