// One customer: both files edited, then the rows deleted, or everything as it was before.
#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/parameters.hpp"
#include "jobs/archive/archive.hpp"
#include "jobs/archive/log_texts.hpp"
#include "platform/adodb/command.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

using automation::Error;
using automation::ErrorNumber;

constexpr std::string_view kSource = "OrvaneProcess.Archive.archiveOriginator";

// The run log says which stage failed. That another program works on the same file or keeps it locked, which
// no later run cures by itself, is told where operators look for reasons. Called from inside a catch clause.
void TellOfAnotherWriter() {
  const std::int32_t number = automation::PendingError().Number();
  if (number == MSXML2::kFileChanged || number == static_cast<std::int32_t>(ErrorNumber::FileAlreadyExists) ||
      number == static_cast<std::int32_t>(ErrorNumber::PermissionDenied)) {
    OrvaneUtilities::LogError(kSource);
  }
}

// Whether one of the written rows, each given as its request's number, is in the table no more. A row that
// somebody has edited is still there.
bool AnyIsGone(const ADODB::ConnectionPtr& connection, std::string_view table,
               std::vector<std::string> written) {
  constexpr std::size_t kNumbersAtOnce = 100;
  std::sort(written.begin(), written.end());
  std::vector<std::string> numbers = written;
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  std::vector<std::string> present;
  for (std::size_t first = 0; first < numbers.size(); first += kNumbersAtOnce) {
    ADODB::Statement selection = "select Q_ID from ";
    selection += ADODB::SqlFragment(std::string(table));
    selection += " where Q_ID in (";
    for (std::size_t i = first; i < std::min(first + kNumbersAtOnce, numbers.size()); ++i) {
      if (i != first) selection += ",";
      selection += ADODB::SqlValue(numbers[i]);
    }
    selection += ")";
    const ADODB::RecordsetPtr rows = connection->Execute(selection, nullptr, ADODB::kOptionsUnspecified);
    for (; !rows->Eof(); rows->MoveNext()) present.push_back(automation::ToText(rows->Value("Q_ID")));
  }
  std::sort(present.begin(), present.end());
  return !std::includes(present.begin(), present.end(), written.begin(), written.end());
}

}  // namespace

void Archive::archiveOriginator(const std::string& originator, const std::string& emailID) {
  Customer customer;
  customer.originator = originator;
  customer.emailID = emailID;

  // The stages in their order; the first that fails ends the customer's archiving.
  const bool written = openQuestions(customer) && !m_bFolderFailed && editQuestions(customer) &&
                       openTransactions(customer) && editTransactions(customer);
  OrvaneUtilities::CloseRecordset(m_rsQuestions);
  OrvaneUtilities::CloseRecordset(m_rsTransactions);
  m_rsQuestions = m_rsTransactions = nullptr;
  m_oArchiveEntry = nullptr;
  releaseMark(customer.questions);
  releaseMark(customer.transactions);
  if (written) purge(customer);
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
    if (m_bFolderFailed) return true;
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

void Archive::purge(Customer& customer) {
  bool deleted = true;
  try {
    deleteWrittenRows(customer);
  } catch (...) {
    const Error error = automation::PendingError();
    try {
      m_cnConnection->RollbackTrans();
    } catch (...) {
      // Nothing was begun, or the connection is gone and the engine rolls back by itself.
    }
    // A commit that was sent but not answered may have happened, and a table without transactions does not
    // give back what was deleted. Restoring the files would then destroy the only copy, so they are restored
    // only when the rows are still there.
    const bool unknown = error.Outcome() == automation::Outcome::Unknown;
    deleted =
        (unknown && purgeWasCommitted(customer.requestNumbers)) || writtenRowsAreGone(customer, unknown);
    OrvaneUtilities::LogError(
        kSource, deleted ? std::optional<std::string>("Rows that were written are gone: the files are kept")
                         : std::nullopt);
  }
  if (deleted) {
    tryToLog(archive_log::Edited(customer.questions.path, customer.transactions.path));
    return;
  }
  restoreArchiveFile(customer.questions);
  restoreArchiveFile(customer.transactions);
  tryToLog(archive_log::Undone(customer.questions.path, customer.transactions.path));
}

void Archive::deleteWrittenRows(const Customer& customer) {
  // The transactions go first: they are found through the requests.
  ADODB::Statement deleteTransactions =
      "Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where ";
  deleteTransactions += customer.condition;
  deleteTransactions += ")";
  ADODB::Statement deleteQuestions = "Delete from QUESTIONHISTORY where ";
  deleteQuestions += customer.condition;

  const auto command = automation::CreateObject<ADODB::Command>("ADODB.Command");
  command->SetActiveConnection(m_cnConnection);
  m_cnConnection->BeginTrans();
  command->SetCommandText(deleteTransactions);
  const std::set<std::string> emptied =
      requireWritten(*command->ExecuteDelete(ADODB::Deleted::Rows), customer.writtenTransactions);
  command->SetCommandText(deleteQuestions);
  const std::set<std::string> requests =
      requireWritten(*command->ExecuteDelete(ADODB::Deleted::Rows), customer.writtenRequests);
  // Nothing keeps a request from being reopened between the two statements.
  if (!std::includes(requests.begin(), requests.end(), emptied.begin(), emptied.end())) {
    throw Error(static_cast<std::int32_t>(ErrorNumber::InternalError), "OrvaneProcess.Archive",
                "There are transactions of requests that are not to be deleted any more");
  }
  m_cnConnection->CommitTrans();
}

// Rows that came in or were edited after the files were written would be deleted without a copy. They wait
// for the next run, with the rest of the customer's. Fewer rows than were written are no loss: somebody else
// has deleted them. Tells the numbers of the deleted rows' requests.
std::set<std::string> Archive::requireWritten(ADODB::Recordset& deleted, const RowMarks& written) {
  RowMarks gone;
  std::set<std::string> requests;
  for (; !deleted.Eof(); deleted.MoveNext()) {
    gone.Add(deleted.Fields());
    requests.insert(automation::ToText(deleted.Value("Q_ID")));
  }
  const std::size_t count = gone.NotAmong(written);
  if (count == 0) return requests;
  throw Error(static_cast<std::int32_t>(ErrorNumber::InternalError), "OrvaneProcess.Archive",
              std::to_string(count) + " rows came in or were changed after the files were written");
}

// A written request is asked for by deleting it and taking that back: a server that is still busy with the
// commit holds it locked, so the answer waits until its outcome is settled. One that was written, and not
// just any of the customer's: a request that came in since must not be taken for one that is still there.
// What ended this run's connection may have ended one that waits to be used again as well, so one failure to
// ask says nothing.
bool Archive::purgeWasCommitted(const std::vector<std::string>& requests) {
  if (requests.empty()) return true;
  ADODB::Statement deleteRequest = "Delete from QUESTIONHISTORY where Q_ID=";
  deleteRequest += ADODB::SqlValue(requests.front());
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

// Asked by reading alone, behind the rollback: a deletion could not be taken back on a table without
// transactions. When nobody answers, the engine's word on the failure is all there is.
bool Archive::writtenRowsAreGone(const Customer& customer, bool outcomeUnknown) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    ADODB::ConnectionPtr connection;
    try {
      connection = OrvaneUtilities::GetOrvaneConnection();
      const bool gone = AnyIsGone(connection, "QUESTIONHISTORY", customer.requestNumbers) ||
                        AnyIsGone(connection, "TRANSACTIONS", customer.transactionNumbers);
      OrvaneUtilities::CloseConnection(connection);
      return gone;
    } catch (...) {
      OrvaneUtilities::CloseConnection(connection);
    }
  }
  return outcomeUnknown;
}

}  // namespace OrvaneProcess
