// How one kind of database engine writes SQL.
//
// The jobs' statements are written for the suite's own engine. sql/translation finds the few tokens that
// other engines spell differently and asks the dialect for their spelling; the cursors ask it for the
// statements that they compose themselves. A dialect is stateless text work: it never talks to a database.
// What is not overridden is spelled as the suite's own engine does, or as the SQL standard says.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/sql/column.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::engine {

class Dialect {
 public:
  virtual ~Dialect() = default;

  virtual std::string_view Name() const = 0;  // "SQLite", "PostgreSQL", ...

  // --- The suite's tokens in this engine's spelling. Arguments are finished SQL of this engine. ---

  // True for the suite's own engine: statements are sent as they stand and nothing else in this part is
  // asked.
  virtual bool TakesTextUnchanged() const { return false; }
  // dateadd(d,days,moment): the moment moved by whole days, fractions of a second kept.
  virtual std::string DaysLater(std::string_view days, std::string_view moment) const;
  // isnull(value,replacement)
  virtual std::string NullReplaced(std::string_view value, std::string_view replacement) const;
  // a + b + ... between strings; one null operand makes the result null, as the suite's engine has it.
  virtual std::string Joined(const std::vector<std::string>& operands) const;
  // {ts '2004-07-26 09:05:03'}, and a local date-time literal that is compared with a date: a literal that
  // the engine compares with its date columns. `text` is "YYYY-MM-DD HH:MM:SS", maybe with a fraction.
  virtual std::string Timestamp(std::string_view text) const;
  // A value that is compared with a {ts} literal, so that what is no date meets no such comparison. As it is
  // where the engine has a date type of its own.
  virtual std::string ComparedMoment(std::string_view value) const { return std::string(value); }
  // What stands before the rows of "(a,b) IN (VALUES (1,2),(3,4))", in the form of it that is fast for tens
  // of thousands of rows.
  virtual std::string_view RowValueListStart() const { return "VALUES "; }
  // True where "DELETE t FROM t WHERE ... in (select ...)" becomes a join that goes from the subquery's rows
  // to the table, while "DELETE FROM t" would ask the subquery for each row of the whole table.
  virtual bool NamesTableTwiceInDeletes() const { return false; }

  // --- Values as parameters. ---

  // True where a value that is bound as a parameter is compared exactly as the same value written as a
  // literal, whatever the column's type. An engine that types its parameters by themselves answers false.
  virtual bool ComparesBoundValuesAsLiterals() const { return false; }
  // True where preparing a statement takes a message to a server: worth it for one that comes again only.
  virtual bool PreparesOnTheServer() const { return false; }
  // What stands for a bound number of 32 bits, where it must be told that it is one.
  virtual std::string_view NumberParameter() const { return "?"; }

  // --- Statements that the cursors compose. ---

  // True where ordering rows of a subquery's choice takes a table on disk when they hold long strings: a
  // short result is read faster as it comes, and ordered by the reader.
  virtual bool OrdersLongTextsOnDisk() const { return false; }
  // A name as the database spells it, quoted so that it is taken letter for letter.
  virtual std::string QuotedName(std::string_view name) const;
  // "SELECT " + list + rest, cut to `count` rows.
  virtual std::string Limited(std::string_view list, std::string_view rest, std::size_t count) const;
  // An insert with one "?" for each column that answers, as a one-row result, the values that the new row has
  // in `returned`. Without columns it is an insert of defaults. Names are as the database spells them,
  // `table` is as the statement wrote it.
  virtual std::string InsertReturning(std::string_view table, const std::vector<std::string>& columns,
                                      const std::vector<std::string>& returned) const;
  // True where "DELETE FROM t WHERE ... RETURNING list" gives the rows that it deletes.
  virtual bool ReturnsDeletedRows() const { return false; }
  // "SELECT " + list of a table's rows, which nobody else can change until the transaction ends. `where` may
  // be empty.
  virtual std::string LockedSelect(std::string_view list, std::string_view table,
                                   std::string_view where) const;
  // A condition that holds while a column, quoted, reads as it did: NULL equals NULL, strings are compared
  // byte for byte, and a number that is approximate by what a read of it gives. Each "?" in it stands for
  // the value as ComparedValue gives it; of a Binary column the bytes in hexadecimal digits, upper case.
  virtual std::string StillReads(const std::string& column, ColumnType type) const = 0;
  virtual automation::Variant ComparedValue(const automation::Variant& value, ColumnType) const {
    return value;
  }
  // A delete or an update of one of the rows that meet the condition, whichever.
  virtual std::string DeleteOne(std::string_view table, std::string_view condition) const;
  virtual std::string UpdateOne(std::string_view table, std::string_view assignments,
                                std::string_view condition) const;
  // --- A lock of the whole database, by which programs take turns. ---

  // A lock that a session holds until it ends. Its name is made of the database's, by the engine, so that
  // whoever uses the database means the same one. Each is a statement without parameters that gives one row
  // of one column.
  struct SessionLockTexts {
    std::string_view take;    // 1: this session has it now; else another one does. Does not wait
    std::string_view isHeld;  // 1 while this session has it
    std::string_view holder;  // the session that has it, in words; no row, or Null, when that cannot be told
    // Takes one "?", a name that `holder` shows to other sessions; empty where sessions have no name.
    std::string_view introduce;
  };
  // Null for an engine without such a lock.
  virtual const SessionLockTexts* SessionLock() const { return nullptr; }

  // --- Previews: everything in one transaction that is rolled back. ---

  // A statement after which the session waits for other sessions' locks some seconds at most; empty where it
  // does so anyway, or needs none.
  virtual std::string_view BoundLockWaits() const { return {}; }
  // A statement after which the engine gives a statement up that takes longer, also when whoever has sent it
  // is gone; empty where it cannot be told so.
  virtual std::string BoundStatements(std::chrono::seconds /*longest*/) const { return {}; }
  // A query for the names of the tables that take no part in transactions; empty where there are none. What a
  // rollback does not undo there must not be done.
  virtual std::string_view TablesWithoutTransactions() const { return {}; }
  virtual std::string Savepoint(const std::string& name) const { return "SAVEPOINT " + name; }
  virtual std::string RollbackToSavepoint(const std::string& name) const {
    return "ROLLBACK TO SAVEPOINT " + name;
  }
  // Empty for an engine that forgets savepoints by itself.
  virtual std::string ReleaseSavepoint(const std::string& name) const { return "RELEASE SAVEPOINT " + name; }
  // Whether the engine gave the statement, or the whole transaction, up because of another session's lock.
  virtual bool MeansLocked(const automation::Error& error) const {
    return error.SqlState() == "40001" || error.SqlState() == "40P01" || error.SqlState() == "55P03";
  }

  // --- Names and strings. ---

  // True where the engine reports unquoted names in another case than they were written in.
  virtual bool FoldsNames() const { return false; }
  // The suite's spelling of a name that such an engine reported; the names that a select list spells out
  // itself go before it.
  virtual std::string ShownName(std::string_view reported) const { return std::string(reported); }

  // Two strings of a column are equal to the database exactly when their comparison keys are equal bytes.
  virtual std::string ComparisonKey(std::string_view text, const Column& column) const = 0;

  // --- Errors. ---

  // What this engine says about a statement that it cannot parse, with SQLSTATE 42000 (or the engine's own of
  // class 42); `near` is the text where it stumbles, empty at the end of the statement.
  virtual automation::Error SyntaxError(std::string_view near) const = 0;

 protected:
  static std::string Enclosed(std::string_view name, char opening, char closing);
  // "name(a,b)", and "(a || b || c)" for " || ".
  static std::string Call(std::string_view name, std::string_view first, std::string_view second);
  static std::string Chained(const std::vector<std::string>& operands, std::string_view sign);
  // The parts of an insert: " (a,b)" and " VALUES (?,?)", or nothing and " DEFAULT VALUES".
  std::string InsertedNames(const std::vector<std::string>& columns) const;
  static std::string InsertedValues(const std::vector<std::string>& columns);
  // The names, each behind `qualifier`, behind `start`; empty without names.
  std::string Listed(std::string_view start, std::string_view qualifier,
                     const std::vector<std::string>& names) const;
};

}  // namespace ADODB::engine
