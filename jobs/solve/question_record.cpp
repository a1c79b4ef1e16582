// The question that a mail is about, and where the files of questions lie.
#include <string>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/parameters.hpp"
#include "common/text_helpers.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {

void SolveOnNoResponseJob::OpenQuestionRS() {
  try {
    m_cnQuestion = OrvaneUtilities::GetOrvaneConnection();
    m_rsQuestion = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    ADODB::Statement sql =
        "Select Q_PRODUCTCAT,PRODUCTID,Q_CATEGORY,Q_DESC,Q_STATUS,Q_SITE, "
        "Q_Product,Q_OBJECT,Q_OBJECTNR,Q_REPORTED,Q_PRIORITY,BP_NUMBER "
        " from QUESTIONS where Q_ID = ";
    sql += ADODB::SqlValue(m_sCaseID);
    m_rsQuestion->Open(sql, m_cnQuestion, ADODB::CursorType::Static, ADODB::LockType::ReadOnly,
                       ADODB::kOptionsUnspecified);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(m_rsQuestion);
    OrvaneUtilities::CloseConnection(m_cnQuestion);
    m_rsQuestion.reset();
    m_cnQuestion.reset();
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.OpenQuestionRS");
  }
}

void SolveOnNoResponseJob::CloseQuestionRS() {
  try {
    OrvaneUtilities::CloseRecordset(m_rsQuestion);
    OrvaneUtilities::CloseConnection(m_cnQuestion);
    m_rsQuestion.reset();
    m_cnQuestion.reset();
  } catch (...) {
    m_rsQuestion.reset();
    m_cnQuestion.reset();
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.CloseQuestionRS");
  }
}

std::string SolveOnNoResponseJob::GetAttachmentDirectoryName() {
  try {
    const std::string root = OrvaneUtilities::ReplaceAll(OrvaneUtilities::GetInstallDirectory(), "/", "\\");
    return root + "\\" +
           OrvaneUtilities::NormalizeFolderPath(OrvaneUtilities::GetParamValue("DataFileRelativePath"));
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.GetAttachmentDirectoryName");
    return {};
  }
}

}  // namespace OrvaneProcess
