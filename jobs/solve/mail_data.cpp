// The fields of a mail: from its template, its recipient and the case it is about.
#include <cstdint>
#include <cstdio>
#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/localized_text.hpp"
#include "common/parameters.hpp"
#include "common/text_helpers.hpp"
#include "jobs/solve/known_user.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::string_view kConclusionMail = "10";
constexpr int kShortDate = 1;

std::string UpperCaseHexadecimal(std::int32_t number) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%X", static_cast<unsigned int>(number));
  return digits;
}

// Hour, minute and second without leading zeros, as mails have always written them.
std::string PlainTime(const automation::DateTimeParts& parts) {
  return std::to_string(parts.hour) + ":" + std::to_string(parts.minute) + ":" + std::to_string(parts.second);
}

// When the question will be concluded unless its customer answers. The day is that of midnight plus the
// hours, the time of day is the present one.
std::string ConclusionNotice(automation::DateTime now, std::int32_t language) {
  const std::string hours = OrvaneUtilities::GetParamValue("Conclusion_Time");
  const automation::DateTime day = automation::AddHours(now.DatePart(), automation::ToInt32(hours));
  std::string notice = "\r\n\r\n" + OrvaneUtilities::GetI18NText("LBLQX3463", language);
  notice += OrvaneUtilities::GetDateText(day, kShortDate, language) + " " + PlainTime(now.Parts());
  notice += "\t  (" + OrvaneUtilities::GetI18NText("LBLQX3478", language) + hours + " ";
  return notice + OrvaneUtilities::GetI18NText("LBLQX3470", language) + ")\r\n";
}

}  // namespace

void SolveOnNoResponseJob::getMailData() {
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr mail;
  // Whatever fails below, no mail goes to the recipient of the one before.
  if (!m_bProspect) m_sRecipient.clear();
  try {
    const automation::DateTime now = automation::Now();
    connection = OrvaneUtilities::GetOrvaneConnection();
    mail = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    ADODB::Statement sql = "Select * from EMAIL where Mail_Id=";
    sql += ADODB::SqlValue(m_sMailID);
    mail->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
               ADODB::kOptionsUnspecified);
    if (!mail->Eof()) readTemplate(*mail);
    OrvaneUtilities::CloseRecordset(mail);
    OrvaneUtilities::CloseConnection(connection);

    const std::int32_t language = readRecipient();
    m_sGreeting = GetSalutation(m_sOriginator);
    appendHyperlink();
    if (m_sMailID != kConclusionMail) m_sBody += ConclusionNotice(now, language);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(mail);
    OrvaneUtilities::CloseConnection(connection);
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.getMailData");
  }
}

void SolveOnNoResponseJob::readTemplate(ADODB::Recordset& mail) {
  const automation::Variant& html = mail.Value("Mail_HTML_File");
  m_bHTMLMail = !html.IsNull() && automation::ToBoolean(html);
  m_sBody = GetDataLabelDesc(mail.Value("MAIL_BODY"), m_lLanguageID);
  m_sFrom = automation::ToTextOrEmpty(mail.Value("Mail_From"));
  m_sSubject = GetDataLabelDesc(mail.Value("Mail_Subject"), m_lLanguageID) + " (" + m_sCaseID + ") ";
  m_sXSLPath = automation::ToTextOrEmpty(mail.Value("Mail_Path_XSL"));
  m_sHyperlink = automation::ToTextOrEmpty(mail.Value("Mail_Hyperlink"));
}

std::int32_t SolveOnNoResponseJob::readRecipient() {
  if (m_bProspect) return automation::ToInt32(OrvaneUtilities::GetDefaultLanguage());
  const VnMembership::UserPtr user = KnownUser(m_sOriginator);
  m_sRecipient = user->EMailAddress();
  return user->LanguageID();
}

void SolveOnNoResponseJob::appendHyperlink() {
  // The digit 0 after the hexadecimal id belongs to the web site's link format.
  m_sHyperlink += "s.asp?Q=" + UpperCaseHexadecimal(automation::ToInt32(m_sCaseID)) + "0\r\n";
  m_sBody += "\r\n\r\n" + m_sHyperlink;
}

}  // namespace OrvaneProcess
