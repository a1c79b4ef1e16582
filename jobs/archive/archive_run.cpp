#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/text_helpers.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"

namespace OrvaneProcess {
namespace {

const std::string kRuler(104, '*');

}  // namespace

void Archive::Run() {
  try {
    try {
      archiveQuestions("NTService", "Archiving done by NT Service");
    } catch (...) {
      OrvaneUtilities::ReportError("OrvaneProcess.Archive.archiveQuestions");
    }
  } catch (...) {
    // The reporter raises the error again; a service host never sees it.
  }
}

void Archive::archiveQuestions(const std::string& i_sCalledFrom, const std::string& i_sComment) {
  m_bFolderFailed = false;
  m_sCalledFrom = i_sCalledFrom;
  m_sComment = i_sComment;
  m_oFAQCategories = m_oProductCategories = m_oProducts = m_oStatuses = nullptr;

  const auto close = [this] {
    log(std::string(archive_log::kEnded));
    log(kRuler);
  };
  m_sLogRoot.clear();
  try {
    m_oFileSystem = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
    m_sLogRoot = m_oFileSystem->GetParentFolderName(getRootPath());
    m_sAttachmentsDirectory = getFAQParameter("ATTACHMENTSDIRECTORY");
    m_cnConnection = OrvaneUtilities::GetOrvaneConnection();
    log(kRuler);
    log(std::string(archive_log::kStartedBy) + m_sCalledFrom);
    archiveCustomers();
    close();
  } catch (...) {
    const std::exception_ptr pending = std::current_exception();
    try {
      if (!m_sLogRoot.empty()) close();
    } catch (...) {
      // The error that ended the run is the one to tell about.
    }
    releaseObjects();
    std::rethrow_exception(pending);
  }
  releaseObjects();
}

void Archive::releaseObjects() {
  OrvaneUtilities::CloseConnection(m_cnConnection);
  releaseObject(m_cnConnection);
  releaseObject(m_rsQuestions);
  releaseObject(m_rsTransactions);
  releaseObject(m_oFileSystem);
}

void Archive::archiveCustomers() {
  m_sArchiveLocation = getRootPath() + "\\" +
                       OrvaneUtilities::NormalizeFolderPath(getParameter("DataFileRelativePath")) +
                       "\\Archives";
  if (m_sArchiveLocation.empty()) {
    log(std::string(archive_log::kNoLocation));
    log(std::string(archive_log::kProcessFailed));
    return;
  }
  const std::string archiveAfter = getParameter("ArchiveAfter");
  if (!automation::IsNumeric(archiveAfter)) {
    log(std::string(archive_log::kNoArchiveAfter));
    log(std::string(archive_log::kProcessFailed));
    return;
  }
  m_lArchiveAfterDays = automation::ToInt32(archiveAfter);
  m_sRunTime = OrvaneUtilities::GetTimestampText();

  auto customers = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  std::int64_t count = 0;
  std::vector<std::vector<automation::Variant>> rows;
  try {
    customers->Open(selectionOfCustomers(), m_cnConnection, ADODB::CursorType::Keyset,
                    ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified);
    if (!customers->Eof()) {
      count = customers->RecordCount();
      rows = customers->GetRows();
      loadLookups();
    }
  } catch (...) {
    OrvaneUtilities::CloseRecordset(customers);
    throw;
  }
  OrvaneUtilities::CloseRecordset(customers);
  if (count < 1) {
    log(std::string(archive_log::kNothingQualified));
    return;
  }
  loadLookups();

  const std::vector<automation::Variant>& originators = rows[1];
  const std::vector<automation::Variant>& emailIDs = rows[2];
  const std::vector<automation::Variant>& prospects = rows[3];
  for (std::size_t row = 0; row < originators.size(); ++row) {
    const bool prospect = !prospects[row].IsNull() && automation::ToBoolean(prospects[row]);
    if (prospect) {
      archiveOriginator("Prospect", automation::ToTextOrEmpty(emailIDs[row]));
    } else {
      archiveOriginator(automation::ToTextOrEmpty(originators[row]), {});
    }
    automation::SafePoint();
  }
}

ADODB::Statement Archive::selectionOfCustomers() const {
  ADODB::Statement selection =
      "select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
      "QUESTIONHISTORY where "
      "dateadd(d,";
  selection += ADODB::SqlValue(m_lArchiveAfterDays);
  selection += ",ENDSTATUSTIME)<";
  selection += ADODB::SqlFragment(OrvaneUtilities::ToOdbcTimestamp(automation::ToDateTime(m_sRunTime)));
  return selection;
}

}  // namespace OrvaneProcess
