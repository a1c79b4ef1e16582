// Deletes the suite's stale temporary files and rows: "OrvaneProcess.CleanUp".
//
// One object serves one run. The sweeps follow each other in a fixed order; a failure inside one is written
// to the suite's error log and ends that sweep only. Sources, log texts and statements stand beside the
// procedure that uses them, exactly as operators and databases know them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/job.hpp"
#include "jobs/cleanup/item_times.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/date_time.hpp"
#include "platform/automation/variant.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {

class CleanUp : public CleanUpService {
 public:
  // Renders the time of a file or folder. The default, RenderItemTime, raises at every call; another one
  // shows the comparison rules at work.
  using TimeRendering = std::function<automation::Variant(automation::DateTime)>;
  explicit CleanUp(TimeRendering renderItemTime = RenderItemTime);

  // One complete run. Always returns normally.
  void Run() override;

  // Creates the record set, the connection and the file-system object of a run.
  void Initialize() override;

  // The job proper: settings, then every sweep, between the two lines of the run log. A failure is reported
  // and ends the job; only a failure of the reporting itself gets out.
  void CleanupFilesandRecords() override;

  // Deletes the chat files without a session. Needs a run's settings.
  void DeleteChatSession() override;

  // Releases what Initialize created; harmless when there is nothing to release.
  void Cleanupobjects() override;

 private:
  void StartRun();
  void DeletePreviews();
  void ReportError(std::string_view source,
                   const std::optional<std::string>& additionalInformation = std::nullopt);
  void WriteJobLog(std::int16_t kind);
  void DeletedispatchXmlFiles();
  void DeleteTempAttachmentsXMLFiles();
  void DeleteAnalysisFiles();
  void DeleteHTMLFiles();
  void DeleteArchiveFiles();
  void DeleteSRAttchmentsFilesWithzerostatus();
  void DeleteTroubleShootingFiles();
  void DeleteSRAttchmentsFilesWithotherstatus();
  void DeleteSRAttachmentFolders();
  void DeleteChatFileswithoutcomparingDatabase();

  void ReadParameters();
  void RunSweeps();

  // The run's objects; 91 before Initialize or after Cleanupobjects.
  Scripting::FileSystemObject& FileSystem() const;
  ADODB::Connection& Database() const;
  ADODB::Recordset& Rows() const;

  bool AgeTest(automation::DateTime lastAccessed);
  bool MonthTest(automation::DateTime lastAccessed);
  // Opens the run's record set, to be read; false, and closed again, when it has no row.
  bool FindRows(const ADODB::Statement& query);
  // The files directly in the folder of a question's attachments. A link in its place holds none of them:
  // what lies behind it is not the suite's, whatever its name.
  static Scripting::FileList AttachedFiles(const Scripting::Folder& folder);
  // Deletes the files directly in the current folder path that pass the age test, or the month test.
  void DeleteFilesByAge();
  void DeleteFilesByMonth(const Scripting::Folder& folder, const std::string& path);
  void DeleteSharedFilesByAge(OrvCommonMTS::FolderKind kind);
  // Deletes the file, in whatever case its name is written. False when the folder holds any other.
  bool DeleteAttachedFile(const std::string& folder, const std::string& fileName);
  void DeleteSharedItems(const automation::VariantArray& names, OrvCommonMTS::FolderKind kind);
  // The run start moved back by the keep hours, as a literal for SQL.
  std::string CutoffLiteral() const;

  TimeRendering renderItemTime_;

  std::string m_sDataRoot;
  std::string m_sDataFileRelativePath;
  std::string m_sFTPPath;
  std::int32_t m_lKeepHours = 0;
  std::int32_t m_lKeepMinutes = 0;
  bool m_bWebFarm = false;
  automation::Variant m_vRunStart;
  std::string m_sCurrentFolderPath;
  automation::Variant m_vLastFileTime;
  ADODB::ConnectionPtr m_cnOrvane;
  ADODB::RecordsetPtr m_rsRows;
  Scripting::FileSystemObjectPtr m_oFileSystem;
  Scripting::FilePtr m_oCurrentFile;
  Scripting::FolderPtr m_oCurrentFolder;
};

}  // namespace OrvaneProcess
