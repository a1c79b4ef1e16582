#include "common/parameters.hpp"

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "components/interfaces/sql_conversion.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneUtilities {

std::string ReadParameterValue(const ADODB::Statement& query) {
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr recordset;
  try {
    std::string value;
    connection = GetOrvaneConnection();
    recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    recordset->Open(query, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                    ADODB::kCommandText);
    if (!recordset->Eof()) value = automation::ToText(recordset->Value("PARAM_VALUE"));
    recordset->Close();
    recordset.reset();
    CloseConnection(connection);
    return value;
  } catch (...) {
    CloseRecordset(recordset);
    CloseConnection(connection);
    ReportError("OrvaneProcess.Dispatch.GetParamValue");
  }
}

std::string GetParamValue(std::string_view name) {
  ADODB::Statement query = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = '";
  query += ADODB::SqlValue(name);
  query += "'";
  return ReadParameterValue(query);
}

Scripting::DictionaryPtr GetParameterValues(const automation::VariantArray& names) {
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr recordset;
  try {
    const auto conversion =
        automation::CreateObject<OrvCommon::SqlConversion>(OrvCommon::kSqlConversionClass);
    ADODB::Statement sql = "SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN (";
    for (std::size_t i = 0; i < names.size(); ++i) {
      sql += ADODB::SqlValue(conversion->ToLiteral(automation::ToText(names[i])));
      if (i + 1 < names.size()) sql += ", ";
    }
    sql += ")";

    connection = GetOrvaneConnection();
    recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    recordset->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                    ADODB::kCommandText);
    auto values = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
    for (; !recordset->Eof(); recordset->MoveNext()) {
      values->Add(recordset->Value("PARAM_NAME"), recordset->Value("PARAM_VALUE"));
    }
    recordset->Close();
    CloseConnection(connection);
    return values;
  } catch (...) {
    CloseRecordset(recordset);
    CloseConnection(connection);
    ReportError("OrvaneUtilities.GetParameterValues");
  }
}

automation::Variant GetDefaultLanguage() {
  const auto configuration = automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
  configuration->Load();
  return configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE");
}

}  // namespace OrvaneUtilities
