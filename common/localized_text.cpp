#include "common/localized_text.hpp"

#include "common/connections.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneUtilities {

std::string GetI18NText(std::string_view label, std::int32_t localeId) {
  std::string text;
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr recordset;
  try {
    connection = GetOrvaneConnection();
    if (!label.empty()) {
      ADODB::Statement sql = "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=";
      sql += ADODB::SqlValue(localeId);
      sql += " AND LABEL='";
      sql += ADODB::SqlValue(label);
      sql += "'";

      recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
      recordset->SetMaxRecords(1);
      recordset->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                      ADODB::kCommandText);
      // An untranslated label shows its identifier instead of nothing.
      text = recordset->Eof() ? std::string(label) : automation::ToText(recordset->Value("TEXT"));
    }
    CloseRecordset(recordset);
    CloseConnection(connection);
  } catch (...) {
    // A mail with a caption missing is better than no mail: the text stays as far as it came.
    CloseRecordset(recordset);
    CloseConnection(connection);
  }
  return text;
}

}  // namespace OrvaneUtilities
