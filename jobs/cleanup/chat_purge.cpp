// The purge of chat transcripts: a chat file carries the name of its session, and goes when the session is
// unknown.
#include "common/connections.hpp"
#include "jobs/cleanup/clean_up.hpp"
#include "platform/automation/error.hpp"

namespace OrvaneProcess {

void CleanUp::DeleteChatSession() {
  try {
    Rows().Open("SELECT SESSIONID FROM CHATSESSIONS", m_cnOrvane, ADODB::CursorType::Dynamic,
                ADODB::LockType::Pessimistic, ADODB::kOptionsUnspecified);
    if (Rows().Bof() && Rows().Eof()) {
      Rows().Close();
      DeleteChatFileswithoutcomparingDatabase();
      return;
    }

    Rows().MoveFirst();
    m_sCurrentFolderPath = m_sDataRoot + "chat\\";
    m_oCurrentFolder = FileSystem().GetFolder(m_sCurrentFolderPath);
    const Scripting::FileList files = m_oCurrentFolder->Files();
    // One slot for every file: those that are not needed stay empty texts.
    automation::VariantArray deleted(files.size(), automation::Variant(""));
    std::size_t count = 0;
    for (const Scripting::FilePtr& file : files) {
      m_oCurrentFile = file;
      const std::string name = file->Name();
      Rows().Find("SESSIONID='" + name + "'");
      if (Rows().Eof()) {
        deleted.at(count++) = name;
        FileSystem().DeleteFile(m_sCurrentFolderPath + name, false);
      }
      Rows().MoveFirst();
    }
    Rows().Close();
    if (!m_bWebFarm) return;

    if (count > 0) DeleteSharedItems(deleted, OrvCommonMTS::FolderKind::Chat);
    m_sCurrentFolderPath = m_sDataRoot + "CHAT\\";
    DeleteFilesByAge();
  } catch (...) {
    OrvaneUtilities::CloseRecordset(m_rsRows);
    ReportError("Orvprocess.cleanup.DeleteChatSession", automation::PendingError().Description());
  }
}

}  // namespace OrvaneProcess
