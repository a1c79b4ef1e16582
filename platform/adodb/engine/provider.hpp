// What the cursor engine asks of a database: the seam between it and the providers.
//
// A provider knows how to reach one kind of database and nothing about cursors, keys or ADO. It opens
// Sessions (physical connections); a Session runs finished engine SQL with positional parameters ("?").
// Everything above, the pool, the dialect rewriting, the cursors, updates by key, stands once, in the engine.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/engine/connection_string.hpp"
#include "platform/adodb/types.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::engine {

enum class ColumnType { Boolean, Integer, Decimal, Double, DateTime, Text, Binary };

struct Column {
  std::string name;  // as the statement or the table spells it
  ColumnType type;
  std::string baseTable;   // the table that the values come from; empty for an expression
  std::string baseColumn;  // the column of that table; empty for an expression
};

// How rows of one table are addressed and made.
struct TableShape {
  std::vector<std::string> keyColumns;         // the primary key in order; empty when the table has none
  std::optional<std::string> generatedColumn;  // the column that the database numbers by itself
};

// A forward-only, read-only result being read. At most one is alive on a session at a time.
class Rows {
 public:
  virtual ~Rows() = default;
  virtual const std::vector<Column>& Columns() const = 0;
  virtual bool Next() = 0;  // false past the last row
  // Value of a column of the current row, with the type that Column::type promises, or Null.
  virtual automation::Variant Value(std::size_t column) const = 0;
};

using Parameters = std::vector<automation::Variant>;

class Dialect;

class Session {
 public:
  virtual ~Session() = default;

  // Raises automation::Error with the engine's message, SQLSTATE and native code on any failure.
  virtual std::unique_ptr<Rows> Query(std::string_view sql, const Parameters& parameters) = 0;
  virtual std::int64_t Execute(std::string_view sql, const Parameters& parameters) = 0;  // rows affected

  virtual void Begin() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() = 0;
  virtual void SetIsolationLevel(IsolationLevel level) = 0;

  // Key and generated column of a table, by the name that Column::baseTable gave.
  virtual TableShape Describe(const std::string& table) = 0;

  // Makes the session fit for the next user (no open transaction, settings as after opening); false when it
  // is dead and must be thrown away.
  virtual bool Reset() = 0;
  // Whether the database still answers; asked of a session that has been idle for a while.
  virtual bool Ping() = 0;

  virtual const Dialect& GetDialect() const = 0;
};

class Provider {
 public:
  virtual ~Provider() = default;
  virtual std::string_view Name() const = 0;  // as in "Provider=NAME" of a connection string
  virtual std::unique_ptr<Session> Connect(const ConnectionString& connectionString) = 0;
};

}  // namespace ADODB::engine
