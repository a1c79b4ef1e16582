// One customer: both files edited, then the rows deleted, or everything as it was before.
#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/parameters.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/adodb/command.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

// Runs one stage; whatever it raises becomes `onFailure`, and the customer's archiving ends.
template <class Stage, class OnFailure>
bool Succeeds(Stage stage, OnFailure onFailure) {
  try {
    stage();
    return true;
  } catch (...) {
    onFailure();
    return false;
  }
}

// Rows that came in after the files were written would be deleted without a copy. They wait for the next run,
// with the rest of the customer's. Fewer rows than were written is no loss: somebody else has deleted them.
void requireWritten(std::int64_t deleted, std::int64_t written) {
  if (deleted <= written) return;
  throw automation::Error(static_cast<std::int32_t>(automation::ErrorNumber::InternalError),
                          "OrvaneProcess.Archive",
                          std::to_string(deleted - written) + " rows came in after the files were written");
}

}  // namespace

void Archive::archiveOriginator(const std::string& originator, const std::string& emailID) {
  ArchiveFile questions;
  ArchiveFile transactions;
  ADODB::Statement condition;
  m_lRequestsWritten = m_lTransactionsWritten = 0;

  const auto openRecords = [this](ADODB::RecordsetPtr& records, const ADODB::Statement& selection,
                                  ADODB::CursorType cursor, ADODB::LockType lock) {
    records = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    records->Open(selection, m_cnConnection, cursor, lock, ADODB::kOptionsUnspecified);
  };

  const auto openQuestionsFile = [&] {
    const Scripting::DictionaryPtr parameters =
        OrvaneUtilities::GetParameterValues({"Webfarm Implemented", "FTPPath"});
    m_bWebfarm = automation::ToBoolean(parameters->Item("Webfarm Implemented"));
    m_sFTPPath = automation::ToTextOrEmpty(parameters->Item("FTPPath"));
    condition = customerCondition(originator, emailID);
    m_lNextArchiveID = 1;
    resolveBusinessPartner(originator, emailID);
    if (!m_bFolderFailed && !m_oFileSystem->FolderExists(m_sArchiveLocation)) createArchiveFolder();
    if (m_bFolderFailed) return;
    questions.path = getArchiveFileName(kQuestionsFile.kind);
    requireOwnerNamesAFile();
    openArchiveFile(kQuestionsFile, questions);
  };
  const auto editQuestions = [&] {
    addNewEntry(questions.working);
    ADODB::Statement selection = "select * from QUESTIONHISTORY where ";
    selection += condition;
    // Rows that may be changed come in the order of their key on every engine.
    openRecords(m_rsQuestions, selection, ADODB::CursorType::Static, ADODB::LockType::Optimistic);
    addRequests(questions.working);
    saveArchiveFile(questions);
  };
  const auto openTransactionsFile = [&] {
    transactions.path = getArchiveFileName(kTransactionsFile.kind);
    openArchiveFile(kTransactionsFile, transactions);
  };
  const auto editTransactions = [&] {
    addSameEntry(transactions.working);
    m_rsQuestions->MoveFirst();
    ADODB::Statement selection =
        "select * from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where ";
    selection += condition;
    selection += ")";
    openRecords(m_rsTransactions, selection, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic);
    addTransactions(transactions.working);
    saveArchiveFile(transactions);
  };

  const bool archived =
      Succeeds(openQuestionsFile,
               [&] {
                 if (questions.path.empty()) {
                   // Before its owner was resolved; the line must not name the customer before.
                   m_sFileOwner = originator == "Prospect" ? emailID : originator;
                   questions.path = getArchiveFileName(kQuestionsFile.kind);
                 }
                 tryToLog(archive_log::QuestionsNotOpened(questions.path));
               }) &&
      !m_bFolderFailed &&
      Succeeds(editQuestions, [&] { tryToLog(archive_log::QuestionsNotEdited(questions.path)); }) &&
      Succeeds(openTransactionsFile,
               [&] {
                 restoreArchiveFile(questions);
                 tryToLog(archive_log::TransactionsNotOpened(transactions.path));
               }) &&
      Succeeds(editTransactions, [&] {
        restoreArchiveFile(questions);
        tryToLog(archive_log::TransactionsNotEdited(transactions.path));
      });
  OrvaneUtilities::CloseRecordset(m_rsQuestions);
  OrvaneUtilities::CloseRecordset(m_rsTransactions);
  m_rsQuestions = m_rsTransactions = nullptr;
  m_oArchiveEntry = nullptr;
  releaseMark(questions);
  releaseMark(transactions);
  if (archived) purge(condition, questions, transactions);
}

ADODB::Statement Archive::customerCondition(const std::string& originator, const std::string& emailID) const {
  ADODB::Statement condition = "dateadd(d,";
  condition += ADODB::SqlValue(m_lArchiveAfterDays);
  condition += ",ENDSTATUSTIME)<'";
  condition += ADODB::SqlValue(m_sRunTime);
  if (emailID.empty() || originator != "Prospect") {
    condition += "' and Q_ORIGINATOR='";
    condition += ADODB::SqlValue(originator);
  } else {
    condition += "' and EMAILID='";
    condition += ADODB::SqlValue(emailID);
  }
  condition += "'";
  return condition;
}

void Archive::purge(const ADODB::Statement& condition, ArchiveFile& questions, ArchiveFile& transactions) {
  // The transactions go first: they are found through the requests.
  ADODB::Statement deleteTransactions =
      "Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where ";
  deleteTransactions += condition;
  deleteTransactions += ")";
  ADODB::Statement deleteQuestions = "Delete from QUESTIONHISTORY where ";
  deleteQuestions += condition;

  bool committing = false;
  try {
    const auto command = automation::CreateObject<ADODB::Command>("ADODB.Command");
    command->SetActiveConnection(m_cnConnection);
    m_cnConnection->BeginTrans();
    std::int64_t deleted = 0;
    command->SetCommandText(deleteTransactions);
    command->Execute(&deleted, ADODB::kExecuteNoRecords);
    requireWritten(deleted, m_lTransactionsWritten);
    command->SetCommandText(deleteQuestions);
    command->Execute(&deleted, ADODB::kExecuteNoRecords);
    requireWritten(deleted, m_lRequestsWritten);
    committing = true;
    m_cnConnection->CommitTrans();
  } catch (...) {
    bool rolledBack = true;
    try {
      m_cnConnection->RollbackTrans();
    } catch (...) {
      rolledBack = false;  // nothing was begun, or the connection is gone and the engine rolls back by itself
    }
    // A commit that was sent but not answered may have happened. Restoring the files would then destroy the
    // only copy, so they are restored only when the rows are known to be there still.
    if (committing && !rolledBack && purgeWasCommitted()) {
      tryToLog(archive_log::Edited(questions.path, transactions.path));
      return;
    }
    restoreArchiveFile(questions);
    restoreArchiveFile(transactions);
    tryToLog(archive_log::Undone(questions.path, transactions.path));
    return;
  }
  tryToLog(archive_log::Edited(questions.path, transactions.path));
}

// A written request is asked for by deleting it and taking that back: a server that is still busy with the
// commit holds it locked, so the answer waits until its outcome is settled. One that was written, and not
// just any of the customer's: a request that came in since must not be taken for one that is still there.
// What ended this run's connection may have ended one that waits to be used again as well, so one failure to
// ask says nothing.
bool Archive::purgeWasCommitted() const {
  ADODB::Statement deleteRequest = "Delete from QUESTIONHISTORY where Q_ID=";
  deleteRequest += ADODB::SqlValue(m_sFirstRequest);
  for (int attempt = 0; attempt < 2; ++attempt) {
    ADODB::ConnectionPtr connection;
    try {
      connection = OrvaneUtilities::GetOrvaneConnection();
      connection->BeginTrans();
      std::int64_t stillThere = 0;
      connection->Execute(deleteRequest, &stillThere, ADODB::kExecuteNoRecords);
      connection->RollbackTrans();
      OrvaneUtilities::CloseConnection(connection);
      return stillThere == 0;
    } catch (...) {
      OrvaneUtilities::CloseConnection(connection);
    }
  }
  return true;  // nobody can tell: keeping both copies loses nothing
}

}  // namespace OrvaneProcess
