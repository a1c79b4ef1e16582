#include "jobs/cleanup/clean_up.hpp"

#include <utility>

#include "common/connections.hpp"
#include "common/text_helpers.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"
#include "platform/automation/swallowed_error.hpp"
#include "platform/base/text.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kMinutesPerHour = 60;

std::int32_t MinutesOfHours(std::int32_t hours) {
  return automation::ToInt32(std::int64_t{hours} * kMinutesPerHour);
}

template <class T>
T& Existing(const std::shared_ptr<T>& object) {
  if (!object) throw automation::Error(automation::ErrorNumber::ObjectNotSet);
  return *object;
}

}  // namespace

CleanUp::CleanUp(TimeRendering renderItemTime) : renderItemTime_(std::move(renderItemTime)) {}

Scripting::FileSystemObject& CleanUp::FileSystem() const {
  return Existing(m_oFileSystem);
}
ADODB::Connection& CleanUp::Database() const {
  return Existing(m_cnOrvane);
}
ADODB::Recordset& CleanUp::Rows() const {
  return Existing(m_rsRows);
}

void CleanUp::Run() {
  try {
    StartRun();
  } catch (...) {
    // The service host must outlive whatever happens to one run; what can be reported has been.
    automation::ReportSwallowed();
  }
}

void CleanUp::StartRun() {
  try {
    Initialize();
    CleanupFilesandRecords();
    Cleanupobjects();
  } catch (...) {
    Cleanupobjects();
    ReportError("Orvane.Cleanup.StartRun");
  }
}

void CleanUp::Initialize() {
  m_rsRows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  m_cnOrvane = OrvaneUtilities::GetOrvaneConnection();
  m_oFileSystem = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
}

void CleanUp::CleanupFilesandRecords() {
  try {
    m_bWebFarm = false;
    m_lKeepHours = 0;
    m_lKeepMinutes = 0;
    m_sDataFileRelativePath.clear();
    m_sFTPPath.clear();

    WriteJobLog(1);
    m_vRunStart = OrvaneUtilities::GetTimestampText();

    Rows().Open(
        "Select PARAM_NAME, PARAM_VALUE from PARAMETERS where "
        "PARAM_NAME IN ('KeepTemporaryFiles','FTPPath', "
        "'Webfarm Implemented', 'DataFileRelativePath') ",
        m_cnOrvane, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified);
    if (Rows().Eof()) {
      Rows().Close();
      WriteJobLog(2);
      return;
    }
    ReadParameters();
    Rows().Close();

    m_sDataRoot = OrvaneUtilities::ReplaceAll(OrvaneUtilities::GetInstallDirectory(), "/", "\\") + "\\" +
                  m_sDataFileRelativePath + "\\";

    RunSweeps();

    WriteJobLog(2);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(m_rsRows);
    ReportError("OrvProcess.cleanup.CleanupFilesandRecords", automation::PendingError().Description());
  }
}

void CleanUp::RunSweeps() {
  using Sweep = void (CleanUp::*)();
  constexpr Sweep kAttachmentFolders = &CleanUp::DeleteSRAttachmentFolders;
  for (const Sweep sweep :
       {&CleanUp::DeleteAnalysisFiles, &CleanUp::DeleteArchiveFiles, &CleanUp::DeleteChatSession,
        &CleanUp::DeletedispatchXmlFiles, &CleanUp::DeleteHTMLFiles, &CleanUp::DeletePreviews,
        &CleanUp::DeleteSRAttchmentsFilesWithzerostatus, &CleanUp::DeleteSRAttchmentsFilesWithotherstatus,
        kAttachmentFolders, &CleanUp::DeleteTempAttachmentsXMLFiles, &CleanUp::DeleteTroubleShootingFiles}) {
    if (sweep == kAttachmentFolders && !m_bWebFarm) continue;
    (this->*sweep)();
    automation::SafePoint();
  }
}

void CleanUp::ReadParameters() {
  for (; !Rows().Eof(); Rows().MoveNext()) {
    const std::string fullName = automation::ToText(Rows().Value("PARAM_NAME"));
    const std::string_view name = base::Trimmed(fullName, " ");
    const automation::Variant& value = Rows().Value("PARAM_VALUE");
    if (name == "DataFileRelativePath") {
      m_sDataFileRelativePath = automation::ToText(value);
    } else if (name == "KeepTemporaryFiles") {
      m_lKeepHours = automation::ToInt32(value);
      m_lKeepMinutes = MinutesOfHours(m_lKeepHours);
    } else if (name == "Webfarm Implemented") {
      m_bWebFarm = automation::ToBoolean(value);
    } else if (name == "FTPPath") {
      m_sFTPPath = automation::ToText(value);
    }
  }
}

void CleanUp::DeletePreviews() {
  try {
    Database().Execute("DELETE FROM PREVIEW ", nullptr, ADODB::kExecuteNoRecords);
  } catch (...) {
    ReportError("ORVPROCESS.CLEANUP.DELETEPREVIEWS", automation::PendingError().Description());
  }
}

void CleanUp::Cleanupobjects() {
  m_rsRows.reset();
  OrvaneUtilities::CloseConnection(m_cnOrvane);
  m_cnOrvane.reset();
  m_oCurrentFile.reset();
  m_oFileSystem.reset();
  m_oCurrentFolder.reset();
}

}  // namespace OrvaneProcess
