// A concluded question's call is closed in the ERP.
#include <cstdint>
#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "components/interfaces/backend_calls.hpp"
#include "jobs/solve/known_user.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/dictionary.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kGenerationA = 3;
constexpr std::int32_t kGenerationB = 8;
constexpr std::int16_t kCloseCall = 4;

// Values of parameter rows; a missing row leaves its value empty.
struct CallParameters {
  std::string problem;
  std::string activity;
  std::string solution;
  std::string creator;
};

CallParameters ReadCallParameters(ADODB::Recordset& parameters) {
  CallParameters values;
  for (; !parameters.Eof(); parameters.MoveNext()) {
    const std::string name = automation::ToText(parameters.Value("PARAM_NAME"));
    const std::string value = automation::ToTextOrEmpty(parameters.Value("PARAM_VALUE"));
    if (name == "ERP03_Problem") {
      values.problem = value;
    } else if (name == "ERP02_Activity") {
      values.activity = value;
    } else if (name == "ERP04_Solution") {
      values.solution = value;
    } else if (name == "CallCreator") {
      values.creator = value;
    }
  }
  return values;
}

// Null for a generation that has no calls.
OrvaneBackend::CallsPtr CreateCalls(std::int32_t backend) {
  if (backend == kGenerationA)
    return automation::CreateObject<OrvaneBackend::Calls>(OrvaneBackend::kCallsAProgId);
  if (backend == kGenerationB)
    return automation::CreateObject<OrvaneBackend::Calls>(OrvaneBackend::kCallsBProgId);
  return nullptr;
}

}  // namespace

void SolveOnNoResponseJob::ChangeERPStatus(std::string_view callNumber, std::int32_t backend,
                                           std::string_view originator, std::string_view directTo,
                                           std::string_view answerText) {
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr recordset;
  try {
    connection = OrvaneUtilities::GetOrvaneConnection();
    recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    recordset->Open(
        "Select PARAM_NAME,PARAM_VALUE from PARAMETERS Where "
        "PARAM_NAME IN ('ERP02_Activity','ERP03_Problem','ERP04_Solution','CallCreator') "
        "order By PARAM_NAME",
        connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified);
    const CallParameters parameters = ReadCallParameters(*recordset);
    OrvaneUtilities::CloseRecordset(recordset);
    OrvaneUtilities::CloseConnection(connection);

    const std::string engineer = automation::CurrentLocale().ToUpper(KnownUser(directTo)->EngineerCode());

    auto call = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
    call->Add("COMPONENT", KnownUser(originator)->BusinessPartnerNumber());
    call->Add("CALLNUMBER", callNumber);
    call->Add("ENGINEER", engineer);
    call->Add("ACTIONDONEBY", parameters.creator);
    call->Add("OPTION", kCloseCall);
    call->Add("PROBLEM", m_sReportedBy.empty() ? parameters.problem : m_sReportedBy);
    call->Add("SOLUTION", parameters.solution);
    call->Add("ACTIVITY", parameters.activity);
    call->Add("SOLUTIONTEXT", answerText);

    const OrvaneBackend::CallsPtr calls = CreateCalls(backend);
    if (!calls) throw automation::Error(automation::ErrorNumber::ObjectNotSet);
    calls->UpdateCall(m_sERPMessage, call);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(recordset);
    OrvaneUtilities::CloseConnection(connection);
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.ChangeERPStatus");
  }
}

}  // namespace OrvaneProcess
