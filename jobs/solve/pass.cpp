// The run, and the walk over the reminder rows that it makes.
#include <cstdint>
#include <memory>
#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/parameters.hpp"
#include "components/interfaces/escalation.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int16_t kStartBanner = 1;
constexpr std::int16_t kStopLine = 2;
constexpr std::int32_t kWaitingForCustomer = 150;

// Due is what lies at least one minute before the pass; nothing is due at a null date.
bool IsDue(const automation::Variant& date, automation::DateTime now) {
  return !date.IsNull() && automation::AddMinutes(now, -1) >= automation::ToDateTime(date);
}

void SendEscalationMails() {
  const auto escalation = std::dynamic_pointer_cast<OrvaneProcessMTS::SolveOnNoResponse>(
      OrvaneUtilities::GetComponent(OrvaneProcessMTS::kSolveOnNoResponseProgId));
  if (!escalation) throw automation::Error(automation::ErrorNumber::MemberNotSupported);
  escalation->SendingEscalationMails();
}

}  // namespace

void SolveOnNoResponseJob::Run() {
  try {
    WriteRunLog(kStartBanner);
    HandleSolveOnNoResponse();
    WriteRunLog(kStopLine);
  } catch (...) {
    // Only the run log itself can fail here: the entry says why its banner or stop line is missing.
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.Run");
  }
}

void SolveOnNoResponseJob::HandleSolveOnNoResponse() {
  try {
    m_lBackOfficeApplication = automation::ToInt32(OrvaneUtilities::GetParamValue("BackOfficeApplication"));
    SolveOnNoResponse(m_lBackOfficeApplication);
    // Also after a pass that failed: escalations do not wait for it.
    SendEscalationMails();
  } catch (...) {
    OrvaneUtilities::ReportHandledError("Error occured in Orvane.ClearDueQuestions.HandleSolveOnNoResponse");
  }
}

std::int32_t SolveOnNoResponseJob::SolveOnNoResponse(std::int32_t i_lBackend) {
  Pass pass;
  pass.backend = i_lBackend;
  try {
    m_bProspect = false;
    m_sRootPath = OrvaneUtilities::GetInstallDirectory();
    pass.connection = OrvaneUtilities::GetOrvaneConnection();
    ReadTimes(pass);
    // Whole seconds, as the date columns keep them.
    pass.now = automation::Now().WithoutFraction();
    VisitReminders(pass);
    OrvaneUtilities::CloseRecordset(pass.reminders);
    OrvaneUtilities::CloseConnection(pass.connection);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(pass.reminders);
    OrvaneUtilities::CloseRecordset(pass.question);
    OrvaneUtilities::CloseConnection(pass.connection);
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse");
  }
  return 0;
}

void SolveOnNoResponseJob::ReadTimes(Pass& pass) {
  const auto parameters = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  parameters->Open(
      "Select PARAM_NAME, PARAM_VALUE from PARAMETERS where "
      "PARAM_NAME = 'Conclusion_Time' or PARAM_NAME = 'Reminder_Time'",
      pass.connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified);
  for (; !parameters->Eof(); parameters->MoveNext()) {
    const std::string name = automation::ToText(parameters->Value("PARAM_NAME"));
    if (name == "Conclusion_Time") {
      pass.conclusionHours = automation::ToInt32(parameters->Value("PARAM_VALUE"));
    } else if (name == "Reminder_Time") {
      pass.reminderHours = automation::ToInt32(parameters->Value("PARAM_VALUE"));
    }
  }
  parameters->Close();
}

void SolveOnNoResponseJob::VisitReminders(Pass& pass) {
  ADODB::Statement sql = "SELECT * FROM REMINDER WHERE R_STATUS= ";
  sql += ADODB::SqlValue(kWaitingForCustomer);
  pass.reminders = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  // A question query finds this object open when the one before it met no question: then it fails, which ends
  // the pass.
  pass.question = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  pass.reminders->Open(sql, pass.connection, ADODB::CursorType::Dynamic, ADODB::LockType::Optimistic,
                       ADODB::kOptionsUnspecified);
  // Looked up once: fields stay valid while the set is open, and it may be a long walk.
  const ADODB::Field& id = pass.reminders->Fields().Item("Q_ID");
  const ADODB::Field& reminderDate = pass.reminders->Fields().Item("T1_DATE");
  const ADODB::Field& conclusionDate = pass.reminders->Fields().Item("T2_DATE");
  for (; !pass.reminders->Eof(); pass.reminders->MoveNext()) {
    m_bProspect = false;
    const std::int32_t questionId = automation::ToInt32(id.Value());
    if (!conclusionDate.Value().IsNull()) {
      if (IsDue(conclusionDate.Value(), pass.now)) Conclude(pass, questionId);
    } else if (IsDue(reminderDate.Value(), pass.now)) {
      Remind(pass, questionId);
    }
    automation::SafePoint();
  }
}

}  // namespace OrvaneProcess
