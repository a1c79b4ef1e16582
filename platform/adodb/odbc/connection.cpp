#include "platform/adodb/odbc/connection.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::odbc {
namespace {

// Enough for the statements that a job repeats; a server holds resources for each.
constexpr std::size_t kMostPrepared = 64;
// A longer text is hardly ever sent twice.
constexpr std::size_t kLongestPreparedText = 4096;

class ResultRows : public engine::Rows {
 public:
  explicit ResultRows(std::shared_ptr<Statement> statement) : statement_(std::move(statement)) {}
  // Nothing stays open behind a result that is let go, read to its end or not.
  ~ResultRows() override { statement_->CloseCursor(); }

  const std::vector<engine::Column>& Columns() const override { return statement_->Columns(); }
  bool Next() override { return !statement_->Columns().empty() && statement_->Fetch(); }
  automation::Variant Value(std::size_t column) const override {
    automation::Variant value;
    statement_->Read(column, value);
    return value;
  }
  void Read(std::size_t column, automation::Variant& into) const override { statement_->Read(column, into); }

 private:
  std::shared_ptr<Statement> statement_;
};

std::uintptr_t OdbcLevel(IsolationLevel level) {
  switch (level) {
    case IsolationLevel::ReadUncommitted:
      return SQL_TXN_READ_UNCOMMITTED;
    case IsolationLevel::ReadCommitted:
      return SQL_TXN_READ_COMMITTED;
    case IsolationLevel::RepeatableRead:
      return SQL_TXN_REPEATABLE_READ;
    case IsolationLevel::Serializable:
      return SQL_TXN_SERIALIZABLE;
  }
  return SQL_TXN_READ_COMMITTED;
}

// Whether the driver gives the values of a bound column once more, in any order, when it is asked.
bool ReadsBoundColumns(SQLHANDLE connection) {
  constexpr SQLUINTEGER kNeeded = SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BOUND;
  SQLUINTEGER offered = 0;
  const SQLRETURN status = SQLGetInfoW(connection, SQL_GETDATA_EXTENSIONS, &offered, sizeof offered, nullptr);
  return Succeeded(status) && (offered & kNeeded) == kNeeded;
}

// Whether a statement reads or writes rows and nothing else: such a one leaves a session's settings alone.
bool KeepsSettings(std::string_view sql) {
  const std::size_t start = sql.find_first_not_of(" \t\r\n(");
  if (start == std::string_view::npos) return true;
  std::string_view word = sql.substr(start);
  word = word.substr(0, word.find_first_of(" \t\r\n(*"));
  for (const char* keyword : {"select", "insert", "update", "delete", "with"}) {
    if (engine::EqualsIgnoringAsciiCase(word, keyword)) return true;
  }
  return false;
}

}  // namespace

Connection::Connection(const EnvironmentHandle& environment, const engine::ConnectionString& text) {
  SQLHANDLE raw = nullptr;
  if (!Succeeded(SQLAllocHandle(SQL_HANDLE_DBC, environment.Get(), &raw))) {
    Raise(ReadDiagnostics(SQL_HANDLE_ENV, environment.Get()));
  }
  handle_ = ConnectionHandle(raw);
  constexpr std::uintptr_t kLoginSeconds = 15;
  SQLSetConnectAttrW(raw, SQL_ATTR_LOGIN_TIMEOUT, AsPointer(kLoginSeconds), 0);
  WideText wide = ToWide(text.ToString());
  Check(SQLDriverConnectW(raw, nullptr, wide.data(), static_cast<SQLSMALLINT>(wide.size()), nullptr, 0,
                          nullptr, SQL_DRIVER_NOPROMPT));
  try {
    std::array<SQLWCHAR, 128> name{};
    SQLSMALLINT bytes = 0;
    Check(SQLGetInfoW(raw, SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(sizeof name), &bytes));
    const std::string dbms = ToUtf8(name.data(), static_cast<std::size_t>(bytes) / sizeof(SQLWCHAR));
    engine_ = EngineOfDbms(dbms);
    dialect_ = DialectOf(engine_);
    if (dialect_ == nullptr) {
      Raise({.sqlState = "HY000",
             .nativeCode = 0,
             .message = "No SQL dialect is known for the engine " + dbms});
    }
    RequireTextsAsTheyAre(engine_, text);
    fetchStyle_ = {.text = TextFormOf(engine_, text), .bound = ReadsBoundColumns(raw)};
    SetAttribute(SQL_ATTR_TXN_ISOLATION, OdbcLevel(appliedIsolationLevel_));
    const std::string setUp = SessionSetUp(engine_, text);
    if (!setUp.empty()) Statement(handle_, fetchStyle_, health_).ExecuteDirect(setUp);
  } catch (...) {
    SQLDisconnect(raw);
    throw;
  }
}

Connection::~Connection() {
  prepared_.clear();
  if (inTransaction_) SQLEndTran(SQL_HANDLE_DBC, handle_.Get(), SQL_ROLLBACK);
  SQLDisconnect(handle_.Get());
}

void Connection::Check(SQLRETURN status) {
  if (Succeeded(status)) return;
  const Diagnostics diagnostics = ReadDiagnostics(SQL_HANDLE_DBC, handle_.Get());
  health_.Note(diagnostics);
  Raise(diagnostics);
}

void Connection::SetAttribute(SQLINTEGER attribute, std::uintptr_t value) {
  Check(SQLSetConnectAttrW(handle_.Get(), attribute, AsPointer(value), 0));
}

// Each procedure of a job opens a connection and sets its level, which is the same as before nearly always:
// the database is told only of a change, and only when a statement follows.
void Connection::ApplyIsolationLevel() {
  if (isolationLevel_ == appliedIsolationLevel_ || inTransaction_) return;
  SetAttribute(SQL_ATTR_TXN_ISOLATION, OdbcLevel(isolationLevel_));
  appliedIsolationLevel_ = isolationLevel_;
}

Connection::StatementPtr Connection::Run(std::string_view sql, const engine::Parameters& parameters) {
  ApplyIsolationLevel();
  const bool plain = KeepsSettings(sql);
  settingsKept_ = settingsKept_ && plain;
  if (!inTransaction_) return RunAndCommit(sql, parameters);
  if (autocommitOff_) return RunInAnyWay(sql, parameters);
  // The statement may end the transaction by committing, or by failing. What follows belongs to the next one,
  // until the caller says that it is done.
  if (!plain) TurnAutocommitOff();
  try {
    return RunInAnyWay(sql, parameters);
  } catch (const automation::Error&) {
    KeepTransactionOpen();
    throw;
  }
}

Connection::StatementPtr Connection::RunAndCommit(std::string_view sql,
                                                  const engine::Parameters& parameters) {
  try {
    return RunInAnyWay(sql, parameters);
  } catch (automation::Error& error) {
    if (LeavesCommitOpen(error.SqlState(), error.NativeCode()) || !StillAnswers()) {
      error.WithOutcome(automation::Outcome::Unknown);
    }
    throw;
  }
}

Connection::StatementPtr Connection::RunInAnyWay(std::string_view sql, const engine::Parameters& parameters) {
  if (!parameters.empty() && sql.size() <= kLongestPreparedText) return RunPrepared(sql, parameters);
  if (parameters.empty() && IsRepeatedRead(sql)) {
    try {
      return RunPrepared(sql, parameters);
    } catch (const automation::Error&) {
      // What is wrong may be what was prepared: a column has another type now.
      if (inTransaction_ || health_.lost) throw;
    }
  }
  auto statement = std::make_shared<Statement>(handle_, fetchStyle_, health_);
  if (parameters.empty()) {
    statement->ExecuteDirect(sql);
  } else {
    statement->Prepare(sql);
    statement->Execute(parameters);
  }
  return statement;
}

// A read that comes a second time will come again: jobs ask for the same settings over and over. Not one of
// all columns, which may be others the next time.
bool Connection::IsRepeatedRead(std::string_view sql) {
  constexpr std::size_t kMostRemembered = 64;
  constexpr std::string_view kSelect = "select";
  if (sql.size() > kLongestPreparedText || sql.find('*') != std::string_view::npos ||
      !engine::EqualsIgnoringAsciiCase(sql.substr(0, kSelect.size()), kSelect)) {
    return false;
  }
  const std::size_t hash = std::hash<std::string_view>()(sql);
  if (std::find(reads_.begin(), reads_.end(), hash) != reads_.end()) return true;
  if (reads_.size() < kMostRemembered) {
    reads_.push_back(hash);
  } else {
    reads_[nextRead_++ % kMostRemembered] = hash;
  }
  return false;
}

Connection::StatementPtr Connection::RunPrepared(std::string_view sql, const engine::Parameters& parameters) {
  try {
    return RunPreparedOnce(sql, parameters);
  } catch (const automation::Error& error) {
    // MariaDB gives a statement up, before it has done anything, when its tables change too often meanwhile;
    // PostgreSQL does when the columns of its result have changed since it was prepared.
    constexpr std::int32_t kNeedsPreparingAgain = 1615;
    const bool outdated = engine_ == Engine::MariaDb ? error.NativeCode() == kNeedsPreparingAgain
                                                     : engine_ == Engine::PostgreSql &&
                                                           error.SqlState() == "0A000" && !inTransaction_;
    if (!outdated) throw;
  }
  return RunPreparedOnce(sql, parameters);
}

Connection::StatementPtr Connection::RunPreparedOnce(std::string_view sql,
                                                     const engine::Parameters& parameters) {
  auto found = prepared_.begin();
  while (found != prepared_.end() && found->first != sql) ++found;
  if (found != prepared_.end()) {
    prepared_.splice(prepared_.begin(), prepared_, found);
  } else {
    auto statement = std::make_shared<Statement>(handle_, fetchStyle_, health_);
    statement->Prepare(sql);
    prepared_.emplace_front(std::string(sql), std::move(statement));
    if (prepared_.size() > kMostPrepared) prepared_.pop_back();
  }
  try {
    prepared_.front().second->Execute(parameters);
  } catch (...) {
    // The plan may be at fault (a table has changed since); the next attempt starts anew.
    prepared_.pop_front();
    throw;
  }
  return prepared_.front().second;
}

std::unique_ptr<engine::Rows> Connection::Query(std::string_view sql, const engine::Parameters& parameters) {
  StatementPtr statement = Run(sql, parameters);
  auto rows = std::make_unique<ResultRows>(statement);
  AddCollations(statement->Columns());
  return rows;
}

std::int64_t Connection::Execute(std::string_view sql, const engine::Parameters& parameters) {
  const StatementPtr statement = Run(sql, parameters);
  const std::int64_t affected = statement->AffectedRows();
  statement->CloseCursor();
  return affected;
}

void Connection::Begin() {
  if (inTransaction_) throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Connection");
  ApplyIsolationLevel();
  if (engine_ == Engine::MariaDb) {
    // The driver tells this server at once when autocommit changes: a message at the beginning and one at the
    // end.
    Statement(handle_, fetchStyle_, health_).ExecuteDirect("START TRANSACTION");
  } else {
    TurnAutocommitOff();
  }
  inTransaction_ = true;
}

void Connection::TurnAutocommitOff() {
  SetAttribute(SQL_ATTR_AUTOCOMMIT, SQL_AUTOCOMMIT_OFF);
  autocommitOff_ = true;
}

// After a failure that may have ended the transaction; the failure is the one to tell.
void Connection::KeepTransactionOpen() {
  try {
    if (!health_.lost && !autocommitOff_) TurnAutocommitOff();
  } catch (const automation::Error&) {
    health_.lost = true;
  }
}

// A session that was lost before has nothing to commit, and nothing to roll back: the server has done that.
void Connection::RequireTransaction() {
  if (!inTransaction_) throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Connection");
  if (StillAnswers()) return;
  Raise({.sqlState = "08003", .nativeCode = 0, .message = "The connection was lost during the transaction."});
}

void Connection::Commit() {
  RequireTransaction();
  try {
    Check(SQLEndTran(SQL_HANDLE_DBC, handle_.Get(), SQL_COMMIT));
  } catch (automation::Error& error) {
    // Some drivers give a lost connection no code of its own: a refusal is believed when the session answers.
    if (LeavesCommitOpen(error.SqlState(), error.NativeCode()) || !Ping()) {
      error.WithOutcome(automation::Outcome::Unknown);
      health_.lost = true;
    } else {
      KeepTransactionOpen();
    }
    throw;
  }
  LeaveTransaction();
}

void Connection::Rollback() {
  RequireTransaction();
  try {
    Check(SQLEndTran(SQL_HANDLE_DBC, handle_.Get(), SQL_ROLLBACK));
  } catch (const automation::Error&) {
    inTransaction_ = false;
    health_.lost = true;
    throw;
  }
  LeaveTransaction();
}

// Whatever becomes of the session now, the commit or rollback has been done.
void Connection::LeaveTransaction() {
  inTransaction_ = false;
  if (!std::exchange(autocommitOff_, false)) return;
  const SQLRETURN status =
      SQLSetConnectAttrW(handle_.Get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_ON), 0);
  health_.lost = health_.lost || !Succeeded(status);
}

void Connection::SetIsolationLevel(IsolationLevel level) {
  isolationLevel_ = level;
}

engine::TableShape Connection::Describe(const std::string& table) {
  return LookUp(table).shape;
}

const Connection::Table& Connection::LookUp(const std::string& table) {
  const auto known = tables_.find(table);
  if (known != tables_.end()) return known->second;
  const MetadataQuery query = TableQuery(engine_, table);
  Table found;
  std::map<std::int32_t, std::string> key;
  std::vector<std::string> columns;
  bool isTable = false;
  ResultRows rows(RunPrepared(query.sql, query.parameters));
  while (rows.Next()) {
    const std::string column = automation::ToText(rows.Value(0));
    const std::int32_t place = automation::ToInt32(rows.Value(1));
    if (place > 0) key[place] = column;
    if (automation::ToBoolean(rows.Value(2))) found.shape.generatedColumn = column;
    found.collations[column] = automation::ToText(rows.Value(3));
    isTable = automation::ToBoolean(rows.Value(4));
    columns.push_back(column);
  }
  if (key.empty() && isTable) {
    std::optional<std::string> generated = std::move(found.shape.generatedColumn);
    found.shape = KeylessShape(engine_, std::move(columns));
    found.shape.generatedColumn = std::move(generated);
  }
  for (auto& [place, column] : key) found.shape.keyColumns.push_back(std::move(column));
  if (!key.empty()) found.shape.primaryKey = found.shape.keyColumns;
  return tables_.emplace(table, std::move(found)).first->second;
}

// Only MariaDB's columns come in collations that see two different texts as equal by default.
void Connection::AddCollations(std::vector<engine::Column>& columns) {
  if (engine_ != Engine::MariaDb) return;
  for (engine::Column& column : columns) {
    if (column.type != engine::ColumnType::Text || column.baseTable.empty() || !column.collation.empty())
      continue;
    const Table& table = LookUp(dialect_->QuotedName(column.baseTable));
    const auto found = table.collations.find(column.baseColumn);
    if (found != table.collations.end()) column.collation = found->second;
  }
}

bool Connection::Reset() {
  if (inTransaction_ && !health_.lost) {
    try {
      Rollback();
    } catch (const automation::Error&) {
      return false;
    }
  }
  isolationLevel_ = IsolationLevel::ReadCommitted;
  return StillAnswers() && settingsKept_;
}

bool Connection::StillAnswers() {
  if (std::exchange(health_.doubtful, false) && !health_.lost) health_.lost = !Ping();
  return !health_.lost;
}

bool Connection::Ping() {
  try {
    Statement(handle_, fetchStyle_, health_).ExecuteDirect("SELECT 1");
    return true;
  } catch (const automation::Error&) {
    return false;
  }
}

}  // namespace ADODB::odbc
