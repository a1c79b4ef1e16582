#include "common/transaction_log.hpp"

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneUtilities {

std::int32_t CreateTransactionLog(std::int32_t questionId, std::string_view name, std::string_view status,
                                  std::int32_t center, const automation::Variant& date,
                                  std::string_view comment, std::string_view userComment,
                                  std::int32_t timeSpent) {
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr recordset;
  try {
    connection = GetOrvaneConnection();
    recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    recordset->SetCursorLocation(ADODB::CursorLocation::Client);
    // No rows: only the table's columns are wanted, to add a record to.
    recordset->Open("SELECT * FROM TRANSACTIONS WHERE 0 = 1", connection, ADODB::CursorType::Static,
                    ADODB::LockType::Optimistic, ADODB::kCommandText);
    recordset->AddNew();
    recordset->SetValue("Q_ID", questionId);
    recordset->SetValue("T_NAME", name);
    recordset->SetValue("T_STATUS", status);
    recordset->SetValue("CENTER", center);
    recordset->SetValue("T_DATE", date);
    recordset->SetValue("T_COMMENT", comment);
    recordset->SetValue("USERCOMMENT", userComment);
    recordset->SetValue("TIMESPENT", timeSpent);
    recordset->Update();
    const std::int32_t transactionId = automation::ToInt32(recordset->Value("T_ID"));
    recordset->Close();
    CloseConnection(connection);
    if (const auto context = automation::GetObjectContext()) context->SetComplete();
    return transactionId;
  } catch (...) {
    if (const auto context = automation::GetObjectContext()) context->SetAbort();
    CloseRecordset(recordset);
    CloseConnection(connection);
    ReportError("OrvServiceRequestMTS.Question.CreateTransactionLog");
  }
}

}  // namespace OrvaneUtilities
