// A customer who did not answer is reminded, and the conclusion is scheduled.
#include <cstdint>
#include <limits>

#include "jobs/solve/known_user.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kReminderMail = 8;

std::int32_t Subtract(std::int32_t left, std::int32_t right) {
  const std::int64_t difference = std::int64_t{left} - std::int64_t{right};
  if (difference < std::numeric_limits<std::int32_t>::min() ||
      difference > std::numeric_limits<std::int32_t>::max()) {
    throw automation::Error(automation::ErrorNumber::Overflow);
  }
  return static_cast<std::int32_t>(difference);
}

}  // namespace

void SolveOnNoResponseJob::Remind(Pass& pass, std::int32_t questionId) {
  ADODB::Recordset& question = *pass.question;
  ADODB::Statement sql =
      "Select Q_ORIGINATOR,PROSPECT,EMAILID from QUESTIONS "
      "where Q_ID = ";
  sql += ADODB::SqlValue(questionId);
  question.Open(sql, pass.connection, ADODB::CursorType::Static, ADODB::LockType::ReadOnly,
                ADODB::kOptionsUnspecified);
  if (question.Bof() && question.Eof()) return;  // the set stays open: see VisitReminders

  m_sOriginator = automation::ToText(question.Value("Q_ORIGINATOR"));
  m_lLanguageID = KnownUser(m_sOriginator)->LanguageID();
  if (const automation::Variant& prospect = question.Value("PROSPECT");
      !prospect.IsNull() && automation::ToBoolean(prospect)) {
    m_bProspect = true;
    m_sRecipient = automation::ToTextOrEmpty(question.Value("EMAILID"));
  }
  question.Close();

  // From the moment of the reminder, not from the time it was due.
  pass.reminders->SetValue(
      "T2_DATE", automation::AddHours(pass.now, Subtract(pass.conclusionHours, pass.reminderHours)));
  pass.reminders->Update();
  SendMail(kReminderMail, questionId);
}

}  // namespace OrvaneProcess
