// The sweeps that empty the folders of temporary files.
//
// Only what lies directly in a folder is visited. A missing folder is no error. The remote deletion of a
// sweep follows its loop, so a failure in the loop keeps it from happening.
#include "jobs/cleanup/clean_up.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/automation/safe_point.hpp"

namespace OrvaneProcess {

bool CleanUp::AgeTest(automation::DateTime lastAccessed) {
  m_vLastFileTime = renderItemTime_(lastAccessed);
  return AgeTestPasses(m_lKeepMinutes, m_vLastFileTime, m_vRunStart);
}

bool CleanUp::MonthTest(automation::DateTime lastAccessed) {
  m_vLastFileTime = renderItemTime_(lastAccessed);
  return MonthTestPasses(m_lKeepMinutes, m_vLastFileTime, m_vRunStart);
}

void CleanUp::DeleteFilesByAge() {
  if (!FileSystem().FolderExists(m_sCurrentFolderPath)) return;
  m_oCurrentFolder = FileSystem().GetFolder(m_sCurrentFolderPath);
  for (const Scripting::FilePtr& file : m_oCurrentFolder->Files()) {
    m_oCurrentFile = file;
    if (AgeTest(file->DateLastAccessed()))
      FileSystem().DeleteFile(m_sCurrentFolderPath + file->Name(), false);
  }
}

void CleanUp::DeleteFilesByMonth(const Scripting::Folder& folder, const std::string& path) {
  for (const Scripting::FilePtr& file : AttachedFiles(folder)) {
    m_oCurrentFile = file;
    if (MonthTest(file->DateLastAccessed())) FileSystem().DeleteFile(path + file->Name(), false);
  }
}

void CleanUp::DeleteSharedFilesByAge(OrvCommonMTS::FolderKind kind) {
  if (!m_bWebFarm) return;
  automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId)
      ->DeleteAgedFiles(m_sFTPPath, m_lKeepMinutes, kind);
}

void CleanUp::DeletedispatchXmlFiles() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "DispatchFiles\\";
    DeleteFilesByAge();
    DeleteSharedFilesByAge(OrvCommonMTS::FolderKind::Dispatch);
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeletedispatchXmlFiles", automation::PendingError().Description());
  }
}

void CleanUp::DeleteTempAttachmentsXMLFiles() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "tempAttachments\\";
    DeleteFilesByAge();
    DeleteSharedFilesByAge(OrvCommonMTS::FolderKind::TempAttachments);
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles", automation::PendingError().Description());
  }
}

void CleanUp::DeleteAnalysisFiles() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "ANALYSIS\\";
    DeleteFilesByAge();
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeleteAnalysisFiles", automation::PendingError().Description());
  }
}

// Mails are rendered into this folder and sent at once: whatever is found here is left over, however young.
void CleanUp::DeleteHTMLFiles() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "HTML\\";
    if (!FileSystem().FolderExists(m_sCurrentFolderPath)) return;
    m_oCurrentFolder = FileSystem().GetFolder(m_sCurrentFolderPath);
    for (const Scripting::FilePtr& file : m_oCurrentFolder->Files()) {
      m_oCurrentFile = file;
      FileSystem().DeleteFile(m_sCurrentFolderPath + file->Name(), false);
      automation::SafePoint();
    }
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeleteHTMLFiles", automation::PendingError().Description());
  }
}

void CleanUp::DeleteArchiveFiles() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "ARCHIVES\\";
    DeleteFilesByAge();
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeleteArchiveFiles", automation::PendingError().Description());
  }
}

void CleanUp::DeleteTroubleShootingFiles() {
  try {
    if (!m_bWebFarm) return;
    for (const char* folder :
         {"EndUser\\Templates\\", "EndUser\\Trees\\", "Manager\\Templates\\", "Manager\\Trees\\"}) {
      m_sCurrentFolderPath = m_sDataRoot + "TS\\" + folder;
      DeleteFilesByAge();
    }
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeleteTroubleShootingFiles", automation::PendingError().Description());
  }
}

void CleanUp::DeleteSRAttachmentFolders() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "SRATTACHMENTS\\";
    if (!FileSystem().FolderExists(m_sCurrentFolderPath)) return;
    for (const Scripting::FolderPtr& folder : FileSystem().GetFolder(m_sCurrentFolderPath)->SubFolders()) {
      m_oCurrentFolder = folder;
      const std::string path = m_sDataRoot + "SRATTACHMENTS\\" + folder->Name();
      if (AgeTest(folder->DateLastAccessed()) && FileSystem().FolderExists(path)) {
        FileSystem().DeleteFolder(path, false);
      } else {
        DeleteFilesByMonth(*folder, m_sCurrentFolderPath + folder->Name() + "\\");
      }
    }
  } catch (...) {
    // The archive sweep's source: operators know the failures of both under the one name.
    ReportError("ORVProcess.cleanup.DeleteArchiveFiles", automation::PendingError().Description());
  }
}

void CleanUp::DeleteChatFileswithoutcomparingDatabase() {
  try {
    m_sCurrentFolderPath = m_sDataRoot + "CHAT\\";
    DeleteFilesByAge();
    DeleteSharedFilesByAge(OrvCommonMTS::FolderKind::Chat);
  } catch (...) {
    ReportError("ORVProcess.cleanup.DeleteChatFileswithoutcomparingDatabase",
                automation::PendingError().Description());
  }
}

}  // namespace OrvaneProcess
