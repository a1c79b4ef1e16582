// A question whose customer did not answer is concluded.
#include <cstdint>
#include <string>

#include "common/text_helpers.hpp"
#include "common/transaction_log.hpp"
#include "components/interfaces/service_request.hpp"
#include "jobs/solve/known_user.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kConcluded = 160;
constexpr std::int32_t kConclusionMail = 10;

bool HasCall(const automation::Variant& call) {
  if (call.IsNull()) return false;
  const std::string text = automation::ToText(call);
  return text != "<NULL>" && !text.empty();
}

}  // namespace

void SolveOnNoResponseJob::Conclude(Pass& pass, std::int32_t questionId) {
  ADODB::Recordset& question = *pass.question;
  ADODB::Statement sql =
      "Select Q_REPORTED,Q_ORIGINATOR,D_DIRECT_TO,Q_STATUS, "
      "PROSPECT,EMAILID,CENTER,Q_CALL,A_TEXT from QUESTIONS "
      "where Q_ID = ";
  sql += ADODB::SqlValue(questionId);
  question.Open(sql, pass.connection, ADODB::CursorType::Dynamic, ADODB::LockType::Optimistic,
                ADODB::kOptionsUnspecified);
  if (question.Eof()) return;  // the set stays open: see VisitReminders

  m_sReportedBy = automation::ToTextOrEmpty(question.Value("Q_REPORTED"));
  m_sOriginator = automation::ToText(question.Value("Q_ORIGINATOR"));
  m_lLanguageID = KnownUser(m_sOriginator)->LanguageID();
  const std::string directTo = automation::ToTextOrEmpty(question.Value("D_DIRECT_TO"));
  question.SetValue("Q_STATUS", kConcluded);
  std::string email;
  if (const automation::Variant& prospect = question.Value("PROSPECT");
      !prospect.IsNull() && automation::ToBoolean(prospect)) {
    m_bProspect = true;
    email = automation::ToTextOrEmpty(question.Value("EMAILID"));
  }
  question.Update();

  OrvaneUtilities::CreateTransactionLog(questionId, "LBLQX3479", std::to_string(kConcluded),
                                        automation::ToInt32(question.Value("CENTER")), pass.now, "LBLQX3480",
                                        "", 0);
  if (const automation::Variant call = question.Value("Q_CALL"); HasCall(call)) {
    const std::string answers = automation::ToTextOrEmpty(question.Value("A_TEXT"));
    ChangeERPStatus(automation::ToText(call), pass.backend, m_sOriginator, directTo,
                    OrvaneUtilities::ReplaceAll(answers, kAnswerSeparator, ""));
  }
  question.Close();

  if (m_bProspect) {
    automation::CreateObject<OrvServiceRequest::ProspectState>(OrvServiceRequest::kProspectStateClass)
        ->QuestionConcluded(email, "", true);
    m_sRecipient = email;
  }
  automation::CreateObject<OrvServiceRequest::QuestionState>(OrvServiceRequest::kQuestionStateClass)
      ->Concluded(questionId);
  SendMail(kConclusionMail, questionId);
  pass.reminders->Delete(ADODB::Affect::Current);
}

}  // namespace OrvaneProcess
