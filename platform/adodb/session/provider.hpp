// What a database must offer: the seam between the cursors and those who reach an engine.
//
// A provider knows how to reach one kind of database and nothing about cursors, keys or ADO. It opens
// Sessions (physical connections); a Session runs statements in the engine's SQL with positional parameters
// ("?"). Everything above, the pool, the dialect rewriting, the cursors, updates by key, stands once.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/session/connection_string.hpp"
#include "platform/adodb/sql/column.hpp"
#include "platform/adodb/sql/dialect.hpp"
#include "platform/adodb/sql/parameters.hpp"
#include "platform/adodb/types.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::engine {

// A forward-only, read-only result being read. At most one is alive on a session at a time.
class Rows {
 public:
  virtual ~Rows() = default;
  virtual const std::vector<Column>& Columns() const = 0;
  // Columns() for a record set that outlives these Rows: shared, as the same statement is run again and
  // again.
  virtual std::shared_ptr<const std::vector<Column>> SharedColumns() const {
    return std::make_shared<const std::vector<Column>>(Columns());
  }
  virtual bool Next() = 0;  // false past the last row
  // Value of a column of the current row, or Null. By Column::type: Boolean is bool; Integer is std::int32_t
  // where it fits, std::int64_t where it does not; Decimal is one of these for a whole number, double
  // otherwise; Double is double; DateTime is DateTime; Text and Binary are text. A value that is stored in
  // another form than the column declares comes as what it is, but a number in a date column comes as a text.
  automation::Variant Value(std::size_t column) const {
    automation::Variant value;
    ReadInto(column, value);
    return value;
  }
  // Value() into memory that is used again: a long walk allocates nothing for a row.
  virtual void ReadInto(std::size_t column, automation::Variant& into) const = 0;
};

// What a session has made of a statement, to run it again.
class PreparedStatement {
 public:
  virtual ~PreparedStatement() = default;
};

// A statement in the engine's SQL. It refers to its text and does not keep it.
class Sql {
 public:
  // A statement that is run once.
  Sql(const char* text) : text_(text) {}
  Sql(const std::string& text) : text_(text) {}
  Sql(std::string_view text) : text_(text) {}
  // One that comes again: the session may put into `prepared` what it has made of the text, and finds it
  // there the next time. What is there belongs to that session, and must go before it.
  Sql(std::string_view text, std::unique_ptr<PreparedStatement>& prepared)
      : text_(text), prepared_(&prepared) {}

  // All columns of the result are columns of this table, named as it names them: a session need not find out
  // where each comes from. Empty when nothing is known. The name as a statement writes it.
  void SetTable(std::string_view table) { table_ = table; }
  std::string_view Table() const { return table_; }

  std::string_view Text() const { return text_; }
  operator std::string_view() const { return text_; }
  std::unique_ptr<PreparedStatement>* Prepared() const { return prepared_; }

 private:
  std::string_view text_;
  std::unique_ptr<PreparedStatement>* prepared_ = nullptr;
  std::string_view table_;
};

// Threads: one at a time; a session may change hands while no Rows are alive.
// Lifetime: Rows are gone before the next call, and before the session.
// Failures: every call but Reset and Ping raises automation::Error with the engine's message, SQLSTATE and
// native code (see engine_error.hpp).
class Session {
 public:
  virtual ~Session() = default;

  // Outside a transaction a statement is permanent once its call returns. When it fails instead,
  // Error::Outcome() tells whether the changes may be there; a statement that fails inside a transaction has
  // changed nothing, and whether the transaction goes on is the engine's affair.
  //
  // A statement that yields no columns is run to its end and gives Rows without columns.
  virtual std::unique_ptr<Rows> Query(const Sql& sql, const Parameters& parameters) = 0;
  // Rows affected; a result that the statement yields is thrown away.
  virtual std::int64_t Execute(const Sql& sql, const Parameters& parameters) = 0;

  // Starts a transaction in the isolation level set last; ReadCommitted as opened.
  // REQUIRES: no transaction is open.
  // FAILS: none is open afterwards.
  virtual void Begin() = 0;
  // Makes the transaction's changes permanent.
  // REQUIRES: Begin() succeeded, and neither Commit() nor Rollback() was called since.
  // FAILS: Error::Outcome() tells whether the changes may be there: NotDone when the engine refused, Unknown
  // when the commit was sent and no answer settled it. Rollback() is due either way.
  virtual void Commit() = 0;
  // Gives the transaction's changes up, those of statements after a failed Commit() among them.
  // REQUIRES: Begin() succeeded, and Rollback() was not called since, nor a Commit() that succeeded.
  // FAILS: the session is of no further use; the engine undoes what was not committed by itself. The
  // transaction is over either way.
  virtual void Rollback() = 0;
  // For transactions that begin after the call, and for statements outside of one.
  virtual void SetIsolationLevel(IsolationLevel level) = 0;

  // Key and generated column of a table, by its name as a statement writes it (maybe quoted, maybe with a
  // schema). A name that is no table (a view, ...) has an empty shape.
  virtual TableShape Describe(const std::string& table) = 0;

  // A number that differs after any committed change to the database, by this session or another; nothing
  // when the engine has no cheap way to tell.
  virtual std::optional<std::int64_t> ChangeMark() { return std::nullopt; }

  // Makes the session fit for the next user (no open transaction, settings as after opening); false when it
  // is lost and must be thrown away.
  virtual bool Reset() = 0;
  // Whether the database still answers; asked of a session that has been idle for a while.
  virtual bool Ping() = 0;

  // The same for all sessions with one engine; it outlives them.
  virtual const Dialect& GetDialect() const = 0;
};

// Threads: several may call at once.
class Provider {
 public:
  virtual ~Provider() = default;
  // As in "Provider=NAME" of a connection string. "MSDASQL" also serves strings without a Provider.
  virtual std::string_view Name() const = 0;
  // A session with read-committed isolation or stronger, which must not outlive the provider. The user and
  // password of Connection::Open, when not empty, stand under "User ID" and "Password".
  virtual std::unique_ptr<Session> Connect(const ConnectionString& connectionString) = 0;
  // Whether its databases lie on servers, which several machines may use.
  virtual bool ReachesServers() const { return false; }
};

// The provider that a connection string names, whose "Provider" is taken out of it; 3706 when it is not among
// them. A string that names none is an ODBC one.
const std::shared_ptr<Provider>& ProviderOf(const std::vector<std::shared_ptr<Provider>>& providers,
                                            ConnectionString& text);

}  // namespace ADODB::engine
