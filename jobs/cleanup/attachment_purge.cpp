// The purges of service-request attachments: files, folders and rows older than the keep period.
#include <optional>
#include <string>
#include <utility>

#include "common/connections.hpp"
#include "common/text_helpers.hpp"
#include "jobs/cleanup/clean_up.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/locale.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kAttachedToQuestion = 1;
constexpr std::int32_t kAttachedToAnswer = 3;

// What a chain of conditions ends with: "or ".
constexpr std::size_t kConnectorLength = 3;

// As many empty texts as the record set has rows.
automation::VariantArray EmptyTexts(std::int64_t count) {
  return automation::VariantArray(static_cast<std::size_t>(count), automation::Variant(""));
}

// A file of a question or an answer, as its row in DATAFILES describes it.
struct Attachment {
  std::int32_t type;
  std::string key;
  std::string fileName;
  std::string folder;  // "1234Q" for a question's, "1234A" for an answer's
};

std::optional<Attachment> AttachmentOf(ADODB::Recordset& row) {
  const std::int32_t type = automation::ToInt32(row.Value("FILETYPE"));
  if (type != kAttachedToAnswer && type != kAttachedToQuestion) return std::nullopt;
  std::string key = automation::ToTextOrEmpty(row.Value("ID1"));
  std::string folder = key + (type == kAttachedToAnswer ? "A" : "Q");
  return Attachment{type, std::move(key), automation::ToTextOrEmpty(row.Value("FILENAME")),
                    std::move(folder)};
}

// The condition that finds the attachment's row, and the connector to the next one.
ADODB::Statement IsRowOf(const Attachment& attachment) {
  ADODB::Statement condition = " (ID1 = ";
  condition += ADODB::SqlValue(attachment.key);
  condition += " and FILENAME = '";
  condition += ADODB::SqlValue(attachment.fileName);
  condition += "' and  FILETYPE = ";
  condition += ADODB::SqlValue(attachment.type);
  condition += " ) or ";
  return condition;
}

}  // namespace

std::string CleanUp::CutoffLiteral() const {
  return OrvaneUtilities::ToOdbcTimestamp(
      automation::AddHours(automation::ToDateTime(m_vRunStart), -static_cast<std::int64_t>(m_lKeepHours)));
}

void CleanUp::DeleteSharedItems(const automation::VariantArray& names, OrvCommonMTS::FolderKind kind) {
  automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId)
      ->DeleteListedItems(m_sFTPPath, names, kind);
}

Scripting::FileList CleanUp::AttachedFiles(const Scripting::Folder& folder) {
  return folder.IsLink() ? Scripting::FileList() : folder.Files();
}

bool CleanUp::FindRows(const ADODB::Statement& query) {
  Rows().Open(query, m_cnOrvane, ADODB::CursorType::Static, ADODB::LockType::ReadOnly,
              ADODB::kOptionsUnspecified);
  if (!Rows().Eof()) return true;
  Rows().Close();
  return false;
}

void CleanUp::DeleteSRAttchmentsFilesWithzerostatus() {
  try {
    ADODB::Statement query = "SELECT * FROM QUESTIONS WHERE Q_STATUS = 0 AND Q_DATE < ";
    query += ADODB::SqlFragment(CutoffLiteral());
    if (!FindRows(query)) return;

    m_sCurrentFolderPath = m_sDataRoot + "SRATTACHMENTS\\";
    automation::VariantArray names = EmptyTexts(Rows().RecordCount());
    std::size_t count = 0;
    ADODB::Statement questions;
    ADODB::Statement files;
    for (; !Rows().Eof(); Rows().MoveNext()) {
      const std::string key = automation::ToTextOrEmpty(Rows().Value("Q_ID"));
      const std::string folder = m_sCurrentFolderPath + key + "Q";
      questions += " (Q_ID = ";
      questions += ADODB::SqlValue(key);
      questions += " AND Q_STATUS=0 ) or ";
      files += " (ID1 = ";
      files += ADODB::SqlValue(key);
      files += " AND FILETYPE =1) or ";
      names.at(count++) = automation::ToTextOrEmpty(Rows().Value("Q_Id")) + "Q";
      if (FileSystem().FolderExists(folder)) FileSystem().DeleteFolder(folder, false);
    }
    Rows().Close();

    if (m_bWebFarm) {
      DeleteSharedItems(names, OrvCommonMTS::FolderKind::QuestionFolders);
      return;
    }
    if (questions.IsEmpty() && files.IsEmpty()) return;
    questions.CutLast(kConnectorLength);
    Database().Execute("DELETE FROM QUESTIONS WHERE " + questions, nullptr, ADODB::kExecuteNoRecords);
    files.CutLast(kConnectorLength);
    Database().Execute("DELETE FROM DATAFILES WHERE " + files, nullptr, ADODB::kExecuteNoRecords);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(m_rsRows);
    ReportError("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus",
                automation::PendingError().Description());
  }
}

bool CleanUp::DeleteAttachedFile(const std::string& folder, const std::string& fileName) {
  if (!FileSystem().FolderExists(folder)) return true;
  bool alone = true;
  const automation::Locale& locale = automation::CurrentLocale();
  m_oCurrentFolder = FileSystem().GetFolder(folder);
  for (const Scripting::FilePtr& file : AttachedFiles(*m_oCurrentFolder)) {
    m_oCurrentFile = file;
    if (locale.ToLower(fileName) == locale.ToLower(file->Name())) {
      FileSystem().DeleteFile(folder + file->Name(), false);
    } else {
      alone = false;
    }
  }
  return alone;
}

void CleanUp::DeleteSRAttchmentsFilesWithotherstatus() {
  try {
    ADODB::Statement query = "SELECT ID1, FILENAME, FILETYPE FROM DATAFILES WHERE LASTUPLOAD < ";
    query += ADODB::SqlFragment(CutoffLiteral());
    query += " AND FILETYPE IN (3, 1)";
    if (!FindRows(query)) return;

    m_sCurrentFolderPath = m_sDataRoot + "SRATTACHMENTS\\";
    automation::VariantArray names = EmptyTexts(Rows().RecordCount());
    std::size_t count = 0;
    ADODB::Statement conditions;
    // Set once for all rows: after the first folder that holds any other file, no folder is removed in this
    // run.
    bool onlyMatchingFilesSeen = true;
    for (; !Rows().Eof(); Rows().MoveNext()) {
      const std::optional<Attachment> attachment = AttachmentOf(Rows());
      if (!attachment) continue;
      conditions += IsRowOf(*attachment);
      names.at(count++) = attachment->folder + "\\" + attachment->fileName;
      const std::string folder = m_sCurrentFolderPath + attachment->folder;
      if (!DeleteAttachedFile(folder + "\\", attachment->fileName)) onlyMatchingFilesSeen = false;
      // Also for a folder that does not exist: its deletion fails and ends the purge.
      if (onlyMatchingFilesSeen) FileSystem().DeleteFolder(folder, false);
    }
    Rows().Close();

    if (!m_bWebFarm) {
      if (conditions.IsEmpty()) return;
      conditions.CutLast(kConnectorLength);
      Database().Execute("DELETE FROM DATAFILES WHERE " + conditions, nullptr, ADODB::kExecuteNoRecords);
      return;
    }
    if (count > 0) DeleteSharedItems(names, OrvCommonMTS::FolderKind::OldAttachmentFiles);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(m_rsRows);
    ReportError("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus",
                automation::PendingError().Description());
  }
}

}  // namespace OrvaneProcess
