// What is particular to a kind of database engine.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/adodb/session/connection_string.hpp"
#include "platform/adodb/sql/dialect.hpp"
#include "platform/adodb/sql/parameters.hpp"

namespace ADODB::engine {

// How the engine is reached, and how its tables are described. All but the provider is
// asked of engines that are reached through an ODBC driver.
struct Traits {
  // As in "Provider=NAME" of a connection string.
  std::string_view provider = "MSDASQL";
  // Words, in lower case, that the names and files of the engine's drivers hold, or the name by which a
  // server introduces itself (SQL_DBMS_NAME).
  std::span<const std::string_view> drivers{};

  // Keywords of the connection string that this system relies on, set where the string does not set them.
  struct Option {
    std::string_view keyword;
    std::string_view value;
  };
  std::span<const Option> options{};
  // Raises 3001 when the driver, connected with this string, would turn characters of a statement into
  // others: one could become a quote.
  void (*requireExactText)(const ConnectionString& text) = [](const ConnectionString&) {};
  // A statement that a new session, connected with this string, runs first; empty for none. It gives a
  // backslash in a literal its plain meaning where the string has settings of its own.
  std::string (*setUp)(const ConnectionString& text) = [](const ConnectionString&) { return std::string(); };
  // Whether strings that the driver, connected with this string, is asked for as bytes come as UTF-8.
  bool (*givesUtf8)(const ConnectionString& text) = [](const ConnectionString&) { return false; };
  // The statement that begins a transaction; empty where that is done by turning autocommit off.
  std::string_view begin{};

  // A query that yields one row for each column of a table: its name, its place in the primary key (0: none),
  // 1 when the database numbers it, the name of its collation, and 1 when the rows can be addressed without a
  // key: they lie in this table and nowhere else.
  struct Query {
    const char* sql = nullptr;
    Parameters parameters;
  };
  // `table` is a name as a statement writes it.
  Query (*describe)(std::string_view table) = nullptr;
  // The column that tells where a row lies; empty where rows of a table without a key are addressed by all
  // their values.
  std::string_view place{};
  // Whether collations that see two different strings as equal are common: those of a result are looked up.
  bool looksUpCollations = false;
};

// What the engine's failures tell, beyond the states that the SQL standard and ODBC define.
struct Failures {
  // Whether the session is of no further use.
  bool (*losesSession)(std::string_view sqlState,
                       std::int32_t nativeCode) = [](std::string_view, std::int32_t) { return false; };
  // Whether the failure of a commit, or of a statement that commits by itself, leaves open whether it was
  // done.
  bool (*leavesCommitOpen)(std::string_view sqlState,
                           std::int32_t nativeCode) = [](std::string_view, std::int32_t) { return false; };
  // Whether a prepared statement was refused before it did anything, because its tables have changed since:
  // prepared anew it can be run again.
  bool (*needsPreparingAnew)(std::string_view sqlState, std::int32_t nativeCode,
                             bool inTransaction) = [](std::string_view, std::int32_t, bool) { return false; };
};

struct EngineEntry {
  std::string_view name;  // as in schema/NAME.sql
  const Dialect& (*dialect)();
  const Traits& (*traits)();
  const Failures& (*failures)();

  bool IsEmbedded() const { return traits().drivers.empty(); }  // reached without a driver
};

}  // namespace ADODB::engine
