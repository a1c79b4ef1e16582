#include "platform/adodb/engines/sqlite/embedded/error.hpp"

#include <string_view>
#include <utility>

#include "platform/adodb/sql/engine_error.hpp"

namespace ADODB::sqlite {
namespace {

const char* SqlStateOf(int code, std::string_view message) {
  switch (code & 0xFF) {
    case SQLITE_ERROR:
      if (message.find("no such table") != std::string_view::npos) return "42S02";
      if (message.find("no such column") != std::string_view::npos) return "42S22";
      return "42000";
    case SQLITE_CONSTRAINT:
      return "23000";
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "HYT00";
    case SQLITE_CANTOPEN:
    case SQLITE_NOTADB:
      return "08001";
    case SQLITE_READONLY:
      return "25006";
    case SQLITE_NOMEM:
      return "HY001";
    case SQLITE_INTERRUPT:
      return "HY008";
    case SQLITE_TOOBIG:
      return "22001";
    case SQLITE_MISMATCH:
      return "22018";
    default:
      return "HY000";
  }
}

}  // namespace

automation::Error ErrorOf(int code, std::string message) {
  std::string state = SqlStateOf(code, message);
  return engine::EngineError("SQLite", std::move(message), std::move(state), code);
}

automation::Error ErrorOf(sqlite3* database, int code) {
  const int extended = sqlite3_extended_errcode(database);
  return ErrorOf(extended != SQLITE_OK ? extended : code, sqlite3_errmsg(database));
}

}  // namespace ADODB::sqlite
