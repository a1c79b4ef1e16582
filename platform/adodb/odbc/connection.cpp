#include "platform/adodb/odbc/connection.hpp"

#include <array>
#include <utility>

#include "platform/adodb/engines/table.hpp"
#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::odbc {
namespace {

// For so long a table is taken to have the key that it had: record sets are opened many times a second, and
// asking costs a message.
constexpr std::chrono::seconds kDescribedFor{1};

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
  const std::string_view word = engine::FirstWord(sql);
  if (word.empty()) return true;
  for (const char* keyword : {"select", "insert", "update", "delete", "with"}) {
    if (engine::EqualsIgnoringAsciiCase(word, keyword)) return true;
  }
  return false;
}

}  // namespace

class Connection::ResultRows : public engine::Rows {
 public:
  explicit ResultRows(Run run) : run_(std::move(run)), statement_(*run_.statement) {}
  // Nothing stays open behind a result that is let go, read to its end or not.
  ~ResultRows() override { statement_.CloseCursor(); }

  const std::vector<engine::Column>& Columns() const override { return statement_.Columns(); }
  bool Next() override { return !statement_.Columns().empty() && statement_.Fetch(); }
  void ReadInto(std::size_t column, automation::Variant& into) const override {
    statement_.ReadInto(column, into);
  }

 private:
  Run run_;
  Statement& statement_;
};

Connection::Connection(const EnvironmentHandle& environment, const engine::ConnectionString& text,
                       engine::Clock clock)
    : clock_(std::move(clock)) {
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
    health_.engine = engine::EngineOfDriver(dbms);
    if (health_.engine == nullptr) {
      Raise({.sqlState = "HY000",
             .nativeCode = 0,
             .message = "No SQL dialect is known for the engine " + dbms});
    }
    const engine::Traits& traits = Engine().traits();
    traits.requireExactText(text);
    fetchStyle_ = {.text = traits.givesUtf8(text) ? TextForm::Utf8 : TextForm::Utf16,
                   .bound = ReadsBoundColumns(raw)};
    SetAttribute(SQL_ATTR_TXN_ISOLATION, OdbcLevel(appliedIsolationLevel_));
    const std::string setUp = traits.setUp(text);
    if (!setUp.empty()) Statement(handle_, fetchStyle_, health_).ExecuteDirect(setUp);
  } catch (...) {
    SQLDisconnect(raw);
    throw;
  }
}

Connection::~Connection() {
  tableQuery_.reset();
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

Connection::Run Connection::RunStatement(const engine::Sql& sql, const engine::Parameters& parameters) {
  ApplyIsolationLevel();
  const bool plain = KeepsSettings(sql);
  settingsKept_ = settingsKept_ && plain;
  if (!plain) tables_.clear();
  if (!inTransaction_) return RunAndCommit(sql, parameters);
  if (autocommitOff_) return Send(sql, parameters);
  // The statement may end the transaction by committing, or by failing. What follows belongs to the next one,
  // until the caller says that it is done.
  if (!plain) TurnAutocommitOff();
  try {
    return Send(sql, parameters);
  } catch (const automation::Error&) {
    KeepTransactionOpen();
    throw;
  }
}

Connection::Run Connection::RunAndCommit(const engine::Sql& sql, const engine::Parameters& parameters) {
  try {
    return Send(sql, parameters);
  } catch (automation::Error& error) {
    if (health_.LeavesCommitOpen(error) || !StillAnswers()) error.WithOutcome(automation::Outcome::Unknown);
    throw;
  }
}

Connection::Run Connection::Send(const engine::Sql& sql, const engine::Parameters& parameters) {
  if (sql.Prepared() != nullptr) {
    try {
      return {&SendPrepared(sql, parameters), nullptr};
    } catch (const automation::Error&) {
      // What is wrong may be what was prepared: a column has another type now. A statement without parameters
      // can be sent as it stands.
      if (!parameters.empty() || inTransaction_ || health_.lost) throw;
    }
  }
  auto statement = std::make_unique<Statement>(handle_, fetchStyle_, health_);
  if (parameters.empty()) {
    statement->ExecuteDirect(sql);
  } else {
    statement->Prepare(sql);
    statement->Execute(parameters);
  }
  Statement* const running = statement.get();
  return {running, std::move(statement)};
}

Statement& Connection::SendPrepared(const engine::Sql& sql, const engine::Parameters& parameters) {
  try {
    return SendPreparedOnce(sql, parameters);
  } catch (const automation::Error& error) {
    if (!Engine().failures().needsPreparingAnew(error.SqlState(), error.NativeCode(), inTransaction_)) throw;
  }
  return SendPreparedOnce(sql, parameters);
}

Statement& Connection::SendPreparedOnce(const engine::Sql& sql, const engine::Parameters& parameters) {
  std::unique_ptr<engine::PreparedStatement>& kept = *sql.Prepared();
  if (!kept) {
    auto statement = std::make_unique<Statement>(handle_, fetchStyle_, health_);
    statement->Prepare(sql);
    kept = std::move(statement);
  }
  auto& statement = static_cast<Statement&>(*kept);
  try {
    statement.Execute(parameters);
  } catch (const automation::Error& error) {
    // Unless it is a value that was refused, the plan may be at fault (a table has changed since): the next
    // attempt starts anew.
    const std::string_view sqlState = error.SqlState();
    if (!sqlState.starts_with("22") && !sqlState.starts_with("23")) kept.reset();
    throw;
  }
  return statement;
}

std::unique_ptr<engine::Rows> Connection::Query(const engine::Sql& sql,
                                                const engine::Parameters& parameters) {
  Run run = RunStatement(sql, parameters);
  Statement& statement = *run.statement;
  auto rows = std::make_unique<ResultRows>(std::move(run));
  AddCollations(statement.Columns(sql.Table()), sql.Table());
  return rows;
}

std::int64_t Connection::Execute(const engine::Sql& sql, const engine::Parameters& parameters) {
  const Run run = RunStatement(sql, parameters);
  const std::int64_t affected = run.statement->AffectedRows();
  run.statement->CloseCursor();
  return affected;
}

void Connection::Begin() {
  if (inTransaction_) throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Connection");
  ApplyIsolationLevel();
  const std::string_view begin = Engine().traits().begin;
  if (begin.empty()) {
    TurnAutocommitOff();
  } else {
    Statement(handle_, fetchStyle_, health_).ExecuteDirect(begin);
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
    if (health_.LeavesCommitOpen(error) || !Ping()) {
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
  const auto now = clock_();
  const auto known = tables_.find(table);
  if (known != tables_.end() && now - known->second.readAt < kDescribedFor) return known->second;
  const engine::Traits& traits = Engine().traits();
  const engine::Traits::Query query = traits.describe(table);
  Table found;
  found.readAt = now;
  std::map<std::int32_t, std::string> key;
  std::vector<std::string> columns;
  bool isTable = false;
  ResultRows rows({&SendPrepared({query.sql, tableQuery_}, query.parameters), nullptr});
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
    const bool hasPlace = !traits.place.empty();
    found.shape.address =
        hasPlace ? engine::TableShape::Address::Place : engine::TableShape::Address::WholeRow;
    found.shape.keyColumns = hasPlace ? std::vector{std::string(traits.place)} : std::move(columns);
  }
  for (auto& [place, column] : key) found.shape.keyColumns.push_back(std::move(column));
  if (!key.empty()) found.shape.primaryKey = found.shape.keyColumns;
  return tables_.insert_or_assign(table, std::move(found)).first->second;
}

void Connection::AddCollations(std::vector<engine::Column>& columns, std::string_view allOf) {
  if (!Engine().traits().looksUpCollations) return;
  for (engine::Column& column : columns) {
    if (column.type != engine::ColumnType::Text || column.baseTable.empty() || !column.collation.empty())
      continue;
    const Table& table =
        LookUp(allOf.empty() ? GetDialect().QuotedName(column.baseTable) : std::string(allOf));
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
