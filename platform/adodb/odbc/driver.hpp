// What is particular to one ODBC driver or to the engine behind it. Everything else of this provider serves
// all.
#pragma once

#include <string>
#include <string_view>

#include "platform/adodb/odbc/result_column.hpp"
#include "platform/adodb/session/connection_string.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::odbc {

enum class Engine { PostgreSql, MariaDb, SqlServer, Other };

// From the name or the file of a driver; "Other" when it does not tell.
Engine EngineOfDriver(std::string_view driver);
// From what an open connection says about itself (SQL_DBMS_NAME).
Engine EngineOfDbms(std::string_view dbmsName);

// The string for the driver: "Provider" left out, "User ID" and "Password" under the names that drivers read,
// and the options that this system relies on wherever the given string does not set them itself.
engine::ConnectionString ForDriver(const engine::ConnectionString& given, Engine engine);

// In which form the driver, connected with this string, hands over texts at the least cost.
TextForm TextFormOf(Engine engine, const engine::ConnectionString& text);

// Raises 3001 when the driver, connected with this string, would turn characters of a statement into others:
// one could become a quote.
void RequireTextsAsTheyAre(Engine engine, const engine::ConnectionString& text);

// A statement that a new connection, made with this string, runs first; empty for none. It gives a backslash
// in a text its plain meaning where the string has settings of its own.
std::string SessionSetUp(Engine engine, const engine::ConnectionString& text);

// Null for an engine that is not known.
const engine::Dialect* DialectOf(Engine engine);

// A query that yields one row for each column of a table: its name, its place in the primary key (0: none), 1
// when the database numbers it, the name of its collation, and 1 when the rows can be addressed without a
// key: they lie in this table and nowhere else. `table` is a name as a statement writes it.
struct MetadataQuery {
  const char* sql;
  engine::Parameters parameters;
};
MetadataQuery TableQuery(Engine engine, std::string_view table);

// How the rows of a table without a key are addressed.
engine::TableShape KeylessShape(Engine engine, std::vector<std::string> columns);

}  // namespace ADODB::odbc
