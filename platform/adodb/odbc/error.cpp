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
    AppendOnOneLine(ToUtf8(text), diagnostics.message);
  }
  if (diagnostics.sqlState.empty()) {
    diagnostics = {
        .sqlState = "HY000", .nativeCode = 0, .message = "The driver gave no reason for the failure."};
  }
  return diagnostics;
}

// Class 08: connection exceptions.
bool Health::MeansConnectionLost(std::string_view sqlState, std::int32_t nativeCode) const {
  return sqlState.starts_with("08") ||
         (engine != nullptr && engine->failures().losesSession(sqlState, nativeCode));
}

// PostgreSQL's driver tells of a connection that it lost while it prepared a statement in its words alone.
void Health::Note(const Diagnostics& diagnostics) {
  lost = lost || MeansConnectionLost(diagnostics.sqlState, diagnostics.nativeCode);
  doubtful = doubtful || diagnostics.sqlState == "HY000";
}

bool Health::LeavesCommitOpen(const automation::Error& failure) const {
  const std::string_view sqlState = failure.SqlState();
  if (MeansConnectionLost(sqlState, failure.NativeCode())) return true;
  // Completion unknown, time-out, time-out of the connection, cancelled.
  for (const char* state : {"40003", "HYT00", "HYT01", "HY008"}) {
    if (sqlState == state) return true;
  }
  return engine != nullptr && engine->failures().leavesCommitOpen(sqlState, failure.NativeCode());
}

void Raise(const Diagnostics& diagnostics) {
  throw engine::EngineError("MSDASQL", diagnostics.message, diagnostics.sqlState, diagnostics.nativeCode);
}

}  // namespace ADODB::odbc
