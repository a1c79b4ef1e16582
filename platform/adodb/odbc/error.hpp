// A driver's diagnostics as run-time errors.
#pragma once

#include <sql.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/adodb/session/engine_entry.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::odbc {

struct Diagnostics {
  std::string sqlState;
  std::int32_t nativeCode = 0;
  std::string message;  // every record of the handle, on one line
};

Diagnostics ReadDiagnostics(SQLSMALLINT handleKind, SQLHANDLE handle);

// What the failures so far tell about a connection.
struct Health {
  bool lost = false;                            // of no further use
  bool doubtful = false;                        // a failure gave no reason that says so or rules it out
  const engine::EngineEntry* engine = nullptr;  // once it is known

  void Note(const Diagnostics& diagnostics);
  // Whether the failure of a commit, or of a statement that commits by itself, leaves open whether it was
  // done. Any other answer says that it was not.
  bool LeavesCommitOpen(const automation::Error& failure) const;

 private:
  bool MeansConnectionLost(std::string_view sqlState, std::int32_t nativeCode) const;
};

// Raises the failure as automation::Error with the engine's message, SQLSTATE and native code.
[[noreturn]] void Raise(const Diagnostics& diagnostics);

inline bool Succeeded(SQLRETURN status) {
  return status == SQL_SUCCESS || status == SQL_SUCCESS_WITH_INFO;
}

}  // namespace ADODB::odbc
