#include "platform/adodb/engines/sqlite/embedded/connection.hpp"

#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/adodb/engines/sqlite/dialect.hpp"
#include "platform/adodb/engines/sqlite/embedded/error.hpp"
#include "platform/adodb/engines/sqlite/embedded/functions.hpp"
#include "platform/adodb/engines/sqlite/embedded/statement.hpp"
#include "platform/adodb/engines/sqlite/failures.hpp"
#include "platform/adodb/session/coarse_clock.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::sqlite {
namespace {

// Whether the changes may be there after a commit that failed.
void NoteOutcome(automation::Error& failure) {
  if (engine::SqliteFailures().leavesCommitOpen(failure.SqlState(), failure.NativeCode())) {
    failure.WithOutcome(automation::Outcome::Unknown);
  }
}

}  // namespace

Database OpenDatabase(const std::string& path, int flags) {
  sqlite3* raw = nullptr;
  errno = 0;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  Database database(raw);
  if (code == SQLITE_OK) return database;
  std::string message = raw == nullptr ? "out of memory" : sqlite3_errmsg(raw);
  const int reason = raw == nullptr ? 0 : sqlite3_system_errno(raw);
  message += ": " + path;
  if (reason != 0) message += std::string(" (") + std::strerror(reason) + ")";
  throw ErrorOf(code, std::move(message));
}

Connection::Connection(const OpenSettings& settings)
    : database_(OpenDatabase(settings.path, settings.flags)) {
  sqlite3_extended_result_codes(database_.get(), 1);
  sqlite3_busy_timeout(database_.get(), settings.timeoutMilliseconds);
  RegisterFunctions(database_.get());
  if (settings.isPrivate) {
    OpenAlone();
    return;
  }
  // The first read tells a file that is no database, or is held by someone, now and not in the middle of a
  // job.
  const bool isNew = (settings.flags & SQLITE_OPEN_CREATE) != 0 &&
                     Query("SELECT 1 FROM sqlite_schema LIMIT 1", {})->Next() == false;
  if (isNew) Run("PRAGMA journal_mode = WAL");
  const std::unique_ptr<engine::Rows> mode = Query("PRAGMA journal_mode", {});
  const bool wal = mode->Next() && mode->Value(0) == automation::Variant("wal");
  while (mode->Next()) {
  }
  Query("SELECT 1 FROM sqlite_schema LIMIT 1", {});
  // In WAL mode NORMAL keeps the database whole after a power cut; in the other modes only FULL does.
  if (wal && !settings.fullSynchronous) Run("PRAGMA synchronous = NORMAL");
  if (settings.fullSynchronous) Run("PRAGMA synchronous = FULL");
}

// The log is opened with the file, and its index kept in memory: neither is looked for by name again.
void Connection::OpenAlone() {
  Run("PRAGMA locking_mode = EXCLUSIVE");
  Run("PRAGMA journal_mode = WAL");
  Run("PRAGMA synchronous = OFF");
  Run("BEGIN IMMEDIATE; COMMIT");
}

Connection::~Connection() = default;

void Connection::Run(const char* sql) {
  const int code = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) throw ErrorOf(database_.get(), code);
}

std::unique_ptr<engine::Rows> Connection::Query(const engine::Sql& sql,
                                                const engine::Parameters& parameters) {
  return std::make_unique<StatementRows>(database_.get(), sql, parameters);
}

std::int64_t Connection::Execute(const engine::Sql& sql, const engine::Parameters& parameters) {
  const PreparedRun statement(database_.get(), sql);
  statement->Bind(parameters);
  const std::int64_t before = sqlite3_total_changes64(database_.get());
  const bool commits = sqlite3_get_autocommit(database_.get()) != 0;
  try {
    while (statement->Step()) {
    }
  } catch (automation::Error& error) {
    if (commits) NoteOutcome(error);
    throw;
  }
  // The statement must not be seen as running by what comes next.
  statement->Reset();
  // Changes that triggers made are not the statement's own; a statement that is none of insert, update and
  // delete leaves the count of the one before it.
  const bool changed = sqlite3_total_changes64(database_.get()) != before;
  return changed ? sqlite3_changes64(database_.get()) : 0;
}

void Connection::Begin() {
  // A transaction that first reads and then writes could find the database changed in between, and waiting
  // does not help it then: take the write lock at once.
  Run("BEGIN IMMEDIATE");
}

void Connection::Commit() {
  try {
    Run("COMMIT");
  } catch (automation::Error& error) {
    NoteOutcome(error);
    throw;
  }
}

void Connection::Rollback() {
  // Some failures (a full disk, for one) have rolled back already.
  if (sqlite3_get_autocommit(database_.get()) == 0) Run("ROLLBACK");
}

engine::TableShape Connection::Describe(const std::string& table) {
  const std::vector<std::string> parts = engine::Names(table);  // "schema.table" or "table"
  const std::string name = parts.empty() ? table : parts.back();
  if (const auto known = shapes_.find(name); known != shapes_.end()) return known->second;
  engine::TableShape shape;
  bool isTable = false;
  bool hasRowNumber = false;
  {
    const auto rows =
        Query({"SELECT type, wr FROM pragma_table_list WHERE name = ? COLLATE NOCASE", tableQuery_}, {name});
    while (rows->Next()) {
      isTable = rows->Value(0) == automation::Variant("table");
      hasRowNumber = rows->Value(1) == automation::Variant(0);
    }
  }
  if (!isTable) return shape;
  std::vector<std::string> columns;
  bool integerKey = false;
  {
    const auto rows =
        Query({"SELECT name, type, pk FROM pragma_table_info(?) ORDER BY pk", columnQuery_}, {name});
    while (rows->Next()) {
      columns.push_back(automation::ToText(rows->Value(0)));
      if (automation::ToInt32(rows->Value(2)) == 0) continue;
      shape.keyColumns.push_back(columns.back());
      shape.primaryKey.push_back(columns.back());
      integerKey = engine::EqualsIgnoringAsciiCase(automation::ToText(rows->Value(1)), "INTEGER");
    }
  }
  if (hasRowNumber && shape.keyColumns.size() == 1 && integerKey) {
    shape.generatedColumn = shape.keyColumns.front();
  } else if (hasRowNumber) {
    // The row number is the key in which the engine itself walks the table.
    shape.keyColumns.clear();
    for (const char* rowNumber : {"rowid", "_rowid_", "oid"}) {
      bool taken = false;
      for (const std::string& column : columns) taken |= engine::EqualsIgnoringAsciiCase(column, rowNumber);
      if (!taken) {
        shape.keyColumns.emplace_back(rowNumber);
        break;
      }
    }
  }
  shapes_.emplace(name, shape);
  return shape;
}

std::optional<std::int64_t> Connection::ChangeMark() {
  const auto rows = Query({"PRAGMA data_version", versionQuery_}, {});
  rows->Next();
  // The version counts the commits of other connections, the total the changes of this one.
  return (automation::ToInt64(rows->Value(0)) << 32) + sqlite3_total_changes64(database_.get());
}

bool Connection::Reset() {
  shapes_.clear();
  if (sqlite3_get_autocommit(database_.get()) == 0) {
    if (sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr) != SQLITE_OK) return false;
  }
  // A pooled session is used again and again within a moment: now and then is often enough to look.
  const auto now = engine::CoarseNow();
  if (now - fileSeen_ < std::chrono::seconds(1)) return true;
  fileSeen_ = now;
  return FileIsStillThere();
}

bool Connection::Ping() {
  if (!FileIsStillThere()) return false;
  try {
    return Query("SELECT 1 FROM sqlite_schema LIMIT 1", {}) != nullptr;
  } catch (const automation::Error&) {
    return false;
  }
}

// A file that was replaced, by a restored backup for instance, must not be written to any more.
bool Connection::FileIsStillThere() {
  int moved = 0;
  sqlite3_file_control(database_.get(), nullptr, SQLITE_FCNTL_HAS_MOVED, &moved);
  return moved == 0;
}

const engine::Dialect& Connection::GetDialect() const {
  return engine::SqliteDialect();
}

}  // namespace ADODB::sqlite
