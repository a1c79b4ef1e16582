// One mail from its template to its delivery.
#include <cstdint>
#include <string>

#include "common/error_reporting.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {

void SolveOnNoResponseJob::SendMail(std::int32_t mailId, std::int32_t questionId) {
  try {
    m_sCaseID = std::to_string(questionId);
    m_sMailID = std::to_string(mailId);
    m_dtMailTime = automation::Now();
    getMailData();
    if (m_bHTMLMail) {
      m_oMailDoc.reset();  // no customer gets a page made of another's document
      OpenQuestionRS();
      formSRDetailsNodes();
      formCustomerDetailsNodes();
      if (m_lBackOfficeApplication != 0) formInstalledBaseNodes();
      CloseQuestionRS();
      CreateHTMLFile();
    }
    sendActualMail();
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.SendMail");
  }
}

}  // namespace OrvaneProcess
