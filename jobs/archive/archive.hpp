// Moves requests that were closed long enough ago out of the database into two XML files per customer, and
// then deletes them from QUESTIONHISTORY and TRANSACTIONS.
//
// A run never leaves the tables and the files out of step: the files are written first, the rows are deleted
// in one transaction, and when that fails the files get back the content they had.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/job.hpp"
#include "components/interfaces/user.hpp"
#include "jobs/archive/written_rows.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/variant.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "platform/scripting/dictionary.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {

// Error sources
inline constexpr char kArchiveSource[] = "OrvaneProcess.Archive";
inline constexpr char kArchiveOriginatorSource[] = "OrvaneProcess.Archive.archiveOriginator";

class Archive : public ArchiveService {
 public:
  // The service host's entry: archiveQuestions as "NTService". An error that ends the work is written to the
  // suite's error log; nothing is raised.
  void Run() override;

  // One archive run. `i_sCalledFrom` is recorded as the one who archived ("Service": a background process)
  // and `i_sComment` beside it. What goes wrong with a customer is a line of the run log and the run goes on;
  // a failure of the run itself (no database, no catalogue, no log) is raised after the closing lines were
  // written, which stand alone when it came before the first line.
  void archiveQuestions(const std::string& i_sCalledFrom, const std::string& i_sComment) override;

 private:
  // One archive file while it is being edited: what is added goes into `working`; `snapshot` is the file as
  // it was, for the undo.
  struct ArchiveFile {
    std::string path;
    OrvCommonMTS::FileHandlingPtr handling;
    MSXML2::DOMDocumentPtr working;
    MSXML2::DOMDocumentPtr snapshot;
    bool inUse = false;  // told to the other servers by this run
  };
  // One customer while its requests are archived.
  struct Customer {
    std::string originator;
    std::string emailID;
    ADODB::Statement condition;  // which rows are the customer's
    ArchiveFile questions;
    ArchiveFile transactions;
    RowDigests writtenRequests;  // into the files by this run
    RowDigests writtenTransactions;
    std::vector<std::string> requestNumbers;      // of the requests written
    std::vector<std::string> transactionNumbers;  // of each written transaction, its request's
  };
  // What a customer's files have to hold: the element names of one kind of file.
  struct FileKind {
    const char* kind;       // as getArchiveFileName takes it
    const char* root;       // name of the root element
    const char* container;  // the root's child that holds the SR elements
  };
  static const FileKind kQuestionsFile;
  static const FileKind kTransactionsFile;

  // The run (archive_run.cpp)
  void archiveCustomers();
  void releaseObjects();
  ADODB::Statement selectionOfCustomers() const;

  // One customer (archive_originator.cpp)
  void archiveOriginator(const std::string& originator, const std::string& emailID);
  // The stages of writing in their order. Each traps what fails in it, undoes what the stages before have
  // done, writes its line and answers false: the customer's archiving ends. So it does, without a line, where
  // the archive folder could not be made.
  bool writeFiles(Customer& customer);
  bool openQuestions(Customer& customer);
  bool editQuestions(Customer& customer);
  bool openTransactions(Customer& customer);
  bool editTransactions(Customer& customer);
  void undoFiles(Customer& customer);
  ADODB::RecordsetPtr openRecords(const ADODB::Statement& selection, ADODB::CursorType cursor) const;
  ADODB::Statement customerCondition(const std::string& originator, const std::string& emailID) const;

  // The purge (archive_purge.cpp)
  // False when the rows that were written are still in the tables: the files must be restored then.
  bool purgeRows(const Customer& customer);
  void deleteWrittenRows(const Customer& customer);
  static std::vector<std::string> requireWritten(ADODB::Recordset& deleted, const RowDigests& written);
  static bool purgeWasCommitted(const std::vector<std::string>& requests);
  static bool writtenRowsAreGone(const Customer& customer, bool outcomeUnknown);

  // The documents (archive_documents.cpp)
  void openArchiveFile(const FileKind& kind, ArchiveFile& file);
  void prepareExistingFile(ArchiveFile& file);
  void saveArchiveFile(ArchiveFile& file);
  void restoreArchiveFile(ArchiveFile& file);
  static void shareFile(ArchiveFile& file);
  static void clearInUse(ArchiveFile& file);
  void addNewEntry(const MSXML2::DOMDocumentPtr& document);
  void addSameEntry(const MSXML2::DOMDocumentPtr& document) const;
  void addRequests(Customer& customer);
  void addTransactions(Customer& customer);
  void getNextArchiveID(const MSXML2::DOMDocumentPtr& document);
  MSXML2::NodePtr createArchiveEntry(const MSXML2::DOMDocumentPtr& document) const;
  void addFieldElements(const MSXML2::DOMDocumentPtr& document, const MSXML2::NodePtr& parent);
  std::string fieldText(ADODB::Recordset& records, ADODB::Field& field) const;

  // Folders and names (archive_files.cpp)
  void resolveBusinessPartner(const std::string& originator, const std::string& emailID);
  std::string getArchiveFileName(std::string_view kind) const;
  void requireOwnerNamesAFile() const;
  void createArchiveFolder();
  void createFolderPath(std::string path);
  bool holdsNoFile(const std::string& path) const;
  void deleteFolderIfExists(const std::string& path);
  void createFileIfMissing(const std::string& path);
  void createArchiveFile(std::string_view rootName, const std::string& path);

  // Lookups and small services (archive_lookups.cpp)
  void loadLookups();
  std::string getStatusLabel(std::int32_t status) const;
  std::string getProductCategoryName(std::int32_t id) const;
  std::string getProductDescription(std::int32_t id) const;
  std::string getFAQCategoryDescription(std::int32_t id) const;
  static std::string getParameter(const std::string& name);
  static std::string getFAQParameter(const std::string& name);
  static std::string getRootPath();
  static VnMembership::UserPtr getMembershipUser(const std::string& userID);
  template <class Object>
  static void releaseObject(std::shared_ptr<Object>& value) {
    if (value) value = nullptr;
  }

  // The run log (archive_log.cpp)
  void log(const std::string& message);
  void tryToLog(const std::string& message);
  void WriteJobLog(const std::string& fileName, const std::string& message);
  std::string logFolder() const;
  std::string logFileName() const;

  std::string m_sCalledFrom;
  std::string m_sComment;
  std::string m_sLogRoot;
  std::string m_sAttachmentsDirectory;
  std::string m_sArchiveLocation;
  std::int32_t m_lArchiveAfterDays = 0;
  std::string m_sRunTime;  // as GetTimestampText gave it; every query of the run compares against it
  bool m_bFolderFailed = false;
  std::int32_t m_lNextArchiveID = 1;
  bool m_bWebfarm = false;
  std::string m_sFTPPath;
  std::string m_sFileOwner;
  std::int32_t m_lBPNumber = 0;  // a prospect uses the number of the customer before it

  ADODB::ConnectionPtr m_cnConnection;
  ADODB::RecordsetPtr m_rsQuestions;     // the customer's QUESTIONHISTORY rows
  ADODB::RecordsetPtr m_rsTransactions;  // their TRANSACTIONS rows
  Scripting::FileSystemObjectPtr m_oFileSystem;
  MSXML2::NodePtr m_oArchiveEntry;  // this run's entry, the same in both files

  Scripting::DictionaryPtr m_oFAQCategories;
  Scripting::DictionaryPtr m_oProductCategories;
  Scripting::DictionaryPtr m_oProducts;
  Scripting::DictionaryPtr m_oStatuses;
};

}  // namespace OrvaneProcess
