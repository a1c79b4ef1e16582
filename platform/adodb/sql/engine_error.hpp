// How a database engine's refusal becomes an automation::Error, the same for every provider.
#pragma once

#include <cstdint>
#include <string>

#include "platform/automation/error.hpp"

namespace ADODB::engine {

// ADO's numbers for failures of the engine, chosen by SQLSTATE.
inline constexpr std::int32_t kUnspecifiedFailure = -2147467259;    // 80004005
inline constexpr std::int32_t kStatementFailure = -2147217900;      // 80040E14, class 42
inline constexpr std::int32_t kNoSuchTable = -2147217865;           // 80040E37, 42S02
inline constexpr std::int32_t kConstraintViolation = -2147217873;   // 80040E2F, class 23
inline constexpr std::int32_t kAuthenticationFailed = -2147217843;  // 80040E4D, class 28
inline constexpr std::int32_t kRowChanged = -2147217864;            // 80040E38
inline constexpr std::int32_t kProviderNotFound = 3706;

// `source` names the provider; `message` is the engine's own.
automation::Error EngineError(std::string source, std::string message, std::string sqlState,
                              std::int32_t nativeCode);

}  // namespace ADODB::engine
