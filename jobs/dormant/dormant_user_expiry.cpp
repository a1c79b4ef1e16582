#include "jobs/dormant/dormant_user_expiry.hpp"

#include "common/connections.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"
#include "platform/automation/swallowed_error.hpp"

namespace OrvaneProcess {
namespace {

using automation::DateTime;
using automation::Variant;

constexpr std::int16_t kStartBanner = 1;
constexpr std::int16_t kStopLine = 2;

std::int32_t ReadDormancyLimit(ADODB::Recordset& recordset, const ADODB::ConnectionPtr& connection) {
  recordset.Open("Select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'MAXDORMANCYTIME'", connection,
                 ADODB::CursorType::Keyset, ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
  // Without the row there is no record to read, and nothing may be deleted by a guessed limit: the read
  // raises.
  const std::int32_t days = automation::ToInt32(recordset.Value("PARAM_VALUE"));
  recordset.Close();
  return days;
}

bool ExpiresBefore(DateTime now, DateTime lastVisit, std::int32_t limitInDays) {
  // An expiry moment past the calendar's end is never reached. One before its beginning is an error like any
  // other: it comes from a wrong limit, and nobody is deleted on the strength of that.
  const DateTime lastDay = DateTime::FromDate(9999, 12, 31);
  const std::int64_t daysLeft = (lastDay.UnixMicroseconds() - lastVisit.DatePart().UnixMicroseconds()) /
                                automation::kMicrosecondsPerDay;
  if (limitInDays > daysLeft) return false;
  return automation::AddDays(lastVisit, limitInDays) < now;
}

bool IsDormant(DateTime now, const Variant& lastVisit, const Variant& pendingQuestions,
               std::int32_t limitInDays) {
  if (lastVisit.IsNull() || pendingQuestions.IsNull()) return false;  // a comparison with null is not true
  return ExpiresBefore(now, automation::ToDateTime(lastVisit), limitInDays) &&
         automation::ToDouble(pendingQuestions) <= 0;
}

}  // namespace

void DormantUserExpiry::Run() {
  try {
    RunExpiry();
  } catch (...) {
    automation::ReportSwallowed();
  }
}

void DormantUserExpiry::RunExpiry() {
  try {
    ExpireDormantUsers();
  } catch (...) {
    // The host never sees a failure: the start banner without its stop line is what tells of it.
    automation::ReportSwallowed();
  }
}

void DormantUserExpiry::ExpireDormantUsers() {
  WriteJobLog(kStartBanner);

  ADODB::ConnectionPtr connection = OrvaneUtilities::GetOrvaneConnection();
  // One moment, to the second, for every prospect of the run.
  const DateTime now = automation::Now().WithoutFraction();

  auto recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  const std::int32_t limitInDays = ReadDormancyLimit(*recordset, connection);

  recordset->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset,
                  ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
  // Fields stay valid while the record set is open; looking them up by name in every row would cost more than
  // reading them.
  const ADODB::Field& lastVisit = recordset->Fields().Item("LASTVISITEDTIME");
  const ADODB::Field& pendingQuestions = recordset->Fields().Item("PENDINGQUESTIONS");
  for (; !recordset->Eof(); recordset->MoveNext()) {
    if (IsDormant(now, lastVisit.Value(), pendingQuestions.Value(), limitInDays)) {
      recordset->Delete(ADODB::Affect::Current);
    }
    automation::SafePoint();
  }
  recordset->Close();
  recordset.reset();
  connection->Close();
  connection.reset();

  WriteJobLog(kStopLine);
}

}  // namespace OrvaneProcess
