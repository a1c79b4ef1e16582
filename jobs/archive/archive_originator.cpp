// One customer: write both files, purge the rows, or undo what was written.
#include <string>
#include <string_view>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/parameters.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

using automation::ErrorNumber;

// The run log says which stage failed. That another program works on the same file or keeps it locked, which
// no later run cures by itself, is told where operators look for reasons. Called from inside a catch clause.
void TellOfAnotherWriter() {
  const std::int32_t number = automation::PendingError().Number();
  if (number == MSXML2::kFileChanged || number == static_cast<std::int32_t>(ErrorNumber::FileAlreadyExists) ||
      number == static_cast<std::int32_t>(ErrorNumber::PermissionDenied)) {
    OrvaneUtilities::LogError(kArchiveOriginatorSource);
  }
}

}  // namespace

void Archive::archiveOriginator(const std::string& originator, const std::string& emailID) {
  Customer customer;
  customer.originator = originator;
  customer.emailID = emailID;

  const bool written = writeFiles(customer);
  OrvaneUtilities::CloseRecordset(m_rsQuestions);
  OrvaneUtilities::CloseRecordset(m_rsTransactions);
  m_rsQuestions = m_rsTransactions = nullptr;
  m_oArchiveEntry = nullptr;
  clearInUse(customer.questions);
  clearInUse(customer.transactions);
  if (!written) return;

  if (purgeRows(customer)) {
    tryToLog(archive_log::Edited(customer.questions.path, customer.transactions.path));
  } else {
    undoFiles(customer);
  }
}

// --- Write ---

bool Archive::writeFiles(Customer& customer) {
  return openQuestions(customer) && editQuestions(customer) && openTransactions(customer) &&
         editTransactions(customer);
}

bool Archive::openQuestions(Customer& customer) {
  std::string& path = customer.questions.path;
  try {
    const Scripting::DictionaryPtr parameters =
        OrvaneUtilities::GetParameterValues({"Webfarm Implemented", "FTPPath"});
    m_bWebfarm = automation::ToBoolean(parameters->Item("Webfarm Implemented"));
    m_sFTPPath = automation::ToTextOrEmpty(parameters->Item("FTPPath"));
    customer.condition = customerCondition(customer.originator, customer.emailID);
    m_lNextArchiveID = 1;
    resolveBusinessPartner(customer.originator, customer.emailID);
    if (!m_bFolderFailed && !m_oFileSystem->FolderExists(m_sArchiveLocation)) createArchiveFolder();
    if (m_bFolderFailed) return false;
    path = getArchiveFileName(kQuestionsFile.kind);
    requireOwnerNamesAFile();
    openArchiveFile(kQuestionsFile, customer.questions);
    return true;
  } catch (...) {
    TellOfAnotherWriter();
    if (path.empty()) {
      // Before its owner was resolved; the line must not name the customer before.
      m_sFileOwner = customer.originator == "Prospect" ? customer.emailID : customer.originator;
      path = getArchiveFileName(kQuestionsFile.kind);
    }
    tryToLog(archive_log::QuestionsNotOpened(path));
    return false;
  }
}

bool Archive::editQuestions(Customer& customer) {
  try {
    addNewEntry(customer.questions.working);
    ADODB::Statement selection = "select * from QUESTIONHISTORY where ";
    selection += customer.condition;
    // Rows that may be changed come in the order of their key on every engine.
    m_rsQuestions = openRecords(selection, ADODB::CursorType::Static);
    addRequests(customer);
    saveArchiveFile(customer.questions);
    return true;
  } catch (...) {
    TellOfAnotherWriter();
    tryToLog(archive_log::QuestionsNotEdited(customer.questions.path));
    return false;
  }
}

bool Archive::openTransactions(Customer& customer) {
  try {
    customer.transactions.path = getArchiveFileName(kTransactionsFile.kind);
    openArchiveFile(kTransactionsFile, customer.transactions);
    return true;
  } catch (...) {
    TellOfAnotherWriter();
    restoreArchiveFile(customer.questions);
    tryToLog(archive_log::TransactionsNotOpened(customer.transactions.path));
    return false;
  }
}

bool Archive::editTransactions(Customer& customer) {
  try {
    addSameEntry(customer.transactions.working);
    m_rsQuestions->MoveFirst();
    ADODB::Statement selection =
        "select * from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where ";
    selection += customer.condition;
    selection += ")";
    m_rsTransactions = openRecords(selection, ADODB::CursorType::Keyset);
    addTransactions(customer);
    saveArchiveFile(customer.transactions);
    return true;
  } catch (...) {
    TellOfAnotherWriter();
    restoreArchiveFile(customer.questions);
    tryToLog(archive_log::TransactionsNotEdited(customer.transactions.path));
    return false;
  }
}

// --- Undo ---

void Archive::undoFiles(Customer& customer) {
  restoreArchiveFile(customer.questions);
  restoreArchiveFile(customer.transactions);
  tryToLog(archive_log::Undone(customer.questions.path, customer.transactions.path));
}

// --- Which rows ---

ADODB::RecordsetPtr Archive::openRecords(const ADODB::Statement& selection, ADODB::CursorType cursor) const {
  auto records = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  records->Open(selection, m_cnConnection, cursor, ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
  return records;
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

}  // namespace OrvaneProcess
