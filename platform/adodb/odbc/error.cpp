#include "platform/adodb/odbc/error.hpp"

#include <array>
#include <string_view>

#include "platform/adodb/odbc/unicode.hpp"
#include "platform/adodb/sql/engine_error.hpp"

namespace ADODB::odbc {
namespace {

// Messages go into line-oriented logs, where more text follows them.
void AppendOnOneLine(std::string_view message, std::string& line) {
  message = message.substr(0, message.find_last_not_of("\r\n\t ") + 1);
  if (!line.empty()) line += ' ';
  for (const char c : message) {
    if (c != '\n' && c != '\r') {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
}

}  // namespace

Diagnostics ReadDiagnostics(SQLSMALLINT handleKind, SQLHANDLE handle) {
  constexpr SQLSMALLINT kMostRecords = 8;
  Diagnostics diagnostics;
  for (SQLSMALLINT record = 1; record <= kMostRecords; ++record) {
    std::array<SQLWCHAR, 6> state{};
    std::array<SQLWCHAR, 4096> text{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const SQLRETURN status = SQLGetDiagRecW(handleKind, handle, record, state.data(), &native, text.data(),
                                            static_cast<SQLSMALLINT>(text.size()), &length);
    if (!Succeeded(status)) break;
    if (record == 1) {
      diagnostics.sqlState = ToUtf8(state.data(), 5);
      diagnostics.nativeCode = native;
    }
    std::size_t used = 0;
    while (used < text.size() && text[used] != 0) ++used;
    AppendOnOneLine(ToUtf8(text.data(), used), diagnostics.message);
  }
  if (diagnostics.sqlState.empty()) {
    diagnostics = {
        .sqlState = "HY000", .nativeCode = 0, .message = "The driver gave no reason for the failure."};
  }
  return diagnostics;
}

namespace {

bool MeansConnectionLost(std::string_view state, std::int32_t nativeCode) {
  // 08: connection exceptions. 57P01 to 57P03: a PostgreSQL server that goes down, has crashed, or is not yet
  // up.
  if (state.starts_with("08") || state == "57P01" || state == "57P02" || state == "57P03") return true;
  // MariaDB: server has gone away, lost connection (twice), connection was killed, idle limit.
  switch (nativeCode) {
    case 2006:
    case 2013:
    case 2055:
    case 1927:
    case 4031:
      return true;
    default:
      return false;
  }
}

}  // namespace

// PostgreSQL's driver tells of a connection that it lost while it prepared a statement in its words alone.
void Health::Note(const Diagnostics& diagnostics) {
  lost = lost || MeansConnectionLost(diagnostics.sqlState, diagnostics.nativeCode);
  doubtful = doubtful || diagnostics.sqlState == "HY000";
}

bool LeavesCommitOpen(const std::string& sqlState, std::int32_t nativeCode) {
  if (MeansConnectionLost(sqlState, nativeCode)) return true;
  // Completion unknown, time-out, time-out of the connection, cancelled.
  for (const char* state : {"40003", "HYT00", "HYT01", "HY008"}) {
    if (sqlState == state) return true;
  }
  // MariaDB: shutting down, a storage engine failed in mid-commit, interrupted while it waited for a replica.
  return nativeCode == 1053 || nativeCode == 1180 || nativeCode == 1317;
}

void Raise(const Diagnostics& diagnostics) {
  throw engine::EngineError("MSDASQL", diagnostics.message, diagnostics.sqlState, diagnostics.nativeCode);
}

}  // namespace ADODB::odbc
