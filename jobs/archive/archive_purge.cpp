// The rows of a customer whose files are written: deleted, or known to be still there.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "jobs/archive/archive.hpp"
#include "platform/adodb/command.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

using automation::Error;
using automation::ErrorNumber;

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

// Asks the database something on a connection of its own; nothing when it does not answer. What ended this
// run's connection may have ended one that waits in the pool as well, so one failure says nothing.
template <class Ask>
std::optional<bool> AskAnew(const Ask& ask) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    ADODB::ConnectionPtr connection;
    std::optional<bool> answer;
    try {
      connection = OrvaneUtilities::GetOrvaneConnection();
      answer = ask(connection);
    } catch (...) {
      // Asked once more, or nobody answers.
    }
    OrvaneUtilities::CloseConnection(connection);
    if (answer) return answer;
  }
  return std::nullopt;
}

}  // namespace

bool Archive::purgeRows(const Customer& customer) {
  try {
    deleteWrittenRows(customer);
    return true;
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
    const bool gone =
        (unknown && purgeWasCommitted(customer.requestNumbers)) || writtenRowsAreGone(customer, unknown);
    OrvaneUtilities::LogError(
        kArchiveOriginatorSource,
        gone ? std::optional<std::string>("Rows that were written are gone: the files are kept")
             : std::nullopt);
    return gone;
  }
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
  const std::vector<std::string> emptied =
      requireWritten(*command->ExecuteDelete(ADODB::Deleted::Rows), customer.writtenTransactions);
  command->SetCommandText(deleteQuestions);
  const std::vector<std::string> requests =
      requireWritten(*command->ExecuteDelete(ADODB::Deleted::Rows), customer.writtenRequests);
  // Nothing keeps a request from being reopened between the two statements.
  if (!std::includes(requests.begin(), requests.end(), emptied.begin(), emptied.end())) {
    throw Error(ErrorNumber::InternalError, kArchiveSource,
                "There are transactions of requests that are not to be deleted any more");
  }
  m_cnConnection->CommitTrans();
}

// Rows that came in or were edited after the files were written would be deleted without a copy. They wait
// for the next run, with the rest of the customer's. Fewer rows than were written are no loss: somebody else
// has deleted them. Tells the numbers of the deleted rows' requests, each once, in order.
std::vector<std::string> Archive::requireWritten(ADODB::Recordset& deleted, const RowDigests& written) {
  RowDigests gone;
  std::vector<std::string> requests;
  for (; !deleted.Eof(); deleted.MoveNext()) {
    gone.Add(deleted.Fields());
    std::string request = automation::ToText(deleted.Value("Q_ID"));
    if (requests.empty() || requests.back() != request) requests.push_back(std::move(request));
  }
  if (const std::size_t count = gone.NotAmong(written); count > 0) {
    throw Error(ErrorNumber::InternalError, kArchiveSource,
                std::to_string(count) + " rows came in or were changed after the files were written");
  }
  std::sort(requests.begin(), requests.end());
  requests.erase(std::unique(requests.begin(), requests.end()), requests.end());
  return requests;
}

// A written request is asked for by deleting it and taking that back: a server that is still busy with the
// commit holds it locked, so the answer waits until its outcome is settled. One that was written, and not
// just any of the customer's: a request that came in since must not be taken for one that is still there.
bool Archive::purgeWasCommitted(const std::vector<std::string>& requests) {
  if (requests.empty()) return true;
  ADODB::Statement deleteRequest = "Delete from QUESTIONHISTORY where Q_ID=";
  deleteRequest += ADODB::SqlValue(requests.front());
  const std::optional<bool> gone = AskAnew([&](const ADODB::ConnectionPtr& connection) {
    connection->BeginTrans();
    std::int64_t stillThere = 0;
    connection->Execute(deleteRequest, &stillThere, ADODB::kExecuteNoRecords);
    connection->RollbackTrans();
    return stillThere == 0;
  });
  return gone.value_or(true);  // nobody can tell: keeping both copies loses nothing
}

// Asked by reading alone, behind the rollback: a deletion could not be taken back on a table without
// transactions. When nobody answers, the engine's word on the failure is all there is.
bool Archive::writtenRowsAreGone(const Customer& customer, bool outcomeUnknown) {
  const std::optional<bool> gone = AskAnew([&](const ADODB::ConnectionPtr& connection) {
    return AnyIsGone(connection, "QUESTIONHISTORY", customer.requestNumbers) ||
           AnyIsGone(connection, "TRANSACTIONS", customer.transactionNumbers);
  });
  return gone.value_or(outcomeUnknown);
}

}  // namespace OrvaneProcess
